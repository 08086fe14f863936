#include "app/frmOpciones.h"

#include "app/mdoOpciones.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "widgets/Accesible.h"
#include "widgets/Cuadros.h"
#include "widgets/Iconos.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QLabel* nota(const QString& texto, QWidget* parent) {
    auto* l = new QLabel(texto, parent);
    l->setWordWrap(true);
    QFont f = l->font();
    f.setItalic(true);
    l->setFont(f);
    l->setForegroundRole(QPalette::PlaceholderText);
    return l;
}

}  // namespace

frmOpciones::frmOpciones(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmOpciones"_s);
    setWindowTitle(u"Opciones y Preferencias"_s);
    setWindowIcon(iconoQuelmo(u"opciones"_s));

    auto* envio = new QGroupBox(u"Envío"_s, this);
    txtmaxlote = new QLineEdit(envio);
    txtmaxlote->setObjectName(u"txtmaxlote"_s);
    txtmaxlote->setMaxLength(5);
    txttimer = new QLineEdit(envio);
    txttimer->setObjectName(u"txttimer"_s);
    txttimer->setMaxLength(10);
    auto* segundos = new QHBoxLayout;
    segundos->addWidget(txttimer);
    segundos->addWidget(new QLabel(u"segundos"_s, envio));
    segundos->addStretch();
    auto* lote = new QHBoxLayout;
    lote->addWidget(txtmaxlote);
    lote->addStretch();
    txtmaxlote->setFixedWidth(80);
    txttimer->setFixedWidth(80);
    Chkcontactos = new QCheckBox(u"Enviar mensajes sólo a Mis Contactos "_s, envio);
    Chkcontactos->setObjectName(u"Chkcontactos"_s);
    auto* formEnvio = new QFormLayout(envio);
    formEnvio->addRow(u"Nº máximo de mensajes enviados por Lote"_s, lote);
    formEnvio->addRow(u"Enviar mensajes en bandeja de Salida cada"_s, segundos);
    formEnvio->addRow(Chkcontactos);

    auto* acceso = new QGroupBox(u"Contraseña de acceso"_s, this);
    txtpwdcontactos = new QLineEdit(acceso);
    txtpwdcontactos->setObjectName(u"txtpwdcontactos"_s);
    txtpwdcontactos->setEchoMode(QLineEdit::Password);
    txtpwdcontactos2 = new QLineEdit(acceso);
    txtpwdcontactos2->setObjectName(u"txtpwdcontactos2"_s);
    txtpwdcontactos2->setEchoMode(QLineEdit::Password);
    auto* formAcceso = new QFormLayout(acceso);
    // One line: a wrapped label spanning a form's row is given the height
    // of one line and shows clipped.
    formAcceso->addRow(new QLabel(
        u"Contraseña de acceso a opciones  de configuración de Quelmo Mensajes"_s, acceso));
    formAcceso->addRow(u"Contraseña"_s, txtpwdcontactos);
    formAcceso->addRow(u"Confirmar contraseña"_s, txtpwdcontactos2);
    formAcceso->addRow(nota(u"Dejela en blanco si no quiere contraseña"_s, acceso));

    auto* aspecto = new QGroupBox(u"Imagen de Fondo de Aplicación"_s, this);
    txtimgfondo = new QLineEdit(aspecto);
    txtimgfondo->setObjectName(u"txtimgfondo"_s);
    txtimgfondo->setClearButtonEnabled(true);
    txtimgfondo->setMinimumWidth(300);
    cmdexaminar = new QPushButton(u"Examinar"_s, aspecto);
    cmdexaminar->setObjectName(u"cmdexaminar"_s);
    cmdexaminar->setAutoDefault(false);
    auto* fila = new QHBoxLayout;
    fila->addWidget(txtimgfondo, 1);
    fila->addWidget(cmdexaminar);
    auto* capaAspecto = new QVBoxLayout(aspecto);
    capaAspecto->addLayout(fila);
    capaAspecto->addWidget(
        nota(u"Si la deja en blanco se mostrará la imagen de presentación "
             u"de Quelmo Mensajes SMS."_s,
             aspecto));

    // Their labels stand beside a row, not beside the field itself.
    nombreAccesible(txtmaxlote, u"Nº máximo de mensajes enviados por Lote"_s);
    nombreAccesible(txttimer, u"Enviar mensajes en bandeja de Salida cada, en segundos"_s);
    nombreAccesible(txtimgfondo, u"Imagen de Fondo de Aplicación"_s,
                    u"Si la deja en blanco se mostrará la imagen de presentación"_s);

    auto* botones = new QDialogButtonBox(this);
    cmdAnadir = botones->addButton(u"&Guardar Opciones"_s, QDialogButtonBox::AcceptRole);
    cmdAnadir->setObjectName(u"cmdAñadir"_s);
    cmdAnadir->setDefault(true);
    CmdSalir = botones->addButton(u"&Cerrar"_s, QDialogButtonBox::RejectRole);
    CmdSalir->setObjectName(u"CmdSalir"_s);
    CmdSalir->setAutoDefault(false);
    connect(cmdAnadir, &QPushButton::clicked, this, &frmOpciones::cmdAnadir_Click);
    connect(CmdSalir, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdexaminar, &QPushButton::clicked, this, &frmOpciones::cmdexaminar_Click);

    auto* todo = new QVBoxLayout(this);
    todo->addWidget(envio);
    todo->addWidget(acceso);
    todo->addWidget(aspecto);
    todo->addSpacing(6);
    todo->addWidget(botones);

    cargar();
}

void frmOpciones::cargar() {
    Opciones o;
    const bool leidas = leerOpciones(o);
    txttimer->setText(o.intervalo);
    txtpwdcontactos->setText(o.clave);
    txtpwdcontactos2->setText(o.clave);
    txtmaxlote->setText(o.maxlote);
    txtimgfondo->setText(o.imgfondo);
    Chkcontactos->setChecked(o.soloContactos);
    if (!leidas) msBaseNoValida();
}

bool frmOpciones::msGuardarOpciones() {
    Opciones o;
    o.maxlote = txtmaxlote->text();
    o.intervalo = txttimer->text();
    o.clave = txtpwdcontactos->text();
    o.soloContactos = Chkcontactos->isChecked();
    o.imgfondo = txtimgfondo->text();
    if (!mostrar(::msGuardarOpciones(o, txtpwdcontactos2->text()))) return false;
    ui().msgBox(
        u"Datos de Opciones  guardados correctamente.\n\nTiempo de envío de mensajes "
        u"en bandeja de Salida establecido en "_s +
            o.intervalo + u" Seg.\n\n"_s,
        Msg::Information);
    return true;
}

void frmOpciones::cmdexaminar_Click() {
    // Start where the current picture is, with its name chosen.
    const QString actual = txtimgfondo->text();
    const QString elegido = ui().openFileName(u"Seleccione una imagen de fondo:"_s, actual,
                                              u"Imágenes (*.jpg;*.bmp) (*.jpg *.bmp *.png);;"
                                              u"Todos los Ficheros (*.*) (*)"_s);
    if (!elegido.isEmpty()) txtimgfondo->setText(elegido);
}

void frmOpciones::cmdAnadir_Click() {
    if (msGuardarOpciones()) accept();
}

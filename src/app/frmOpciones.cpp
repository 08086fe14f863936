#include "app/frmOpciones.h"

#include "app/mdoOpciones.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "widgets/Accesible.h"
#include "widgets/Cuadros.h"
#include "widgets/Montaje.h"

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
    identificar(this, u"frmOpciones"_s, u"Opciones y Preferencias"_s, u"opciones"_s);

    QGroupBox* envio = crearEnvio();
    QGroupBox* acceso = crearAcceso();
    QGroupBox* aspecto = crearAspecto();
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

QGroupBox* frmOpciones::crearEnvio() {
    auto* envio = new QGroupBox(u"Envío"_s, this);
    txtmaxlote = campoTexto(envio, u"txtmaxlote"_s, 5);
    txttimer = campoTexto(envio, u"txttimer"_s, 10);
    txtmaxlote->setFixedWidth(80);
    txttimer->setFixedWidth(80);
    Chkcontactos =
        control<QCheckBox>(envio, u"Chkcontactos"_s, u"Enviar mensajes sólo a Mis Contactos "_s);
    auto* formEnvio = new QFormLayout(envio);
    formEnvio->addRow(u"Nº máximo de mensajes enviados por Lote"_s, fila({txtmaxlote, nullptr}));
    formEnvio->addRow(u"Enviar mensajes en bandeja de Salida cada"_s,
                      fila({txttimer, etiqueta(envio, u"segundos"_s), nullptr}));
    formEnvio->addRow(Chkcontactos);
    return envio;
}

QGroupBox* frmOpciones::crearAcceso() {
    auto* acceso = new QGroupBox(u"Contraseña de acceso"_s, this);
    txtpwdcontactos = campoClave(acceso, u"txtpwdcontactos"_s);
    txtpwdcontactos2 = campoClave(acceso, u"txtpwdcontactos2"_s);
    auto* formAcceso = new QFormLayout(acceso);
    // One line: a wrapped label spanning a form's row is given the height
    // of one line and shows clipped.
    formAcceso->addRow(etiqueta(
        acceso, u"Contraseña de acceso a opciones  de configuración de Quelmo Mensajes"_s));
    formAcceso->addRow(u"Contraseña"_s, txtpwdcontactos);
    formAcceso->addRow(u"Confirmar contraseña"_s, txtpwdcontactos2);
    formAcceso->addRow(nota(u"Dejela en blanco si no quiere contraseña"_s, acceso));
    return acceso;
}

QGroupBox* frmOpciones::crearAspecto() {
    auto* aspecto = new QGroupBox(u"Imagen de Fondo de Aplicación"_s, this);
    txtimgfondo = control<QLineEdit>(aspecto, u"txtimgfondo"_s);
    txtimgfondo->setClearButtonEnabled(true);
    txtimgfondo->setMinimumWidth(300);
    cmdexaminar = control<QPushButton>(aspecto, u"cmdexaminar"_s, u"Examinar"_s);
    cmdexaminar->setAutoDefault(false);
    auto* capaAspecto = new QVBoxLayout(aspecto);
    capaAspecto->addLayout(fila({{txtimgfondo, 1}, cmdexaminar}));
    capaAspecto->addWidget(
        nota(u"Si la deja en blanco se mostrará la imagen de presentación "
             u"de Quelmo Mensajes SMS."_s,
             aspecto));
    return aspecto;
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

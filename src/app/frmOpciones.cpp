#include "app/frmOpciones.h"

#include "app/Transmitter.h"
#include "app/frmweb.h"
#include "base/AppState.h"
#include "base/Avisos.h"
#include "base/Cifrado.h"
#include "base/Conversions.h"
#include "base/Settings.h"
#include "db/Conexion.h"
#include "widgets/Iconos.h"
#include "widgets/PantallasHijas.h"

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
#include <climits>
#include <cmath>

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

QString sinClave() {
    return QString::fromUtf16(kSinClave);
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
    auto* etiquetaClave = new QLabel(
        u"Contraseña de acceso a opciones  de configuración de Quelmo Mensajes"_s, acceso);
    etiquetaClave->setWordWrap(true);
    formAcceso->addRow(etiquetaClave);
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
    try {
        // 1. Below 15 or not a number means 60, and that is saved back.
        const int intervalo = leerIntervalo().value_or(60);
        txttimer->setText(QString::number(intervalo));
        // 2. The sentinel and an empty setting both mean "no password".
        const QString clave = msCifrarClave(Settings::getSetting(u"Tr"_s, u"pwc"_s), false);
        if (!clave.isEmpty() && clave != sinClave()) {
            txtpwdcontactos->setText(clave);
            txtpwdcontactos2->setText(clave);
        }
        // 3.
        const QueryResult r = Conexion().query(u"select * from opciones"_s);
        if (!r.isEmpty()) {
            txtmaxlote->setText(textoDe(r.value(0, u"maxlote"_s)));
            txtimgfondo->setText(textoDe(r.value(0, u"imgfondo"_s)));
            Chkcontactos->setChecked(numeroDe(r.value(0, u"solocontactos"_s)) == 1);
        }
    } catch (const QuelmoError&) {
        // 4.
        msBaseNoValida();
    }
}

bool frmOpciones::msGuardarOpciones() {
    AppState& g = appState();
    // 1.
    const QString lote = txtmaxlote->text();
    const QString loteNoValido = u"Valor no válido para Nº máximo de mensajes por Lote"_s;
    if (!esNumerico(lote)) {
        ui().msgBox(loteNoValido, Msg::Exclamation);
        return false;
    }
    const double nLote = lote.trimmed().toDouble();
    if (nLote < 1 || nLote > 500) {
        ui().msgBox(loteNoValido + u"\nDebe se un número entre 1 y 500."_s, Msg::Exclamation);
        return false;
    }
    // 2.
    const QString intervalo = txttimer->text();
    const QString intervaloNoValido =
        u"Valor no válido para intervalo de envío de mensajes en Bandeja de Salida"_s;
    if (!esNumerico(intervalo)) {
        ui().msgBox(intervaloNoValido, Msg::Exclamation);
        return false;
    }
    const double segundos = intervalo.trimmed().toDouble();
    if (segundos < 15) {
        ui().msgBox(intervaloNoValido + u"\nEl tiempo mínimo es de 15 Segundos."_s,
                    Msg::Exclamation);
        return false;
    }
    // 3. A filled confirmation with an empty first box is not looked at.
    const QString clave = txtpwdcontactos->text();
    if (!clave.isEmpty()) {
        if (clave != txtpwdcontactos2->text()) {
            ui().msgBox(u"Contraseña y confirmación de contraseña no son iguales"_s,
                        Msg::Exclamation);
            return false;
        }
        if (clave.size() < 4) {
            ui().msgBox(u"La longitud mínima para la contraseña es de 4 caracteres."_s,
                        Msg::Exclamation);
            return false;
        }
    }
    try {
        // 4. The gate asks for the new password from now on.
        const QString nueva = clave.isEmpty() ? sinClave() : clave;
        g.gsClaveAcceso = nueva;
        const QString cifrada = msCifrarClave(nueva, true);
        // 5.
        Conexion().exec(u"update opciones set maxlote=?, solocontactos=?, imgfondo=?"_s,
                        {aEntero16(lote), Chkcontactos->isChecked() ? 1 : 0, txtimgfondo->text()});
        // 6. The interval is stored as typed.
        Settings::saveSetting(u"Tr"_s, u"pwc"_s, cifrada);
        Settings::saveSetting(u"Tr"_s, u"Interval"_s, intervalo);
        // 7. A new interval starts counting now.
        if (segundos * 1000 > INT_MAX) throw QuelmoError(u"Desbordamiento"_s, ErrNum::Overflow);
        Q_EMIT Avisos::instancia().intervaloCambiado(int(std::lround(segundos)));
        // 8.
        ui().msgBox(
            u"Datos de Opciones  guardados correctamente.\n\nTiempo de envío de mensajes "
            u"en bandeja de Salida establecido en "_s +
                intervalo + u" Seg.\n\n"_s,
            Msg::Information);
        // 9.
        if (auto* web = qobject_cast<frmweb*>(PantallasHijas::area())) web->cargarfondo();
        return true;
    } catch (const QuelmoError&) {
        // 10.
        ui().msgBox(u"Ha ocurrido un error guardando los Datos."_s, Msg::Critical);
        return false;
    }
}

void frmOpciones::cmdexaminar_Click() {
    // Start where the current picture is, with its name chosen.
    const QString actual = txtimgfondo->text();
    const QString elegido =
        ui().openFileName(u"Seleccione una imagen de fondo:"_s, actual,
                          u"Imágenes (*.jpg *.bmp *.png);;Todos los Ficheros (*)"_s);
    if (!elegido.isEmpty()) txtimgfondo->setText(elegido);
}

void frmOpciones::cmdAnadir_Click() {
    if (msGuardarOpciones()) accept();
}

#include "accounts/frmNewCanal.h"

#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/Pantallas.h"
#include "delivery/Intercambio.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Iconos.h"
#include "widgets/Montaje.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// The characters a sender may hold at the platform.
bool caracterRemitente(QChar c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') ||
           QStringView(u" +_-.*#").contains(c);
}

const QString kTituloInfo = u"Información sobre los elementos de la Cuenta"_s;

}  // namespace

frmNewCanal::frmNewCanal(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmNewCanal"_s, u"Mantenimiento de Cuenta"_s, u"cuentas"_s);

    crearCampos();
    crearRemitente();
    cmdAceptar = botonConNombre(this, u"cmdAceptar"_s, u"&Guardar"_s);
    CmdSalir = botonConNombre(this, u"CmdSalir"_s, u"&Cerrar"_s);
    XPButton1 = botonConNombre(this, u"XPButton1"_s, u"&Recargar Saldo para esta Cuenta"_s);
    // Enter in the fields has rules of its own, no default button.
    for (QPushButton* b : {cmdAceptar, CmdSalir, XPButton1}) b->setAutoDefault(false);
    colocar();

    connect(Option1, &QButtonGroup::idClicked, this, &frmNewCanal::Option1_Click);
    connect(txtRemitente, &QLineEdit::textChanged, this, &frmNewCanal::actualizarActivacion);
    connect(txtUsuario, &QLineEdit::textChanged, this, &frmNewCanal::actualizarActivacion);
    connect(txtNombre, &QLineEdit::returnPressed, txtUsuario,
            [this] { txtUsuario->setFocus(Qt::TabFocusReason); });
    connect(txtUsuario, &QLineEdit::returnPressed, txtClave,
            [this] { txtClave->setFocus(Qt::TabFocusReason); });
    connect(txtClave, &QLineEdit::returnPressed, cmdAceptar, &QPushButton::click);
    conectarUnaVez(cmdAceptar, this, &frmNewCanal::cmdAceptar_Click);
    connect(CmdSalir, &QPushButton::clicked, this, &QDialog::reject);
    connect(XPButton1, &QPushButton::clicked, this,
            [this] { msAbrirUrl(msUrlRecarga(txtUsuario->text())); });
    actualizarActivacion();
    ordenTabulacion({txtNombre, txtUsuario, txtClave, Option1->button(0), Option1->button(1),
                     Option1->button(2), txtRemitente, findChild<QWidget*>(u"Image4_4"_s),
                     txtinicio, findChild<QWidget*>(u"Image4_0"_s), txtfinal,
                     findChild<QWidget*>(u"Image4_1"_s), importacion, XPButton1, cmdAceptar,
                     CmdSalir});
}

void frmNewCanal::crearCampos() {
    txtNombre = campoTexto(this, u"txtNombre"_s, 50);
    txtUsuario = campoTexto(this, u"txtUsuario"_s, 50);
    txtClave = campoClave(this, u"txtClave"_s, 50);
    txtClave->setStyleSheet(u"lineedit-password-character: 42"_s);
    txtRemitente = campoTexto(this, u"txtRemitente"_s, 11);
    txtRemitente->setToolTip(u"Lea las condiciones para Remitente personalizado"_s);
    txtRemitente->installEventFilter(this);
    txtMovil = control<QLabel>(this, u"txtMovil"_s);
    txtinicio = campoTexto(this, u"txtinicio"_s, 50);
    txtfinal = campoTexto(this, u"txtfinal"_s, 50);
    importacion = control<QCheckBox>(this, u"importacion"_s,
                                     u"Incluir textos inicio/final en importación de mensajes"_s);

    // Fixed values the user never reaches: only their defaults are saved.
    txtMaxMen = campoTexto(this, u"txtMaxMen"_s, 3);
    txtMaxMen->setText(u"160"_s);
    txtSMSPort = campoTexto(this, u"txtSMSPort"_s, 5);
    txtSMSPort->setText(u"80"_s);
    txtSMSHost = campoTexto(this, u"txtSMSHost"_s, 255);
    txtSMSHost->setText(msHostPlataforma());
    for (QWidget* oculto : {txtMaxMen, txtSMSPort, txtSMSHost}) oculto->hide();
}

void frmNewCanal::crearRemitente() {
    Option1 = control<QButtonGroup>(this, u"Option1"_s);
    const QStringList opciones{u"Predeterminado Quelmo Mensajes"_s,
                               u"Mi número de móvil registrado: "_s, u"Personalizado"_s};
    for (int i = 0; i < opciones.size(); ++i)
        Option1->addButton(control<QRadioButton>(this, u"Option1_%1"_s.arg(i), opciones[i]), i);
    // None is set until an account is loaded or the user chooses.
    Option1->setExclusive(true);

    L1 = control<QLabel>(this, u"L1"_s, u"Para activar su remitente envíe al 5303 el mensaje"_s);
    L2 = control<QLabel>(this, u"L2"_s);
    L2->setStyleSheet(u"font-weight: bold"_s);
    L1->hide();
    L2->hide();
}

QToolButton* frmNewCanal::botonInfo(int i, const QString& ayuda) {
    // Read aloud, the picture alone says nothing of what it explains.
    static const QStringList sobre{u"Información sobre el texto inicio de mensaje"_s,
                                   u"Información sobre el texto final de mensaje"_s, QString(),
                                   QString(), u"Condiciones del remitente personalizado"_s};
    auto* b = control<QToolButton>(this, u"Image4_%1"_s.arg(i));
    b->setAccessibleName(sobre.value(i));
    b->setIcon(iconoQuelmo(u"info"_s));
    b->setAutoRaise(true);
    if (!ayuda.isEmpty()) b->setToolTip(ayuda);
    connect(b, &QToolButton::clicked, this, [this, i] { Image4_Click(i); });
    return b;
}

void frmNewCanal::colocar() {
    auto* cuenta = new QGridLayout;
    filasFormulario(cuenta, {{u"Nombre de la Cuenta"_s, txtNombre},
                             {u"Usuario"_s, txtUsuario},
                             {u"Contraseña"_s, txtClave}});

    auto* remitente = new QGroupBox(u"Remitente de los mensajes"_s, this);
    auto* r = new QGridLayout(remitente);
    r->addWidget(Option1->button(0), 0, 0, 1, 3);
    r->addWidget(Option1->button(1), 1, 0);
    r->addWidget(txtMovil, 1, 1, 1, 2);
    r->addWidget(Option1->button(2), 2, 0);
    r->addLayout(fila({etiqueta(this, u"Remitente Personalizado"_s, txtRemitente), txtRemitente,
                       botonInfo(4, u"Ver Condiciones de Remittente"_s)}),
                 2, 1, 1, 2);
    r->addWidget(L1, 3, 0, 1, 3);
    r->addWidget(L2, 4, 0, 1, 3);
    r->setColumnStretch(2, 1);

    auto* textos = new QGridLayout;
    filasFormulario(textos, {{u"Texto inicio de mensaje"_s, txtinicio},
                             {u"Texto final de mensaje"_s, txtfinal}});
    textos->addWidget(botonInfo(0), 0, 2);
    textos->addWidget(botonInfo(1), 1, 2);
    textos->addWidget(importacion, 2, 0, 1, 3);

    auto* v = new QVBoxLayout(this);
    v->addLayout(cuenta);
    v->addWidget(remitente);
    v->addLayout(textos);
    v->addLayout(fila({XPButton1, nullptr, cmdAceptar, CmdSalir}));
    setMinimumWidth(560);
}

void frmNewCanal::editar(bool edicion, int16_t canal, QWidget* padre) {
    frmNewCanal editor(padre);
    editor.setEdicion(edicion);
    editor.setCanal(canal);
    if (edicion) {
        try {
            editor.cargar(msLeerCuenta(canal));
        } catch (const ErrorQuelmo& e) {
            ui().msgBox(u"Encontrado Error: "_s + e.description(), Msg::Exclamation);
            return;
        }
    }
    editor.exec();
}

void frmNewCanal::cargar(const DatosCuenta& d) {
    txtNombre->setText(d.nombre);
    txtSMSHost->setText(d.host);
    txtSMSPort->setText(d.puerto);
    txtUsuario->setText(d.usuario);
    txtClave->setText(d.clave);
    txtMovil->setText(d.movil);
    if (QAbstractButton* b = Option1->button(d.remopc < 0 ? 0 : d.remopc)) b->setChecked(true);
    txtRemitente->setText(d.remitente);
    txtinicio->setText(d.tini);
    txtfinal->setText(d.tfin);
    importacion->setChecked(d.importacion);
    txtRemitente->setEnabled(Option1->checkedId() == 2);
}

DatosCuenta frmNewCanal::datos() const {
    DatosCuenta d;
    d.nombre = txtNombre->text();
    d.host = txtSMSHost->text();
    d.puerto = txtSMSPort->text();
    d.usuario = txtUsuario->text();
    d.clave = txtClave->text();
    d.remopc = Option1->checkedId();
    d.remitente = txtRemitente->text();
    d.tini = txtinicio->text();
    d.tfin = txtfinal->text();
    d.movil = txtMovil->text();
    d.importacion = importacion->isChecked();
    d.maxmen = txtMaxMen->text();
    return d;
}

void frmNewCanal::Option1_Click(int indice) {
    txtRemitente->setEnabled(indice == 2);
    if (indice == 1)
        txtRemitente->setText(txtMovil->text());
    else
        txtRemitente->clear();
    L1->setVisible(indice == 2);
    L2->setVisible(indice == 2);
    if (indice == 2) txtRemitente->setFocus(Qt::OtherFocusReason);
    actualizarActivacion();
}

void frmNewCanal::actualizarActivacion() {
    // The text the user sends to the short number to activate the sender.
    if (Option1->checkedId() == 2) {
        L1->show();
        L2->show();
    }
    L2->setText(u"REMITENTE  "_s + txtUsuario->text() + u"  "_s + txtRemitente->text());
}

bool frmNewCanal::eventFilter(QObject* objeto, QEvent* evento) {
    if (objeto == txtRemitente && evento->type() == QEvent::KeyPress) {
        auto* tecla = static_cast<QKeyEvent*>(evento);
        const QString t = tecla->text();
        // Editing and moving keys carry no text, or a control character.
        if (t.size() == 1 && t[0].isPrint() && !caracterRemitente(t[0])) return true;
    }
    return QDialog::eventFilter(objeto, evento);
}

void frmNewCanal::Image4_Click(int indice) {
    switch (indice) {
        case 0:
            ui().msgBox(
                u"Texto inicio de mensaje:\n\nTexto a añadir al inicio de todos los "
                u"mensajes enviados por esta cuenta.\nDéjelo en blanco si no quiere "
                u"ningún texto al inicio."_s,
                Msg::Information, kTituloInfo);
            break;
        case 1:
            ui().msgBox(
                u"Texto final de mensaje:\n\nTexto a añadir al final de todos los "
                u"mensajes enviados por esta cuenta.\nDéjelo en blanco si no quiere "
                u"ningún texto al final."_s,
                Msg::Information, kTituloInfo);
            break;
        case 4:
            Pantallas::abrir(u"condiciones"_s);
            break;
        default:
            break;
    }
}

QCoro::Task<> frmNewCanal::cmdAceptar_Click() {
    const Intercambio::Encargo encargo(this);
    DatosCuenta d = datos();
    const Saldo saldo = co_await msVerificarCuenta(d.usuario, d.clave, encargo.cancelacion());
    // Closed meanwhile: the screen is gone, and so is the answer; nothing is saved.
    if (encargo.abandonada()) co_return;
    if (saldo.estado == Saldo::Estado::Denegado &&
        ui().msgBox(msTextoDenegada() + u"\n¿Desea guardar la cuenta de todas formas?"_s,
                    Msg::YesNo | Msg::Critical | Msg::DefaultButton2) != Msg::Yes) {
        reject();
        co_return;
    }
    // A field missing or a database error: the editor stays.
    if (!mostrar(msGuardarCuenta(d, m_edicion, m_canal, saldo))) co_return;
    if (saldo.estado == Saldo::Estado::Fallido)
        ui().msgBox(msAvisoSinVerificar(), Msg::Exclamation);
    txtSMSHost->setText(d.host);
    accept();
}

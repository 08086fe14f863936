#include "accounts/frmIniCanal.h"

#include "accounts/mdoCuentas.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Montaje.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmIniCanal::frmIniCanal(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmIniCanal"_s, u"Configuración"_s, u"cuentas"_s);

    Label1 = control<QLabel>(
        this, u"Label1"_s,
        u"Usted ya dispone de una cuenta en la plataforma de mensajes, inserte su nombre de "
        u"usuario y contraseña para completar la instalación"_s);
    Label1->setWordWrap(true);
    txtUsuario = campoTexto(this, u"txtUsuario"_s, 50);
    txtClave = campoClave(this, u"txtClave"_s, 50);
    txtClave2 = campoClave(this, u"txtClave2"_s, 50);
    cmdAceptar = botonConNombre(this, u"cmdAceptar"_s, u"&Aceptar"_s);
    cmdCancelar = botonConNombre(this, u"cmdCancelar"_s, u"&Cancelar"_s);
    cmdAceptar->setDefault(true);

    auto* campos = new QFormLayout;
    campos->addRow(u"Usuario :"_s, txtUsuario);
    campos->addRow(u"Contraseña :"_s, txtClave);
    campos->addRow(u"Repita la Contraseña :"_s, txtClave2);
    auto* v = new QVBoxLayout(this);
    v->addWidget(Label1);
    v->addLayout(campos);
    v->addLayout(fila({nullptr, cmdAceptar, cmdCancelar}));
    setMinimumWidth(460);

    conectarUnaVez(cmdAceptar, this, &frmIniCanal::cmdAceptar_Click);
    connect(cmdCancelar, &QPushButton::clicked, this, &QDialog::reject);
}

QCoro::Task<> frmIniCanal::cmdAceptar_Click() {
    const Intercambio::Encargo encargo(this);
    // Refused or not written, the user stays here to correct.
    const Resultado<AltaInicial> alta = co_await msAltaInicial(
        txtUsuario->text(), txtClave->text(), txtClave2->text(), encargo.cancelacion());
    if (encargo.abandonada() || !mostrar(alta)) co_return;
    switch (*alta) {
        case AltaInicial::Hecha:
            ui().msgBox(
                u"Se completó con éxito la configuración.\nSu Cuenta está dada de alta en la "
                u"aplicación\nPuede acceder a la configuración de cuentas para personalizar su "
                u"cuenta"_s,
                Msg::Information);
            accept();
            break;
        case AltaInicial::SinVerificar:
            ui().msgBox(msAvisoSinVerificar(), Msg::Exclamation);
            accept();
            break;
        case AltaInicial::BaseNoValida:
            ui().msgBox(textoBaseNoValida(), Msg::Critical);
            [[fallthrough]];
        case AltaInicial::FalloBase:
            ui().msgBox(u"No pudo completarse con éxito la configuración, verifique los datos"_s,
                        Msg::Critical);
            msMostrarSeleccionBD();
            break;
        case AltaInicial::Abandonada:
            break;
    }
}

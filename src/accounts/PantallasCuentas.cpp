#include "accounts/PantallasCuentas.h"

#include "accounts/frmCanales.h"
#include "accounts/frmIniCanal.h"
#include "accounts/frmNewCanal.h"
#include "accounts/frmRegistro.h"
#include "accounts/frmSCanal.h"
#include "accounts/frmTipoRegistro.h"
#include "accounts/mdoCuentas.h"
#include "base/Pantallas.h"
#include "widgets/PantallasHijas.h"

using namespace Qt::StringLiterals;

void registrarPantallasCuentas() {
    Pantallas::registrar(u"frmCanales"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmCanales>()); });
    Pantallas::registrar(u"frmSCanal"_s, [] {
        frmSCanal picker(ventanaPadreModal());
        picker.exec();
    });
    Pantallas::registrar(u"frmNewCanal"_s, [] {
        frmNewCanal::editar(false, int16_t(msSiguienteCanal()), ventanaPadreModal());
        msComprobarPrincipal();
        msAvisarCuentas();
    });
    Pantallas::registrar(u"frmTipoRegistro"_s,
                         [] { frmTipoRegistro::ejecutar(ventanaPadreModal()); });
    Pantallas::registrar(u"frmIniCanal"_s, [] {
        frmIniCanal pantalla(ventanaPadreModal());
        pantalla.exec();
    });
    Pantallas::registrar(u"frmRegistro"_s, [] {
        frmRegistro asistente(ventanaPadreModal());
        asistente.exec();
    });
    // The principal account, to complete its user and password.
    Pantallas::registrar(u"frmNewCanal.Principal"_s, [] {
        frmNewCanal::editar(true, msCanalPrincipal(), ventanaPadreModal());
    });
}

#include "history/PantallasHistorico.h"

#include "base/Pantallas.h"
#include "history/frmEmergencias.h"
#include "history/frmHEnvios.h"
#include "widgets/PantallasHijas.h"

using namespace Qt::StringLiterals;

void registrarPantallasHistorico() {
    Pantallas::registrar(u"frmHEnvios"_s,
                         [] { PantallasHijas::show(PantallasHijas::instance<frmHEnvios>()); });
    Pantallas::registrar(u"frmEmergencias"_s, &frmEmergencias::abrir);
}

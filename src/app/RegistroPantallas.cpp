#include "app/RegistroPantallas.h"

#include "accounts/PantallasCuentas.h"
#include "addressbook/PantallasAgenda.h"
#include "app/condiciones.h"
#include "base/Pantallas.h"
#include "composition/PantallasEnvio.h"
#include "history/PantallasHistorico.h"
#include "import/PantallasImportacion.h"
#include "scheduling/PantallasProgramacion.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace {
void registrarPantallasApp() {
    Pantallas::registrar(u"condiciones"_s, [] {
        condiciones pantalla(QApplication::activeWindow());
        pantalla.exec();
    });
}
}  // namespace

void registrarTodas() {
    registrarPantallasApp();
    registrarPantallasCuentas();
    registrarPantallasAgenda();
    registrarPantallasEnvio();
    registrarPantallasProgramacion();
    registrarPantallasHistorico();
    registrarPantallasImportacion();
}

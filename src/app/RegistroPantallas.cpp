#include "app/RegistroPantallas.h"

#include "accounts/PantallasCuentas.h"
#include "addressbook/PantallasAgenda.h"
#include "app/condiciones.h"
#include "base/AppState.h"
#include "base/Pantallas.h"
#include "base/Settings.h"
#include "base/UserInterface.h"
#include "composition/PantallasEnvio.h"
#include "db/Conexion.h"
#include "db/mdoDB.h"
#include "history/PantallasHistorico.h"
#include "import/PantallasImportacion.h"
#include "scheduling/PantallasProgramacion.h"

#include <QApplication>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {
// Until the database selection screen is there, a plain file dialog
// chooses: a file of an older generation is upgraded, one that still isn't
// usable is refused, and the chosen one becomes the database.
void elegirBaseConDialogo() {
    const QString actual = Settings::getSetting(u"BD"_s, u"Path"_s, rutaBaseDefecto());
    const QString elegido =
        ui().openFileName(u"Seleccione su Base de Datos"_s, QFileInfo(actual).absolutePath(),
                          u"Bases de Datos (*.db);;Todos (*)"_s);
    if (elegido.isEmpty()) return;
    if (!msValidarBD(elegido)) msActualizarBD(elegido);
    if (!msValidarBD(elegido)) {
        ui().msgBox(u"Base de datos no valida"_s, Msg::Exclamation);
        return;
    }
    if (!msAbrirBD(elegido)) {
        ui().msgBox(u"Imposible conectar con la base de datos"_s, Msg::Exclamation);
        return;
    }
    Settings::saveSetting(u"BD"_s, u"Path"_s, elegido);
}

void registrarPantallasApp() {
    Pantallas::registrar(u"condiciones"_s, [] {
        condiciones pantalla(QApplication::activeWindow());
        pantalla.exec();
    });
    Pantallas::registrar(u"frmSelectDB"_s, elegirBaseConDialogo);
}
}  // namespace

void registrarTodas() {
    // First, so that a subsystem's own screen of the same name replaces
    // what stands in for it here.
    registrarPantallasApp();
    registrarPantallasCuentas();
    registrarPantallasAgenda();
    registrarPantallasEnvio();
    registrarPantallasProgramacion();
    registrarPantallasHistorico();
    registrarPantallasImportacion();
}

// The entry point of the GUI module: `Main` of the desktop application.
#include "app/Arranque.h"
#include "app/InterfazGrafica.h"
#include "app/mdiMain.h"
#include "app/mdoMain.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "db/Conexion.h"
#include "widgets/Traduccion.h"

#include <QApplication>
#include <QIcon>
#include <QLockFile>

using namespace Qt::StringLiterals;

extern "C" __attribute__((visibility("default"))) int quelmo_gui_main(int argc, char** argv) {
    QApplication app(argc, argv);
    nombrarAplicacion();
    cargarTraduccionQt();
    // Hidden in the tray, the program has no window and goes on sending;
    // it ends only through the main window's closing rule.
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(QIcon(u":/quelmo/iconos/aplicacion.png"_s));
    // A second instance for this user ends at once, silently.
    QLockFile bloqueo(rutaBloqueoInstancia());
    if (!adquirirInstanciaUnica(bloqueo)) return 0;
    prepararBaseInicial();

    InterfazGrafica interfaz;
    establecerInterfaz(&interfaz);
    // The main window with its caption, its load and its first activation.
    mdiMain ventana;
    interfaz.setOwner(&ventana);
    ventana.show();
    // After the access gate, the compose screen; refused, the frame stays
    // without it and each command asks again.
    QObject::connect(&ventana, &mdiMain::primeraActivacionTerminada, &ventana, [] {
        if (msComprobarAcceso()) Pantallas::abrir(u"frmEnvio"_s);
    });
    return app.exec();
}

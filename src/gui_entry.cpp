// The entry point of the GUI module: `Main` of the desktop application.
#include "app/Arranque.h"
#include "app/Instancia.h"
#include "app/InterfazGrafica.h"
#include "app/Transmisor.h"
#include "app/mdiMain.h"
#include "app/mdoMain.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazSinVentana.h"
#include "base/Pantallas.h"
#include "db/Conexion.h"
#include "widgets/Cuadros.h"
#include "widgets/Traduccion.h"

#include <QApplication>
#include <QIcon>

using namespace Qt::StringLiterals;

extern "C" __attribute__((visibility("default"))) int quelmo_gui_main(int argc, char** argv) {
    QApplication app(argc, argv);
    nombrarAplicacion();
    cargarTraduccionQt();
    // Hidden in the tray, the program has no window and goes on sending;
    // it ends only through the main window's closing rule.
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(QIcon(u":/quelmo/iconos/aplicacion.png"_s));
    InterfazGrafica interfaz;
    establecerInterfaz(&interfaz);
    // A second start for this user hands over to the running program and
    // touches nothing else.
    Instancia instancia(Instancia::Papel::Ventana);
    switch (instancia.adquirir()) {
        case Instancia::Toma::Tomada:
            break;
        case Instancia::Toma::OtraEnMarcha:
            mostrar(Instancia::cederAlPrimero());
            return 0;
        case Instancia::Toma::SinCarpeta:
            mostrar(Hecho::no(instancia.motivo()));
            return kSalidaSinBaseDatos;
    }
    prepararBaseInicial();
    // The command line was checked before this module was loaded.
    Transmisor::continuoPorOrden(QApplication::arguments().contains(u"--continuous"_s));

    // The main window with its caption, its load and its first activation.
    mdiMain ventana;
    interfaz.setOwner(&ventana);
    ventana.show();
    QObject::connect(&instancia, &Instancia::ventanaPedida, &ventana, &mdiMain::mnurestaurar_Click);
    // After the access gate, the compose screen; refused, the frame stays
    // without it and each command asks again.
    QObject::connect(&ventana, &mdiMain::primeraActivacionTerminada, &ventana, [] {
        if (msComprobarAcceso()) Pantallas::abrir(u"frmEnvio"_s);
    });
    return app.exec();
}

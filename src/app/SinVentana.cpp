#include "app/SinVentana.h"

#include "app/Arranque.h"
#include "app/Transmisor.h"
#include "app/mdoMain.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazSinVentana.h"
#include "db/Conexion.h"
#include "scheduling/clsTareasPendientes.h"

#include <sys/socket.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QLockFile>
#include <QSocketNotifier>
#include <QTextStream>
#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {
int g_senal[2] = {-1, -1};

void alRecibirSenal(int) {
    const char c = 1;
    [[maybe_unused]] const auto n = ::write(g_senal[1], &c, 1);
}
}  // namespace

int ejecutarSinVentana(int argc, char** argv, bool unaVez) {
    QCoreApplication app(argc, argv);
    nombrarAplicacion();

    Transmisor transmisor;
    bool pararPedido = false;
    // SIGINT and SIGTERM stop between runs: the tick runs to its end first.
    // Caught from the start, so a signal while the database opens is not
    // the default action that kills the process mid-write.
    ::socketpair(AF_UNIX, SOCK_STREAM, 0, g_senal);
    QSocketNotifier notificador(g_senal[0], QSocketNotifier::Read);
    QObject::connect(&notificador, &QSocketNotifier::activated, &app, [&] {
        char c;
        [[maybe_unused]] const auto n = ::read(g_senal[0], &c, 1);
        pararPedido = true;
        transmisor.detener();
        QCoreApplication::quit();
    });
    struct sigaction sa {};
    sa.sa_handler = alRecibirSenal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);

    QLockFile bloqueo(rutaBloqueoInstancia());
    if (!adquirirInstanciaUnica(bloqueo)) return 0;

    InterfazSinVentana interfaz;
    establecerInterfaz(&interfaz);
    EstadoAplicacion& g = estadoAplicacion();
    g.log.setEcho([](const QString& linea) {
        static QTextStream out(stdout);
        out << linea << Qt::endl;
    });

    if (!prepararBaseInicial()) {
        QTextStream(stderr) << u"No se pudo preparar la base de datos inicial en "_s
                            << rutaBaseDefecto() << Qt::endl;
    }

    // What the main window's load and first activation do, without screens
    // and without the balance exchange of the first-run logic.
    transmisor.armarTemporizador();
    cargarClaveAcceso();
    msAbrirBaseInicial();
    clsTareasPendientes().PendientesEnviar();

    if (unaVez) {
        transmisor.msForzarEnvio();
        transmisor.detener();
        Conexion().close();
        return 0;
    }

    // A stop asked for during start-up or the first run ends here.
    if (pararPedido) {
        Conexion().close();
        return 0;
    }
    const int codigo = app.exec();
    Conexion().close();
    return codigo;
}

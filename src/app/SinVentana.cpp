#include "app/SinVentana.h"

#include "app/Arranque.h"
#include "app/Instancia.h"
#include "app/LineaOrdenes.h"
#include "app/Transmisor.h"
#include "app/mdoMain.h"
#include "base/Avisos.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazSinVentana.h"
#include "base/Interruptor.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "delivery/mdoSendRavion.h"
#include "scheduling/clsTareasPendientes.h"

#include <sys/socket.h>
#include <unistd.h>
#include <QCoreApplication>
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

// What an operator looking at the output wants to know first: that it
// runs, on which file, how often and whether it sends at all.
void anunciar(const QString& texto) {
    QTextStream(stdout) << marcaTiempoLog() << u" - "_s << texto << Qt::endl;
}

QString estadoAlArrancar(const Transmisor& transmisor) {
    QString interruptor;
    try {
        interruptor = Interruptor::instancia().paraEnvio() ? u"activado"_s : u"desactivado"_s;
    } catch (const ErrorQuelmo&) {
        interruptor = u"desactivado (valor no válido)"_s;
    }
    return u"Transmisor sin ventana en marcha: base de datos "_s + Conexion().path() +
           u", intervalo "_s + QString::number(transmisor.intervaloSegundos()) +
           u" s, envío de SMS "_s + interruptor +
           (Transmisor::modoContinuo() ? u", modo continuo"_s : QString());
}
}  // namespace

void abrirBaseSinVentana() {
    if (!prepararBaseInicial()) {
        QTextStream(stderr) << u"No se pudo preparar la base de datos inicial en "_s
                            << rutaBaseDefecto() << Qt::endl;
    }
    msAbrirBaseInicial();
}

int ejecutarSinVentana(int argc, char** argv, bool unaVez, bool continuo) {
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

    Instancia instancia(Instancia::Papel::SinVentana);
    switch (instancia.adquirir()) {
        case Instancia::Toma::Tomada:
            break;
        case Instancia::Toma::OtraEnMarcha:
            QTextStream(stderr) << u"Quelmo Mensajes SMS ya está en marcha para este usuario: "
                                   u"este arranque termina sin hacer nada."_s
                                << Qt::endl;
            return 0;
        case Instancia::Toma::SinCarpeta:
            QTextStream(stderr) << instancia.motivo() << Qt::endl;
            return kSalidaSinBaseDatos;
    }

    InterfazSinVentana interfaz;
    establecerInterfaz(&interfaz);
    EstadoAplicacion& g = estadoAplicacion();
    g.log.setEcho([](const QString& linea) {
        static QTextStream out(stdout);
        out << linea << Qt::endl;
    });

    Transmisor::continuoPorOrden(continuo);
    // Nothing more can be written: ending lets the service manager start
    // a new process on the file that is there now.
    QObject::connect(
        &Avisos::instancia(), &Avisos::baseDatosPerdida, &app,
        [&transmisor] {
            transmisor.detener();
            QCoreApplication::exit(kSalidaSinBaseDatos);
        },
        Qt::QueuedConnection);

    // What the main window's load and first activation do, without screens
    // and without the balance exchange of the first-run logic.
    transmisor.armarTemporizador();
    cargarClaveAcceso();
    abrirBaseSinVentana();
    anunciar(estadoAlArrancar(transmisor));
    // Today's missed runs: the question takes its default answer, yes.
    if (clsTareasPendientes().HayPendientesHoy())
        ui().preguntar(preguntaPendientes(), kEstiloPreguntaPendientes, {}, [](int respuesta) {
            if (respuesta == Msg::Yes) clsTareasPendientes().EnviarPendientes();
        });

    int codigo = 0;
    if (unaVez) {
        // One run, then the end: the run goes on from the event loop, and
        // ends after what it left to say (a lost database's line).
        QObject::connect(
            &transmisor, &Transmisor::tickTerminado, &app,
            [&transmisor] {
                transmisor.detener();
                QCoreApplication::exit(Conexion().perdida() ? kSalidaSinBaseDatos : 0);
            },
            Qt::QueuedConnection);
        transmisor.msForzarEnvio();
    }
    // Unless a stop came during start-up: then it ends here.
    if (!pararPedido && (!unaVez || transmisor.enTick())) codigo = app.exec();
    // A script or the user service must learn that nothing went out.
    if (unaVez && codigo == 0) {
        if (Conexion().perdida())
            codigo = kSalidaSinBaseDatos;
        else if (msLotesSinEntregar() > 0)
            codigo = kSalidaSinEntregar;
        else if (msImportacionFallida())
            codigo = kSalidaSinImportar;
    }
    Conexion().close();
    anunciar(u"Transmisor sin ventana detenido"_s);
    return codigo;
}

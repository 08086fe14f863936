// How long the window's event loop stalls while the program talks to the
// platform. A 10 ms timer probes the loop; its largest lateness is the
// longest time a user's click or a repaint would have waited. Cases: a
// batch of 500 rows and a balance query, each against a healthy platform,
// one that answers after 10 s, and a port that accepts and never answers
// (until the total timeout). Then the time a stop takes to give up an
// exchange in flight.
#include "SimuladorPrueba.h"
#include "Sonda.h"
#include "TestSupport.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <QElapsedTimer>
#include <QProcess>
#include <QThread>
#include <QTimer>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void llenar(BaseDatos& db, int filas) {
    db.begin();
    for (int i = 0; i < filas; ++i)
        db.exec(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,1,?,?,2)"_s,
                {QDateTime::currentDateTime(), u"6%1"_s.arg(i, 8, 10, QChar(u'0')),
                 u"Su pedido ha salido"_s});
    db.commit();
}

void ponerHost(BaseDatos& db, const QString& host) {
    db.exec(u"update Canales set Host=? where Canal=1"_s, {host});
}

// A port that takes connections (the kernel's backlog) and never answers.
int puertoMudo() {
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t largo = sizeof a;
    if (::bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || ::listen(s, 16) != 0 ||
        ::getsockname(s, reinterpret_cast<sockaddr*>(&a), &largo) != 0)
        return 0;
    return ntohs(a.sin_port);
}

}  // namespace

int main(int argc, char** argv) {
    TestWorld world;
    QCoreApplication app(argc, argv);
    prepareTestApplication();
    world.reset();
    InterfazGuionada ui;
    const int kTotal = 15;
    Ajustes::saveSetting(u"Despliegue"_s, u"TimeoutTotal"_s, QString::number(kTotal));

    const QString cuenta =
        u"[cuenta1]\nusuario=demo\nclave=demo\nsaldo=1000000\n"
        "movil=0034600123456\n"_s;
    SimuladorPrueba sano(world.root(), cuenta);
    const QString dirLento = world.root() + u"/lento"_s;
    QDir().mkpath(dirLento);
    SimuladorPrueba lento(dirLento, u"[plataforma]\nretraso_ms=10000\n"_s + cuenta);
    const int mudo = puertoMudo();
    if (!sano.listo() || !lento.listo() || mudo == 0) {
        std::fprintf(stderr, "the platform simulator did not start\n");
        return 1;
    }
    TestDb::openShared(TestDb::createCurrent(world.root() + u"/bench.db"_s));
    BaseDatos& db = Conexion();
    db.exec(u"update opciones set maxlote=500 where id=1"_s);
    db.exec(
        u"INSERT INTO Canales (Canal,Nombre,Host,usuario,clave,Saldo,Principal,Remitente,"
        "remopc,imptextos) VALUES (1,'Banco','','demo',?,0,1,'',0,0)"_s,
        {msCifrarClave(u"demo"_s, true)});

    std::printf("bench_ventana: largest stall of the window's event loop (10 ms probe)\n");
    std::printf("%-44s %10s %12s\n", "case", "took (s)", "stall (ms)");
    const struct {
        const char* nombre;
        QString host;
    } plataformas[] = {
        {"healthy platform", sano.host()},
        {"platform answering after 10 s", lento.host()},
        {"silent port (total timeout 15 s)", u"http://127.0.0.1:%1"_s.arg(mudo)},
    };
    Sonda sonda;
    QElapsedTimer reloj;
    for (const auto& p : plataformas) {
        ponerHost(db, p.host);
        db.exec(u"delete from envios"_s);
        llenar(db, 500);
        sonda.empezar();
        reloj.start();
        const int entregadas = QCoro::waitFor(msEnviarLote(1, false));
        const qint64 lote = sonda.terminar();
        if (p.host == sano.host() && entregadas != 500) {
            std::fprintf(stderr, "the healthy batch delivered %d rows: %s\n", entregadas,
                         qPrintable(estadoAplicacion().log.last()));
            return 1;
        }
        std::printf("%-44s %10.2f %12lld\n",
                    qPrintable(u"batch of 500, "_s + QString::fromLatin1(p.nombre)),
                    reloj.elapsed() / 1000.0, lote);
        sonda.empezar();
        reloj.start();
        QCoro::waitFor(SendAutCuenta(1));
        const qint64 saldo = sonda.terminar();
        std::printf("%-44s %10.2f %12lld\n",
                    qPrintable(u"balance query, "_s + QString::fromLatin1(p.nombre)),
                    reloj.elapsed() / 1000.0, saldo);
    }

    // A stop in the middle of an exchange with a silent platform.
    ponerHost(db, u"http://127.0.0.1:%1"_s.arg(mudo));
    llenar(db, 10);
    qint64 parada = -1;
    QTimer::singleShot(2000, [&] {
        reloj.start();
        Intercambio::abandonarTodo();
    });
    QCoro::waitFor(msEnviarLote(1, false));
    parada = reloj.elapsed();
    std::printf("stop during an exchange with a silent platform: the batch gave up in %lld ms\n",
                parada);

    // The program without a window, in an exchange with a silent platform:
    // a script's --send, then SIGTERM as systemd sends it.
    Ajustes::saveSetting(u"BD"_s, u"Path"_s, db.path());
    Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
    Ajustes::saveSetting(u"Despliegue"_s, u"TimeoutTotal"_s, u"60"_s);
    Ajustes::sync();
    db.close();
    QProcess servicio;
    servicio.setProcessChannelMode(QProcess::MergedChannels);
    startProgram(world, servicio, {u"--headless"_s});
    QByteArray salida;
    QElapsedTimer espera;
    espera.start();
    while (!salida.contains("Enviando ") && espera.elapsed() < 20000) {
        servicio.waitForReadyRead(200);
        salida += servicio.readAll();
    }
    // Into the exchange, past the pacing.
    QThread::msleep(1500);
    reloj.start();
    const ProcessResult envio =
        runProgram(world, {u"--send"_s, u"600999777"_s, u"Prueba"_s}, 60000);
    const qint64 msEnvio = reloj.elapsed();
    reloj.start();
    servicio.terminate();
    servicio.waitForFinished(70000);
    const qint64 msParada = reloj.elapsed();
    std::printf("--send while the service waits for the platform: %lld ms (exit code %d)\n",
                msEnvio, envio.exitCode);
    std::printf(
        "SIGTERM while the service waits for the platform: exit after %lld ms "
        "(exit code %d)\n",
        msParada, servicio.exitCode());
    return 0;
}

// Exactly once under faults, over whole drains. `quelmo-sms --headless
// --once` drains outboxes through the platform simulator while
//   matar     the first run of each drain is killed (SIGKILL) at a random
//             instant, then runs follow until the outbox is empty;
//   bloquear  another process takes the database's write lock at random
//             moments of the runs and holds it for a random while;
//   dialogos  this process plays the window: it keeps the database open,
//             queues the outboxes through its connection and opens and
//             closes the file dialog in the database's folder at random
//             moments while the runs (killed as in matar) send.
// Prints the messages lost, the items the simulator received twice (a run
// killed between the platform's acceptance and our commit sends them again)
// and the items delivered twice after the simulator's de-duplication. Fails
// unless nothing is lost and nothing is delivered twice.
//
//   bench_kill [--modo matar|bloquear|dialogos] [--veces N] [--filas F] [--lote L]
//              [--bloqueo-max-ms MS] [--semilla S]
#include "SimuladorPrueba.h"
#include "TestSupportGui.h"
#include "app/InterfazGrafica.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "db/BaseDatos.h"

#include <sqlite3.h>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSet>
#include <QThread>
#include <QTimer>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// The other process of the lock mode: holds the write lock for `ms`.
int sostenerBloqueo(const QString& ruta, int ms) {
    BaseDatos db;
    if (!db.open(ruta)) return 1;
    sqlite3_busy_timeout(db.handle(), 120000);
    db.begin();
    QThread::msleep(ulong(ms));
    db.commit();
    return 0;
}

struct Parametros {
    QString modo = u"matar"_s;
    int veces = 100;
    int filas = 2000;
    int lote = 0;  // 0: 100 under locks (more runs per drain), else 500
    int bloqueoMaxMs = 30000;
    quint32 semilla = QRandomGenerator::global()->generate();
};

bool leerParametros(const QStringList& args, Parametros& p) {
    for (int i = 1; i + 1 < args.size(); i += 2) {
        const QString& a = args[i];
        bool ok = true;
        const QString v = args[i + 1];
        if (a == u"--modo"_s)
            p.modo = v;
        else if (a == u"--veces"_s)
            p.veces = v.toInt(&ok);
        else if (a == u"--filas"_s)
            p.filas = v.toInt(&ok);
        else if (a == u"--lote"_s)
            p.lote = v.toInt(&ok);
        else if (a == u"--bloqueo-max-ms"_s)
            p.bloqueoMaxMs = v.toInt(&ok);
        else if (a == u"--semilla"_s)
            p.semilla = v.toUInt(&ok);
        else
            ok = false;
        if (!ok) return false;
    }
    if (args.size() % 2 == 0) return false;
    if (p.lote == 0) p.lote = p.modo == u"bloquear"_s ? 100 : 500;
    return (p.modo == u"matar"_s || p.modo == u"bloquear"_s || p.modo == u"dialogos"_s) &&
           p.veces >= 0 && p.filas > 0 && p.lote >= 1 && p.lote <= 500 && p.bloqueoMaxMs >= 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && qstrcmp(argv[1], "--sostener") == 0)
        return sostenerBloqueo(QString::fromLocal8Bit(argv[2]), std::atoi(argv[3]));

    TestWorld world;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    prepareTestApplication();
    world.reset();
    Parametros par;
    if (!leerParametros(app.arguments(), par)) {
        std::fprintf(stderr,
                     "usage: bench_kill [--modo matar|bloquear|dialogos] [--veces N] [--filas F] "
                     "[--lote 1..500] [--bloqueo-max-ms MS] [--semilla S]\n");
        return 2;
    }
    QRandomGenerator azar(par.semilla);

    SimuladorPrueba sim(world.root(),
                        u"[cuenta1]\nusuario=demo\nclave=demo\nsaldo=100000000\n"
                        "movil=0034600123456\n"_s);
    if (!sim.listo()) {
        std::fprintf(stderr, "the platform simulator did not start\n");
        return 1;
    }
    const QString base = TestDb::createCurrent(world.root() + u"/kill.db"_s);
    {
        BaseDatos db;
        db.open(base);
        db.exec(u"update opciones set maxlote=? where id=1"_s, {par.lote});
        db.exec(
            u"INSERT INTO Canales (Canal,Nombre,Host,usuario,clave,Saldo,Principal,Remitente,"
            "remopc,imptextos) VALUES (1,'Banco',?,'demo',?,0,1,'Tienda ',0,0)"_s,
            {sim.host(), msCifrarClave(u"demo"_s, true)});
    }
    Ajustes::saveSetting(u"BD"_s, u"Path"_s, base);
    Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
    Ajustes::sync();

    int insertadas = 0;
    int rondas = 0;
    // The window's connection, open for the whole run in the dialog mode.
    const bool ventana = par.modo == u"dialogos"_s;
    if (ventana) TestDb::openShared(base);
    BaseDatos propia;
    const auto llenar = [&] {
        if (!ventana) propia.open(base);
        if (ventana && Conexion().perdida()) return;
        BaseDatos& db = ventana ? Conexion() : propia;
        db.begin();
        // A refused write of the window is told below, not thrown out of main.
        try {
            for (int i = 0; i < par.filas; ++i, ++insertadas)
                db.exec(
                    u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,1,?,?,2)"_s,
                    {QDateTime::currentDateTime(), u"6%1"_s.arg(insertadas, 8, 10, QChar(u'0')),
                     u"R%1-%2 Su pedido está listo"_s.arg(rondas).arg(i)});
            db.commit();
        } catch (const ErrorBD& e) {
            std::fprintf(stderr, "the window's write was refused: %s\n",
                         qPrintable(e.description()));
        }
        if (!ventana) propia.close();
        ++rondas;
    };
    // The file dialog in the database's folder, listed in detail for a
    // random while, then cancelled, as a user browsing for a file.
    InterfazGrafica dialogos;
    int vistos = 0;
    const auto mirarDialogo = [&] {
        prueba::alAbrirModal([&](QDialog* d) {
            if (auto* f = qobject_cast<QFileDialog*>(d)) f->setViewMode(QFileDialog::Detail);
            QTimer::singleShot(azar.bounded(50, 400), d, &QDialog::reject);
        });
        dialogos.openFileName(u"Importar"_s, QFileInfo(base).absolutePath(), u"(*.*)"_s);
        ++vistos;
    };
    const auto pendientes = [&] {
        BaseDatos db;
        db.open(base);
        return db.query(u"select count(*) from envios"_s).value(0, 0).toInt();
    };
    const QString salida = world.root() + u"/salida.log"_s;
    const auto arrancar = [&](QProcess& p) {
        p.setProcessChannelMode(QProcess::MergedChannels);
        p.setStandardOutputFile(salida, QIODevice::Append);
        startProgram(world, p, {u"--headless"_s, u"--once"_s});
    };
    // Runs until one ends by itself; false when the outbox does not drain.
    int corridas = 0;
    double mediaMs = 1000;
    const auto vaciar = [&] {
        for (int i = 0; pendientes() > 0; ++i) {
            if (i == 200) return false;
            QElapsedTimer reloj;
            reloj.start();
            QProcess p;
            arrancar(p);
            if (ventana && azar.bounded(2) == 0) {
                QThread::msleep(azar.bounded(int(mediaMs) + 1));
                mirarDialogo();
            }
            p.waitForFinished(180000);
            mediaMs = 0.8 * mediaMs + 0.2 * double(reloj.elapsed());
            ++corridas;
        }
        return true;
    };

    QElapsedTimer total;
    total.start();
    int muertes = 0, bloqueos = 0;
    qint64 msBloqueo = 0;
    if (par.modo == u"matar"_s || ventana) {
        // Until `veces` kills have landed: a run that ends before its instant
        // is no kill, and its outbox is simply drained.
        for (int v = 0; muertes < par.veces; ++v) {
            if (v == 10 * par.veces + 10) {
                std::fprintf(stderr, "the runs end before any instant can kill them\n");
                return 1;
            }
            llenar();
            QProcess p;
            arrancar(p);
            // The dialog while the run sends, the window's writes after it.
            if (ventana) {
                QThread::msleep(azar.bounded(int(mediaMs) + 1));
                mirarDialogo();
            }
            // Anywhere in a run: its mean length, and a fifth more.
            if (!p.waitForFinished(azar.bounded(int(mediaMs * 1.2) + 1))) {
                p.kill();
                p.waitForFinished(10000);
                ++muertes;
            }
            ++corridas;
            if (!vaciar()) {
                std::fprintf(stderr, "the outbox did not drain\n");
                return 1;
            }
            if ((v + 1) % 10 == 0)
                std::fprintf(stderr, "%d drains, %d kills, %lld s\n", v + 1, muertes,
                             total.elapsed() / 1000);
        }
    } else {
        QProcess otro;
        llenar();
        while (pendientes() > 0 || bloqueos < par.veces) {
            if (pendientes() == 0) llenar();
            QProcess p;
            arrancar(p);
            // Without an event loop the end of the holder is seen only by a wait.
            if (otro.state() != QProcess::NotRunning) otro.waitForFinished(0);
            if (bloqueos < par.veces && otro.state() == QProcess::NotRunning) {
                p.waitForFinished(azar.bounded(int(mediaMs) + 1));
                const int ms = azar.bounded(par.bloqueoMaxMs + 1);
                otro.start(QCoreApplication::applicationFilePath(),
                           {u"--sostener"_s, base, QString::number(ms)});
                otro.waitForStarted();
                ++bloqueos;
                msBloqueo += ms;
            }
            QElapsedTimer reloj;
            reloj.start();
            p.waitForFinished(180000);
            mediaMs = 0.8 * mediaMs + 0.2 * double(reloj.elapsed());
            ++corridas;
        }
        otro.waitForFinished(180000);
    }

    // Every text is unique, so a text is a message.
    QHash<QString, int> entregas;
    for (const QJsonObject& o : sim.registro()) ++entregas[o.value(u"mensaje"_s).toString()];
    int dosVeces = 0;
    for (int n : std::as_const(entregas)) dosVeces += n - 1;
    BaseDatos db;
    db.open(base);
    const QVector<QString> historial = db.queryTexts(u"select Mensaje from HEnvios"_s);
    const QSet<QString> enHistorial(historial.begin(), historial.end());
    const int quedan = db.query(u"select count(*) from envios"_s).value(0, 0).toInt();
    QFile log(salida);
    log.open(QIODevice::ReadOnly);
    const int bloqueadas = int(log.readAll().count("database is locked"));

    const int perdidos = insertadas - int(entregas.size());
    std::printf(
        "bench_kill --modo %s: seed %u, %d outboxes of %d rows, batches of %d, %d runs, "
        "%.0f s\n",
        qPrintable(par.modo), par.semilla, rondas, par.filas, par.lote, corridas,
        double(total.elapsed()) / 1000);
    if (ventana)
        std::printf("  runs killed                    %d; file dialogs opened %d%s\n", muertes,
                    vistos, Conexion().perdida() ? "; the window lost its database" : "");
    else if (par.modo == u"matar"_s)
        std::printf("  runs killed                    %d\n", muertes);
    else
        std::printf(
            "  lock holds                     %d (%.1f s in all); runs that gave up on it: %d\n",
            bloqueos, double(msBloqueo) / 1000, bloqueadas);
    std::printf("  messages lost                  %d\n", perdidos);
    std::printf("  left in the outbox             %d\n", quedan);
    std::printf("  history rows missing / extra   %d / %d\n", insertadas - int(enHistorial.size()),
                int(historial.size() - enHistorial.size()));
    std::printf("  items the platform got twice   %d\n", int(sim.duplicados().size()));
    std::printf("  items delivered twice          %d\n", dosVeces);
    const bool bien = !Conexion().perdida() && perdidos == 0 && quedan == 0 && dosVeces == 0 &&
                      enHistorial.size() == insertadas && historial.size() == insertadas;
    return bien ? 0 : 1;
}

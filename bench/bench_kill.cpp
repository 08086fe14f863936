// Exactly once under faults, over whole drains. `quelmo-sms --headless
// --once` drains outboxes through the platform simulator while
//   matar     the first run of each drain is killed (SIGKILL) at a random
//             instant, then runs follow until the outbox is empty;
//   bloquear  another process takes the database's write lock at random
//             moments of the runs and holds it for a random while;
//   dialogos  this process plays the window: it keeps the database open,
//             queues the outboxes through its connection and opens and
//             closes the file dialog in the database's folder at random
//             moments while the runs (killed as in matar) send;
//   modales   this process is the window and runs the transmitter itself
//             (continuous mode, a platform answering after 200 ms) while
//             it opens a modal screen, a message box or a file dialog at
//             random moments and leaves it open for a random while; prints
//             how long after the platform's answer the history had the
//             rows (median, max).
// Prints the messages lost, the items the simulator received twice (a run
// killed between the platform's acceptance and our commit sends them again)
// and the items delivered twice after the simulator's de-duplication. Fails
// unless nothing is lost and nothing is delivered twice.
//
//   bench_kill [--modo matar|bloquear|dialogos|modales] [--veces N] [--filas F] [--lote L]
//              [--bloqueo-max-ms MS] [--semilla S]
#include "SimuladorPrueba.h"
#include "TestSupportGui.h"
#include "app/InterfazGrafica.h"
#include "app/Transmisor.h"
#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "db/BaseDatos.h"

#include <sqlite3.h>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QRandomGenerator>
#include <QSet>
#include <QThread>
#include <QTimer>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// The bench can't go on without its file: it stops with the reason.
void abrir(BaseDatos& db, const QString& ruta) {
    if (const Hecho h = db.open(ruta); !h) qFatal("%s", qPrintable(h.motivo()));
}

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
    return (p.modo == u"matar"_s || p.modo == u"bloquear"_s || p.modo == u"dialogos"_s ||
            p.modo == u"modales"_s) &&
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
                     "usage: bench_kill [--modo matar|bloquear|dialogos|modales] [--veces N] "
                     "[--filas F] "
                     "[--lote 1..500] [--bloqueo-max-ms MS] [--semilla S]\n");
        return 2;
    }
    QRandomGenerator azar(par.semilla);

    const bool enProceso = par.modo == u"modales"_s;
    constexpr int kRetrasoMs = 200;
    SimuladorPrueba sim(
        world.root(), (enProceso ? u"[plataforma]\nretraso_ms=%1\n"_s.arg(kRetrasoMs) : QString()) +
                          u"[cuenta1]\nusuario=demo\nclave=demo\nsaldo=100000000\n"
                          "movil=0034600123456\n"_s);
    if (!sim.listo()) {
        std::fprintf(stderr, "the platform simulator did not start\n");
        return 1;
    }
    const QString base = TestDb::createCurrent(world.root() + u"/kill.db"_s);
    {
        BaseDatos db;
        abrir(db, base);
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
    const bool ventana = par.modo == u"dialogos"_s || enProceso;
    if (ventana) TestDb::openShared(base);
    BaseDatos propia;
    const auto llenar = [&] {
        if (!ventana) abrir(propia, base);
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
        abrir(db, base);
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
    QVector<qint64> esperas;  // from the platform's answer to the history rows, ms
    if (enProceso) {
        Transmisor::continuoPorOrden(true);
        Transmisor transmisor;
        transmisor.armarTemporizador();
        // The platform records a batch, then answers after its delay: the
        // record file growing marks the answer to come; the history's count
        // growing, the rows written.
        const QString registro = world.root() + u"/registro.jsonl"_s;
        qint64 tamano = QFileInfo(registro).size();
        long long filasHistorial = 0;
        qint64 respuestaEn = -1;
        QTimer sonda;
        sonda.setInterval(2);
        QObject::connect(&sonda, &QTimer::timeout, [&] {
            const qint64 t = QFileInfo(registro).size();
            if (t > tamano) {
                tamano = t;
                if (respuestaEn < 0) respuestaEn = total.elapsed() + kRetrasoMs;
            }
            const long long h =
                Conexion().query(u"select count(*) from HEnvios"_s).value(0, 0).toLongLong();
            if (h > filasHistorial) {
                filasHistorial = h;
                if (respuestaEn >= 0) esperas << qMax<qint64>(0, total.elapsed() - respuestaEn);
                respuestaEn = -1;
            }
        });
        sonda.start();
        const auto esperar = [](int ms) {
            QEventLoop bucle;
            QTimer::singleShot(ms, &bucle, &QEventLoop::quit);
            bucle.exec();
        };
        const auto abrirModal = [&] {
            std::unique_ptr<QDialog> d;
            switch (azar.bounded(3)) {
                case 0:
                    d = std::make_unique<QDialog>();
                    break;
                case 1:
                    d = std::make_unique<QMessageBox>(QMessageBox::Warning, u"Aviso"_s, u"x"_s);
                    break;
                default:
                    d = std::make_unique<QFileDialog>(nullptr, u"Abrir"_s, world.root());
                    static_cast<QFileDialog*>(d.get())->setOption(QFileDialog::DontUseNativeDialog);
            }
            QTimer::singleShot(azar.bounded(100, 1500), d.get(), &QDialog::reject);
            d->exec();
            ++vistos;
        };
        while (vistos < par.veces) {
            if (pendientes() == 0) llenar();
            if (!transmisor.enTick()) transmisor.msForzarEnvio();
            esperar(azar.bounded(300));
            abrirModal();
        }
        while (pendientes() > 0) {
            if (!transmisor.enTick()) transmisor.msForzarEnvio();
            esperar(20);
        }
        transmisor.detener();
        corridas = int(esperas.size());
    } else if (par.modo == u"matar"_s || ventana) {
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
    abrir(db, base);
    const QVector<QString> historial = db.queryTexts(u"select Mensaje from HEnvios"_s);
    const QSet<QString> enHistorial(historial.begin(), historial.end());
    const int quedan = db.query(u"select count(*) from envios"_s).value(0, 0).toInt();
    QFile log(salida);
    const int bloqueadas =
        log.open(QIODevice::ReadOnly) ? int(log.readAll().count("database is locked")) : 0;

    const int perdidos = insertadas - int(entregas.size());
    std::printf(
        "bench_kill --modo %s: seed %u, %d outboxes of %d rows, batches of %d, %d runs, "
        "%.0f s\n",
        qPrintable(par.modo), par.semilla, rondas, par.filas, par.lote, corridas,
        double(total.elapsed()) / 1000);
    if (enProceso) {
        std::sort(esperas.begin(), esperas.end());
        std::printf("  modal windows opened           %d\n", vistos);
        if (!esperas.isEmpty())
            std::printf(
                "  answer to history rows         median %lld ms, max %lld ms (%d batches)\n",
                esperas[esperas.size() / 2], esperas.last(), int(esperas.size()));
    } else if (ventana)
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

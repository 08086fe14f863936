// `quelmo-sms --headless` as servers and scripts use it: a real process in a
// temporary home.
#include "SimuladorPrueba.h"
#include "TestSupport.h"
#include "app/Instancia.h"
#include "base/Ajustes.h"
#include "db/BaseDatos.h"

#include <sqlite3.h>
#include <QProcess>
#include <csignal>

using namespace Qt::StringLiterals;

class TestHeadless : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    QString base() const { return world.appDir() + u"/mensajes.db"_s; }

  private Q_SLOTS:
    void init() {
        QDir(world.configHome()).removeRecursively();
        QDir(world.dataHome()).removeRecursively();
        QDir().mkpath(world.configHome());
        QDir().mkpath(world.dataHome());
    }

    void onceOnAFreshHomeCreatesTheDatabase() {
        const ProcessResult r = runProgram(world, {u"--headless"_s, u"--once"_s});
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.err.isEmpty(), qPrintable(r.err));
        BaseDatos db;
        QVERIFY(db.open(base()));
        QCOMPARE(db.query(u"SELECT maxlote FROM opciones WHERE id=1"_s).value(0, 0).toInt(), 50);
        const QByteArray texto = prueba::leer(world.settingsFile());
        QVERIFY(texto.contains(QByteArray(QByteArray("Path=") + base().toUtf8())));
        QVERIFY(texto.contains("Interval=60"));
    }

    void aRunLogsToStandardOutput() {
        // An old saved file is upgraded at start and the line comes out.
        QDir().mkpath(world.appDir());
        const QString vieja = TestDb::createBaseline(world.root() + u"/vieja.db"_s);
        world.writeSettings("[BD]\nPath=" + vieja.toUtf8() + "\n[Tr]\nActivo=1\n");
        const ProcessResult r = runProgram(world, {u"--headless"_s, u"--once"_s});
        QCOMPARE(r.exitCode, 0);
        const QRegularExpression linea(
            u"^\\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d - Proceso de actualización de Base de "
            u"Datos completado\\.$"_s,
            QRegularExpression::MultilineOption);
        QVERIFY2(linea.match(r.out).hasMatch(), qPrintable(r.out));
        // An operator sees that it ran, on what, and that it stopped.
        QVERIFY2(r.out.contains(u" - Transmisor sin ventana en marcha: base de datos "_s + vieja +
                                u", intervalo 60 s, envío de SMS activado\n"_s),
                 qPrintable(r.out));
        QVERIFY2(r.out.endsWith(u" - Transmisor sin ventana detenido\n"_s), qPrintable(r.out));
    }

    // Something that is no database of ours, at the default place (first
    // run) or as the saved choice: refused without a byte of it changing.
    void noUsableDatabaseExitsNonZero_data() {
        QTest::addColumn<QByteArray>("sql");  // empty: the bytes below are written instead
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("guardada");
        const QByteArray otroPrograma =
            "CREATE TABLE clientes (id INTEGER PRIMARY KEY, nombre TEXT);"
            "INSERT INTO clientes (nombre) VALUES ('Ana');";
        for (const bool guardada : {false, true}) {
            const char* donde = guardada ? "saved choice: " : "default place: ";
            QTest::newRow(QByteArray(donde).append("text").constData())
                << QByteArray() << QByteArray(8192, 'x') << guardada;
            QTest::newRow(QByteArray(donde).append("empty file").constData())
                << QByteArray() << QByteArray() << guardada;
            QTest::newRow(QByteArray(donde).append("empty database").constData())
                << QByteArray("PRAGMA user_version=7;") << QByteArray() << guardada;
            QTest::newRow(QByteArray(donde).append("another program's database").constData())
                << otroPrograma << QByteArray() << guardada;
        }
    }
    void noUsableDatabaseExitsNonZero() {
        QFETCH(QByteArray, sql);
        QFETCH(QByteArray, bytes);
        QFETCH(bool, guardada);
        QDir().mkpath(world.appDir());
        const QString ajena = guardada ? world.root() + u"/ajena.db"_s : base();
        QFile::remove(ajena);
        if (sql.isEmpty()) {
            prueba::escribir(ajena, bytes);
        } else {
            sqlite3* h = nullptr;
            QCOMPARE(sqlite3_open(QFile::encodeName(ajena).constData(), &h), SQLITE_OK);
            QCOMPARE(sqlite3_exec(h, sql.constData(), nullptr, nullptr, nullptr), SQLITE_OK);
            sqlite3_close(h);
        }
        const QByteArray antes = prueba::leer(ajena);
        if (guardada) world.writeSettings("[BD]\nPath=" + ajena.toUtf8() + "\n");
        const ProcessResult r = runProgram(world, {u"--headless"_s, u"--once"_s});
        QVERIFY(r.finished);
        QCOMPARE(prueba::leer(ajena), antes);
        QVERIFY(!QFile::exists(ajena + u"-wal"_s));
        if (!guardada) {
            QCOMPARE(r.exitCode, 3);
            QVERIFY2(r.err.contains(u"base de datos"_s), qPrintable(r.err));
        }
        QFile::remove(ajena);
        QFile::remove(world.settingsFile());
    }

    // A cron job or the user service learns from the exit code whether the
    // run delivered what was waiting.
    void onceExitCodeSaysWhetherItDelivered_data() {
        QTest::addColumn<QString>("clave");  // of the account; empty: no row waits
        QTest::addColumn<bool>("alcanzable");
        QTest::addColumn<int>("codigo");
        QTest::addColumn<QString>("linea");
        QTest::addColumn<bool>("vigiladoRoto");  // the watched path is a folder
        QTest::newRow("nothing waiting") << QString() << true << 0 << QString() << false;
        QTest::newRow("delivered")
            << u"demo"_s << true << 0 << u"Envío simulado Para el ENVIO_SIMULADO"_s << false;
        QTest::newRow("platform not reached")
            << u"demo"_s << false << 4 << u"No se pudo conectar con la plataforma: "_s << false;
        QTest::newRow("account refused")
            << u"mala"_s << true << 4 << u"Acceso Denegado, causa: "_s << false;
        // The rows still go out, and the exit code tells of the file.
        QTest::newRow("watched file refused, outbox delivered")
            << u"demo"_s << true << 5 << u"Envío simulado Para el ENVIO_SIMULADO"_s << true;
    }
    void onceExitCodeSaysWhetherItDelivered() {
        QFETCH(QString, clave);
        QFETCH(bool, alcanzable);
        QFETCH(QString, linea);
        QFETCH(bool, vigiladoRoto);
        SimuladorPrueba sim(world.root(),
                            u"[plataforma]\nversion=\n[cuenta1]\nusuario=demo\nclave=demo\n"_s);
        QDir().mkpath(world.appDir());
        if (clave.isEmpty())
            TestDb::createCurrent(base());
        else
            TestDb::createWithRowWaiting(base(), alcanzable ? sim.host() : u"http://127.0.0.1:1"_s,
                                         clave);
        const QString vigilado = world.root() + u"/vigilado"_s;
        QDir(vigilado).removeRecursively();
        if (vigiladoRoto) QVERIFY(QDir().mkpath(vigilado));
        world.writeSettings("[BD]\nPath=" + base().toUtf8() +
                            "\n[Tr]\nActivo=1\n[ImportA]\nPath=" + vigilado.toUtf8() + "\n");
        const ProcessResult r = runProgram(world, {u"--headless"_s, u"--once"_s});
        QVERIFY(r.finished);
        QTEST(r.exitCode, "codigo");
        if (!linea.isEmpty()) QVERIFY2(r.out.contains(linea), qPrintable(r.out));
        QCOMPARE(r.out.contains(u" no es un fichero normal sino una carpeta; no se importa"_s),
                 vigiladoRoto);
    }

    // The database removed while a run waits for the platform: the results
    // are not written into a file no one will read; the run says so and the
    // service ends with code 3, for its manager to start it on what is there.
    void aDatabaseRemovedUnderTheServiceStopsItsWrites() {
        SimuladorPrueba sim(world.root(),
                            u"[plataforma]\nretraso_ms=1500\n[cuenta1]\n"
                            u"usuario=demo\nclave=demo\n"_s);
        QDir().mkpath(world.appDir());
        TestDb::createWithRowWaiting(base(), sim.host());
        world.writeSettings("[BD]\nPath=" + base().toUtf8() + "\n[Tr]\nActivo=1\n");
        QProcess p;
        startProgram(world, p, {u"--headless"_s, u"--once"_s});
        // Once the platform has the batch, and before it answers.
        QTRY_VERIFY_WITH_TIMEOUT(!sim.registro().isEmpty(), 10000);
        QVERIFY(QFile::remove(base()));
        const ProcessResult r = finishProgram(p);
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 3);
        QVERIFY2(r.out.contains(u"ha sido borrada o sustituida por otro programa mientras estaba "
                                u"abierta. Para no perder nada, Quelmo Mensajes SMS ha dejado de "
                                u"escribir en ella."_s),
                 qPrintable(r.out));
        QVERIFY(!QFile::exists(base()));
    }

    // A data folder that can't take the lock is no other copy running: the
    // service and a cron job see the failure, with the folder and why.
    void unusableDataFolderIsAFailure_data() {
        QTest::addColumn<QStringList>("orden");
        QTest::newRow("once") << QStringList{u"--headless"_s, u"--once"_s};
        QTest::newRow("service") << QStringList{u"--headless"_s};
    }
    void unusableDataFolderIsAFailure() {
        QFETCH(QStringList, orden);
        // The folder's place is taken by a file: nothing can be created there.
        QDir(world.dataHome()).removeRecursively();
        QDir().mkpath(world.dataHome());
        prueba::escribir(world.dataHome() + u"/Quelmo"_s, {});
        const ProcessResult r = runProgram(world, orden, 10000);
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 3);
        QVERIFY2(
            r.err.startsWith(u"No se puede usar la carpeta de datos "_s + world.appDir() + u": "_s),
            qPrintable(r.err));
        QVERIFY(!r.err.contains(u"ya está en marcha"_s));
        QFile::remove(world.dataHome() + u"/Quelmo"_s);
    }

    void secondInstanceSaysSoAndSignalsStopCleanly() {
        QProcess primera;
        startProgram(world, primera, {u"--headless"_s});
        QVERIFY(primera.waitForStarted());
        // Wait until the first one holds its lock and opened its database.
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(base()), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(world.appDir() + u"/quelmo-sms.lock"_s), 10000);

        const ProcessResult segunda = runProgram(world, {u"--headless"_s, u"--once"_s}, 10000);
        QVERIFY(segunda.finished);
        QCOMPARE(segunda.exitCode, 0);
        QVERIFY(segunda.out.isEmpty());
        QCOMPARE(segunda.err.trimmed(),
                 u"Quelmo Mensajes SMS ya está en marcha para este usuario: "
                 u"este arranque termina sin hacer nada."_s);
        QCOMPARE(primera.state(), QProcess::Running);

        // The window, started now, learns why it can't come and what to do.
        QCOMPARE(Instancia::pedirVentana(), Instancia::Respuesta::SinVentana);
        const Hecho cedido = Instancia::cederAlPrimero();
        QCOMPARE(cedido.estilo(), Msg::Information);
        QVERIFY2(cedido.motivo().contains(u"sin ventana"_s), qPrintable(cedido.motivo()));
        QVERIFY(cedido.motivo().contains(u"\n\nsystemctl --user stop quelmo-sms-transmisor\n\n"_s));

        ::kill(pid_t(primera.processId()), SIGTERM);
        QVERIFY(primera.waitForFinished(10000));
        QCOMPARE(primera.exitStatus(), QProcess::NormalExit);
        QCOMPARE(primera.exitCode(), 0);
        QVERIFY(!QFile::exists(world.appDir() + u"/quelmo-sms.lock"_s));
        QVERIFY(!QFile::exists(Instancia::nombreServidor()));
    }
};

QUELMO_TEST_MAIN(TestHeadless)
#include "test_headless.moc"

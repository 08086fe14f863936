// `quelmo-sms --headless` as servers and scripts use it: a real process in a
// temporary home.
#include "TestSupport.h"
#include "app/Instancia.h"
#include "base/Ajustes.h"
#include "db/BaseDatos.h"

#include <QProcess>
#include <csignal>

using namespace Qt::StringLiterals;

class TestHeadless : public QObject {
    Q_OBJECT
  public:
    explicit TestHeadless(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

    QString ini() const { return world.configHome() + u"/Quelmo/Quelmo Mensajes SMS.ini"_s; }
    QString base() const { return world.appDir() + u"/mensajes.db"_s; }
    void escribirIni(const QByteArray& texto) {
        QDir().mkpath(world.configHome() + u"/Quelmo"_s);
        QFile f(ini());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(texto);
    }
    void iniciar(QProcess& p) {
        startProgram(world, p, {u"--headless"_s});
        QVERIFY(p.waitForStarted());
    }

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
        QFile f(ini());
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray texto = f.readAll();
        QVERIFY(texto.contains(QByteArray(QByteArray("Path=") + base().toUtf8())));
        QVERIFY(texto.contains("Interval=60"));
    }

    void aRunLogsToStandardOutput() {
        // An old saved file is upgraded at start and the line comes out.
        QDir().mkpath(world.appDir());
        const QString vieja = TestDb::createBaseline(world.root() + u"/vieja.db"_s);
        escribirIni("[BD]\nPath=" + vieja.toUtf8() + "\n[Tr]\nActivo=1\n");
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

    void noUsableDatabaseExitsNonZero() {
        // The default place holds something that is no database, and no
        // database was ever chosen: the selection screen would be needed.
        QDir().mkpath(world.appDir());
        QFile f(base());
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(8192, 'x'));
        f.close();
        const ProcessResult r = runProgram(world, {u"--headless"_s, u"--once"_s});
        QVERIFY(r.finished);
        QVERIFY(r.exitCode != 0);
        QVERIFY2(r.err.contains(u"base de datos"_s), qPrintable(r.err));
    }

    void secondInstanceSaysSoAndSignalsStopCleanly() {
        QProcess primera;
        iniciar(primera);
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
        InterfazGuionada ui;
        Instancia::cederAlPrimero();
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(ui.boxes[0].style, Msg::Information);
        QVERIFY2(ui.boxes[0].text.contains(u"sin ventana"_s), qPrintable(ui.boxes[0].text));
        QVERIFY(
            ui.boxes[0].text.contains(u"\n\nsystemctl --user stop quelmo-sms-transmisor\n\n"_s));

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

// A full disk under the running program (every write there fails with
// ENOSPC): each command says why in Spanish, exits non-zero, and leaves
// the outbox, the history and the database as they were.
#include "SimuladorPrueba.h"
#include "TestSupport.h"
#include "db/BaseDatos.h"

#include <QDir>
#include <QProcess>

using namespace Qt::StringLiterals;

class TestDiscoLleno : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    QString base() const { return world.appDir() + u"/mensajes.db"_s; }
    void prepararBase(const SimuladorPrueba& sim) {
        QDir().mkpath(world.appDir());
        TestDb::createWithRowWaiting(base(), sim.host());
        world.writeSettings("[BD]\nPath=" + base().toUtf8() + "\n[Tr]\nActivo=1\n");
    }
    // The program's environment for a full disk under the test's world.
    void llenarDisco(const QString& si = QString()) {
        qputenv("LD_PRELOAD", QUELMO_DISCO_LLENO_LIB);
        qputenv("QUELMO_DISCO_LLENO", world.root().toUtf8());
        qputenv("QUELMO_DISCO_LLENO_SI", si.toUtf8());
        // A sanitized program takes a preloaded library too.
        qputenv("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0");
    }
    void vaciarDisco() {
        for (const char* v :
             {"LD_PRELOAD", "QUELMO_DISCO_LLENO", "QUELMO_DISCO_LLENO_SI", "ASAN_OPTIONS"})
            qunsetenv(v);
    }
    QStringList cuentas() {
        BaseDatos db;
        if (!db.open(base())) return {};
        return {db.query(u"SELECT count(*) FROM envios"_s).value(0, 0).toString(),
                db.query(u"SELECT count(*) FROM HEnvios"_s).value(0, 0).toString(),
                db.query(u"PRAGMA integrity_check"_s).value(0, 0).toString()};
    }

  private Q_SLOTS:
    void cadaOrdenLoDiceYNoPierdeNada_data() {
        QTest::addColumn<QStringList>("orden");  // {fichero}: a file of one message
        QTest::addColumn<int>("codigo");
        QTest::addColumn<QString>("linea");  // in standard error or output
        // The database can't even open: its journal needs the disk.
        QTest::newRow("send") << QStringList{u"--send"_s, u"600123456"_s, u"hola"_s} << 3
                              << u"{base}: el disco está lleno"_s;
        QTest::newRow("import") << QStringList{u"--import"_s, u"{fichero}"_s} << 3
                                << u"{base}: el disco está lleno"_s;
        QTest::newRow("once") << QStringList{u"--headless"_s, u"--once"_s} << 3
                              << u"No se puede usar la carpeta de datos {carpeta}: "_s;
    }
    void cadaOrdenLoDiceYNoPierdeNada() {
        QFETCH(QStringList, orden);
        QFETCH(QString, linea);
        world.reset();
        QDir(world.dataHome()).removeRecursively();
        QDir().mkpath(world.appDir());
        SimuladorPrueba sim(world.root(), u"[cuenta1]\nusuario=demo\nclave=demo\n"_s);
        prepararBase(sim);
        // The file to import lies outside the full disk, as a user's would.
        QTemporaryDir fuera;
        const QString fichero = fuera.path() + u"/pedido.txt"_s;
        prueba::escribir(fichero, "600123457;nuevo\n");
        for (QString& a : orden) a.replace(u"{fichero}"_s, fichero);
        linea.replace(u"{base}"_s, base()).replace(u"{carpeta}"_s, world.appDir());
        const QStringList antes = cuentas();
        QCOMPARE(antes, (QStringList{u"1"_s, u"0"_s, u"ok"_s}));

        llenarDisco();
        const ProcessResult r = runProgram(world, orden);
        vaciarDisco();

        QVERIFY(r.finished);
        QTEST(r.exitCode, "codigo");
        const QString dicho = r.err + r.out;
        QVERIFY2(dicho.contains(linea), qPrintable(dicho));
        QCOMPARE(cuentas(), antes);
        QCOMPARE(sim.registro().size(), 0);
        // No working copy left behind.
        QCOMPARE(QDir(world.appDir()).entryList({u"Import_*"_s}, QDir::Files), QStringList());
    }

    // The disk fills while the platform has the batch: its answer can't be
    // written, the rows stay in the outbox and the run says it failed; once
    // there is room, the next run moves them to the history without the
    // platform sending anything twice.
    void elDiscoSeLlenaDuranteUnEnvio() {
        world.reset();
        QDir(world.dataHome()).removeRecursively();
        SimuladorPrueba sim(world.root(),
                            u"[plataforma]\nretraso_ms=1500\n[cuenta1]\n"
                            u"usuario=demo\nclave=demo\nsaldo=100\n"_s);
        prepararBase(sim);
        const QString lleno = world.root() + u"/lleno"_s;
        QFile::remove(lleno);
        llenarDisco(lleno);
        QProcess p;
        startProgram(world, p, {u"--headless"_s, u"--once"_s});
        vaciarDisco();
        QTRY_VERIFY_WITH_TIMEOUT(!sim.registro().isEmpty(), 10000);
        prueba::escribir(lleno, {});
        const ProcessResult r = finishProgram(p);
        QVERIFY(r.finished);
        QVERIFY2(r.exitCode != 0, qPrintable(r.out));
        QVERIFY2(r.out.contains(u"el disco está lleno"_s), qPrintable(r.out));
        QCOMPARE(cuentas(), (QStringList{u"1"_s, u"0"_s, u"ok"_s}));

        QFile::remove(lleno);
        const ProcessResult otra = runProgram(world, {u"--headless"_s, u"--once"_s});
        QCOMPARE(otra.exitCode, 0);
        QCOMPARE(cuentas(), (QStringList{u"0"_s, u"1"_s, u"ok"_s}));
        QCOMPARE(sim.registro().size(), 1);
    }
};

QUELMO_TEST_MAIN(TestDiscoLleno)
#include "test_disco_lleno.moc"

// The connection and the files under it: another program that removes or
// replaces the database, or takes its log away, never receives a write
// that no one would read. The write fails, the connection says so once,
// and what is on disk is what the other program left there.
#include <QCoro/QCoroTask>
#include "TestSupport.h"
#include "base/Avisos.h"
#include "db/BaseDatos.h"
#include "import/mdoImport.h"

#include <QFile>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using prueba::shell;

namespace {

const QString kFila =
    u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,1,?,'m',2)"_s;

}  // namespace

class TestArchivos : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() { world.reset(); }

    void writesStopWhenTheFilesAreTaken_data() {
        QTest::addColumn<QString>("suceso");
        QTest::addColumn<bool>("perdida");
        QTest::addColumn<QString>("enDisco");  // the outbox another program reads afterwards
        QTest::newRow("nothing happened") << u"nada"_s << false << u"1,2,3"_s;
        // The fault users met: a descriptor of the database opened and
        // closed in this process drops the engine's locks, and another
        // program that ends believes itself the last user: it copies the
        // log into the file and removes it.
        QTest::newRow("log taken by another program") << u"diario"_s << true << u"1,2,9"_s;
        QTest::newRow("database unlinked") << u"borrada"_s << true << QString();
        QTest::newRow("database replaced") << u"sustituida"_s << true << QString();
    }
    void writesStopWhenTheFilesAreTaken() {
        QFETCH(QString, suceso);
        QFETCH(bool, perdida);
        const QString ruta = TestDb::createCurrent(world.root() + u"/mensajes.db"_s);
        BaseDatos db;
        db.avisarSiSePierde();
        QVERIFY(db.open(ruta));
        db.exec(kFila, {QDateTime::currentDateTime(), u"1"_s});
        db.exec(kFila, {QDateTime::currentDateTime(), u"2"_s});

        if (suceso == u"diario"_s) {
            QFile f(ruta);
            QVERIFY(f.open(QIODevice::ReadOnly));
            f.read(16);
            f.close();
            shell(ruta,
                  u"INSERT INTO envios (Canal,Abonado,Mensaje,intento) VALUES (1,'9','m',2)"_s);
            QVERIFY(!QFile::exists(ruta + u"-wal"_s));
        } else if (suceso == u"borrada"_s) {
            QVERIFY(QFile::remove(ruta));
        } else if (suceso == u"sustituida"_s) {
            const QString otra = TestDb::createCurrent(world.root() + u"/otra.db"_s);
            shell(otra,
                  u"INSERT INTO envios (Canal,Abonado,Mensaje,intento) VALUES (1,'7','m',2)"_s);
            QVERIFY(::rename(QFile::encodeName(otra).constData(),
                             QFile::encodeName(ruta).constData()) == 0);
        }

        QSignalSpy aviso(&Avisos::instancia(), &Avisos::baseDatosPerdida);
        bool fallo = false;
        try {
            db.exec(kFila, {QDateTime::currentDateTime(), u"3"_s});
        } catch (const ErrorBD& e) {
            fallo = true;
            QVERIFY(e.description().contains(u"borrada o sustituida"_s));
        }
        QCOMPARE(fallo, perdida);
        QCOMPARE(db.perdida(), perdida);
        QCOMPARE(aviso.count(), perdida ? 1 : 0);
        if (perdida) {
            QCOMPARE(aviso.at(0).at(0).toString(), ruta);
            // Every later statement fails too: nothing is written anywhere.
            QVERIFY_THROWS_EXCEPTION(ErrorBD, db.exec(kFila, {QDateTime(), u"4"_s}));
            QCOMPARE(aviso.count(), 1);
        }
        db.close();
        QFETCH(QString, enDisco);
        if (!enDisco.isNull())
            QCOMPARE(shell(ruta,
                           u"SELECT group_concat(Abonado) FROM (SELECT Abonado FROM envios "
                           u"ORDER BY Abonado)"_s),
                     enDisco);
    }

    // A transaction under way when the log is taken: the commit finds it
    // and nothing of the transaction is anywhere.
    void commitChecksTheFiles() {
        const QString ruta = TestDb::createCurrent(world.root() + u"/mensajes.db"_s);
        BaseDatos db;
        QVERIFY(db.open(ruta));
        db.exec(kFila, {QDateTime::currentDateTime(), u"1"_s});
        db.begin();
        db.exec(kFila, {QDateTime::currentDateTime(), u"2"_s});
        QFile f(ruta);
        QVERIFY(f.open(QIODevice::ReadOnly));
        f.close();
        shell(ruta, u"SELECT count(*) FROM envios"_s);
        QVERIFY_THROWS_EXCEPTION(ErrorBD, db.commit());
        QVERIFY(db.perdida());
        db.close();
        QCOMPARE(shell(ruta, u"SELECT group_concat(Abonado) FROM envios"_s), u"1"_s);
    }

    void ownFilesAreKnown() {
        const QString ruta = TestDb::createCurrent(world.root() + u"/mensajes.db"_s);
        BaseDatos db;
        QVERIFY(db.open(ruta));
        db.exec(kFila, {QDateTime::currentDateTime(), u"1"_s});
        QVERIFY(db.esArchivoPropio(ruta));
        QVERIFY(db.esArchivoPropio(ruta + u"-wal"_s));
        // Under another name (a link, or the folder written another way).
        QVERIFY(QFile::link(ruta, world.root() + u"/enlace.db"_s));
        QVERIFY(db.esArchivoPropio(world.root() + u"/enlace.db"_s));
        QVERIFY(db.esArchivoPropio(world.root() + u"/./mensajes.db"_s));
        QVERIFY(!db.esArchivoPropio(world.root() + u"/otra.txt"_s));
        prueba::escribir(world.root() + u"/otra.txt"_s, {});
        QVERIFY(!db.esArchivoPropio(world.root() + u"/otra.txt"_s));
    }

    // Named as an import file (by hand or watched), the database or its log
    // is neither read nor claimed: the engine keeps its locks and the file
    // stays where it is.
    void theDatabaseIsNeverImported_data() {
        QTest::addColumn<QString>("sufijo");
        QTest::addColumn<bool>("vigilado");
        QTest::newRow("the database, by hand") << QString() << false;
        QTest::newRow("the database, watched") << QString() << true;
        QTest::newRow("its log, watched") << u"-wal"_s << true;
    }
    void theDatabaseIsNeverImported() {
        QFETCH(QString, sufijo);
        QFETCH(bool, vigilado);
        const QString ruta = TestDb::createCurrent(world.root() + u"/mensajes.db"_s);
        TestDb::openShared(ruta);
        Conexion().exec(kFila, {QDateTime::currentDateTime(), u"1"_s});
        QCoreApplication::processEvents();  // what earlier cases left to log
        estadoAplicacion().log.clear();
        const ResumenImportacion r =
            prueba::esperar(msImportarFichero(ruta + sufijo, false, vigilado, u"-1"_s, false));
        QVERIFY(!r.leido);
        QVERIFY(QFile::exists(ruta + sufijo));
        QVERIFY(Conexion().archivosIntactos());
        QVERIFY(estadoAplicacion().log.last().endsWith(
            u" es la base de datos de la aplicación o uno de sus ficheros; no se importa"_s));
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), 1LL);
        Conexion().close();
    }
};

QUELMO_TEST_MAIN(TestArchivos)
#include "test_archivos.moc"

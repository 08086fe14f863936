// The connection wrapper: values travel intact, names compare as users
// expect, and failures say what failed.
#include "TestSupport.h"
#include "base/Ajustes.h"
#include "db/BaseDatos.h"
#include "db/Transaccion.h"

#include <sqlite3.h>
#include <stdexcept>

using namespace Qt::StringLiterals;

class TestDatabase : public QObject {
    Q_OBJECT
  public:
    explicit TestDatabase(TestWorld& w) : world(w) {}

  private Q_SLOTS:
    void init() {
        world.reset();
        db.close();
        QVERIFY(db.open(TestDb::createCurrent(world.root() + u"/t.db"_s)));
    }

    void textsTravelIntact_data() {
        QTest::addColumn<QString>("texto");
        QTest::newRow("apostrophe") << u"l'Alcúdia d'en Joan"_s;
        QTest::newRow("markup") << u"<b>a & b</b> \"c\""_s;
        QTest::newRow("sql") << u"'); DELETE FROM envios; --"_s;
        QTest::newRow("accents and euro") << u"ñÑáéíóúü €"_s;
        QTest::newRow("line breaks") << u"uno\r\ndos\tres"_s;
    }
    void textsTravelIntact() {
        QFETCH(QString, texto);
        db.exec(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,?,?,?,2)"_s,
                {QDateTime(QDate(2006, 3, 15), QTime(10, 0, 30)), 1, u"600"_s, texto});
        const ResultadoConsulta r =
            db.query(u"SELECT Mensaje, Registro FROM envios WHERE Mensaje=?"_s, {texto});
        QCOMPARE(r.recordCount(), 1);
        QCOMPARE(r.value(0, 0).toString(), texto);
        QCOMPARE(r.value(0, 1).toString(), u"2006-03-15 10:00:30"_s);
    }

    void namesIgnoreCaseAndAccentCase_data() {
        QTest::addColumn<QString>("guardado");
        QTest::addColumn<QString>("buscado");
        QTest::addColumn<bool>("encontrado");
        QTest::newRow("ascii") << u"Ana"_s << u"ANA"_s << true;
        QTest::newRow("accent case") << u"Ángel"_s << u"ángel"_s << true;
        QTest::newRow("eñe") << u"Muñoz"_s << u"MUÑOZ"_s << true;
        QTest::newRow("accent is a letter") << u"Angel"_s << u"Ángel"_s << false;
    }
    void namesIgnoreCaseAndAccentCase() {
        QFETCH(QString, guardado);
        QFETCH(QString, buscado);
        QFETCH(bool, encontrado);
        db.exec(
            u"INSERT INTO Abonados (Codigo, Alias, Comentario, Canal) VALUES ('0034600',?,'',0)"_s,
            {guardado});
        QCOMPARE(db.query(u"SELECT Codigo FROM Abonados WHERE Alias=?"_s, {buscado}).recordCount(),
                 encontrado ? 1 : 0);
        QCOMPARE(db.query(u"SELECT upper(?)"_s, {guardado}).value(0, 0).toString(),
                 guardado.toUpper());
    }

    // Another SQLite client orders names by the engine's NOCASE, which knows
    // only ASCII. A file whose index it built is rebuilt in our order when
    // it opens, and from then on that client can't write names at all
    // rather than write them in its own order.
    void indexBuiltByAnotherClientAgrees() {
        const QByteArray ruta = QFile::encodeName(world.root() + u"/otro.db"_s);
        const auto otroCliente = [&](const char* sql) {
            sqlite3* h = nullptr;
            sqlite3_open(ruta.constData(), &h);
            const int rc = sqlite3_exec(h, sql, nullptr, nullptr, nullptr);
            sqlite3_close(h);
            return rc;
        };
        QCOMPARE(otroCliente("CREATE TABLE Abonados (Codigo TEXT(50) NOT NULL PRIMARY KEY, "
                             "Alias TEXT(100) COLLATE NOCASE, Comentario TEXT, Canal INTEGER);"
                             "CREATE INDEX Abonados_Alias ON Abonados (Alias COLLATE NOCASE);"
                             "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
                             "WHERE i<400) INSERT INTO Abonados (Codigo, Alias) "
                             "SELECT i, substr('ÑñÁáZ', i%5+1, 1) || i FROM n"),
                 SQLITE_OK);
        db.close();
        QVERIFY(db.open(QFile::decodeName(ruta)));
        QCOMPARE(db.queryTexts(u"PRAGMA integrity_check"_s), QVector<QString>{u"ok"_s});
        const QVector<QString> alias =
            db.queryTexts(u"SELECT Alias FROM Abonados ORDER BY Alias"_s);
        QCOMPARE(alias.size(), 400);
        for (int i = 1; i < alias.size(); ++i)
            QVERIFY2(alias[i - 1].compare(alias[i], Qt::CaseInsensitive) < 0,
                     qPrintable(alias[i - 1] + u" " + alias[i]));
        for (const QString& a : alias)
            QCOMPARE(db.queryTexts(u"SELECT Alias FROM Abonados WHERE Alias=?"_s, {a.toUpper()}),
                     QVector<QString>{a});
        db.close();
        QVERIFY(otroCliente("INSERT INTO Abonados (Codigo, Alias) VALUES ('x','Ñandú')") !=
                SQLITE_OK);
        QVERIFY(db.open(QFile::decodeName(ruta)));
        QCOMPARE(db.queryTexts(u"PRAGMA integrity_check"_s), QVector<QString>{u"ok"_s});
    }

    void identityIsNeverReused() {
        db.exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        db.exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        const long long ultimo = db.lastInsertId();
        db.exec(u"DELETE FROM envios WHERE Id=?"_s, {ultimo});
        db.exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        QVERIFY(db.lastInsertId() > ultimo);
    }

    void failuresNameTheirCause() {
        try {
            db.query(u"SELECT nada FROM Canales"_s);
            QFAIL("a missing column must fail");
        } catch (const ErrorBD& e) {
            QCOMPARE(e.number(), int(ErrNum::ItemNotFound));
        }
        QVERIFY_THROWS_EXCEPTION(ErrorBD, db.query(u"SELECT * FROM noexiste"_s));
        QVERIFY_THROWS_EXCEPTION(ErrorBD, db.exec(u"INSERT INTO Canales (Canal) VALUES (?)"_s, {}));
        // A duplicate key leaves the first row as it was.
        db.exec(u"INSERT INTO Abonados (Codigo, Alias) VALUES ('1','uno')"_s);
        QVERIFY_THROWS_EXCEPTION(
            ErrorBD, db.exec(u"INSERT INTO Abonados (Codigo, Alias) VALUES ('1','dos')"_s));
        QCOMPARE(db.query(u"SELECT Alias FROM Abonados"_s).value(0, 0).toString(), u"uno"_s);
    }

    void savepointUndoesOnlyItsPart() {
        db.begin();
        db.exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        db.savepoint(u"item"_s);
        db.exec(u"INSERT INTO envios (Canal) VALUES (2)"_s);
        db.rollbackTo(u"item"_s);
        db.release(u"item"_s);
        db.commit();
        QCOMPARE(db.query(u"SELECT Canal FROM envios"_s).recordCount(), 1);
    }

    void notADatabaseDoesNotOpen() {
        const QString path = world.root() + u"/texto.db"_s;
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(QByteArray(4096, 'x'));
        f.close();
        BaseDatos otro;
        QString error;
        QVERIFY(!otro.open(path, &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(!otro.isOpen());
        QVERIFY(!otro.open(world.root() + u"/no-existe.db"_s));
        QVERIFY(!QFile::exists(world.root() + u"/no-existe.db"_s));
    }

    // A transaction ends on every way out: kept when committed, undone when
    // the scope is left by any exception or when the commit is refused, and
    // in every case the connection is free for the next one.
    void transactionEndsOnEveryPath_data() {
        QTest::addColumn<QString>("salida");
        QTest::addColumn<int>("filas");
        QTest::newRow("committed") << u"commit"_s << 1;
        QTest::newRow("program's error") << u"error"_s << 0;
        QTest::newRow("other exception") << u"excepcion"_s << 0;
        QTest::newRow("commit refused") << u"rechazo"_s << 0;
    }
    void transactionEndsOnEveryPath() {
        QFETCH(QString, salida);
        QFETCH(int, filas);
        db.exec(u"PRAGMA foreign_keys=ON"_s);
        db.execScript(
            u"CREATE TABLE padre (id INTEGER PRIMARY KEY);"
            "CREATE TABLE hijo (p INTEGER REFERENCES padre(id) DEFERRABLE INITIALLY DEFERRED);"_s);
        bool lanzada = false;
        try {
            Transaccion t(db);
            db.exec(u"INSERT INTO MenPro VALUES (0,'uno')"_s);
            // A child without its parent: refused only at the commit.
            if (salida == u"rechazo"_s) db.exec(u"INSERT INTO hijo VALUES (5)"_s);
            if (salida == u"error"_s) throw ErrorQuelmo(u"fallo"_s, ErrNum::Plataforma);
            if (salida == u"excepcion"_s) throw std::runtime_error("fallo");
            t.commit();
        } catch (...) {
            lanzada = true;
        }
        QCOMPARE(lanzada, filas == 0);
        QVERIFY(sqlite3_get_autocommit(db.handle()));
        QCOMPARE(db.query(u"SELECT count(*) FROM MenPro"_s).value(0, 0).toInt(), filas);
        Transaccion siguiente(db);
        siguiente.commit();
    }

    // The database holds the platforms' passwords.
    // The files that hold the passwords: the database with its WAL files,
    // and the settings store, new or rewritten through a new file.
    void filesAreTheOwnersOnly_data() {
        QTest::addColumn<QString>("sufijo");  // of the database's files; none: the settings
        QTest::addColumn<int>("escrituras");  // to the settings store first
        QTest::newRow("database") << u""_s << 0;
        QTest::newRow("its WAL") << u"-wal"_s << 0;
        QTest::newRow("its shared memory") << u"-shm"_s << 0;
        QTest::newRow("new settings file") << QString() << 1;
        QTest::newRow("settings file rewritten") << QString() << 3;
    }
    void filesAreTheOwnersOnly() {
        QFETCH(QString, sufijo);
        QFETCH(int, escrituras);
        BaseDatos nueva;
        const QString ruta = world.root() + u"/nueva.db"_s;
        for (const QString& f : QStringList{ruta, ruta + u"-wal"_s, ruta + u"-shm"_s})
            QFile::remove(f);
        QVERIFY(nueva.create(ruta));
        nueva.exec(u"CREATE TABLE t (x)"_s);
        QFile::remove(Ajustes::fileName());
        for (int i = 0; i < escrituras; ++i)
            Ajustes::saveSetting(u"Tr"_s, u"Interval"_s, QString::number(60 + i));
        const QString f = sufijo.isNull() ? Ajustes::fileName() : ruta + sufijo;
        QVERIFY2(QFile::exists(f), qPrintable(f));
        QCOMPARE(QFile::permissions(f) & ~(QFileDevice::ReadUser | QFileDevice::WriteUser),
                 QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }

  private:
    TestWorld& world;
    BaseDatos db;
};

QUELMO_TEST_MAIN(TestDatabase)
#include "test_database.moc"

// The connection wrapper: values travel intact, names compare as users
// expect, and failures say what failed.
#include "TestSupport.h"
#include "base/Ajustes.h"
#include "base/ReglaNombres.h"
#include "composition/Envio.h"
#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
#include "db/Identidad.h"
#include "db/ListaPaginada.h"
#include "db/Nombres.h"
#include "db/Transaccion.h"

#include <sqlite3.h>
#include <QElapsedTimer>
#include <QSet>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <thread>

using namespace Qt::StringLiterals;

class TestDatabase : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    // The ways a write ends, and the rows it leaves: `confirmadas` when
    // committed, none otherwise.
    static void salidas(int confirmadas) {
        QTest::addColumn<QString>("salida");
        QTest::addColumn<int>("filas");
        QTest::newRow("committed") << u"commit"_s << confirmadas;
        QTest::newRow("a step fails") << u"error"_s << 0;
        QTest::newRow("other exception") << u"excepcion"_s << 0;
        QTest::newRow("commit refused") << u"rechazo"_s << 0;
    }
    // A child row without its parent is refused only at the commit.
    void hijoSinPadre() {
        db.exec(u"PRAGMA foreign_keys=ON"_s);
        db.execScript(
            u"CREATE TABLE padre (id INTEGER PRIMARY KEY);"
            "CREATE TABLE hijo (p INTEGER REFERENCES padre(id) DEFERRABLE INITIALLY DEFERRED);"_s);
    }

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
        QCOMPARE(r.row(0), (QVector<QVariant>{texto, u"2006-03-15 10:00:30"_s}));
    }

    void namesIgnoreCaseAndAccentCase_data() {
        QTest::addColumn<QString>("guardado");
        QTest::addColumn<QString>("buscado");
        QTest::addColumn<bool>("encontrado");
        QTest::newRow("ascii") << u"Ana"_s << u"ANA"_s << true;
        QTest::newRow("accent case") << u"Ángel"_s << u"ángel"_s << true;
        QTest::newRow("eñe") << u"Muñoz"_s << u"MUÑOZ"_s << true;
        QTest::newRow("accent is a letter") << u"Angel"_s << u"Ángel"_s << false;
        QTest::newRow("greek sigma, three forms") << u"ΣΟΦΊΑ"_s << u"σοφία"_s << true;
        QTest::newRow("final sigma") << u"ΟΔΥΣΣΕΥΣ"_s << u"οδυσσευς"_s << true;
        // Too many accented letters to probe the index: compared row by row.
        QTest::newRow("row by row") << u"ÁÉÍÓÚÑÜ Çà"_s << u"áéíóúñü çÀ"_s << true;
        QTest::newRow("row by row, other word") << u"ÁÉÍÓÚÑÜ Çà"_s << u"áéíóúñü ça"_s << false;
        // Signs that fold to an ASCII letter are signs, not that letter.
        QTest::newRow("kelvin sign") << u"\u212Aim"_s << u"kim"_s << false;
    }
    void namesIgnoreCaseAndAccentCase() {
        QFETCH(QString, guardado);
        QFETCH(QString, buscado);
        QFETCH(bool, encontrado);
        db.exec(
            u"INSERT INTO Abonados (Codigo, Alias, Comentario, Canal) VALUES ('0034600',?,'',0)"_s,
            {guardado});
        db.exec(
            u"INSERT INTO Abonados (Codigo, Alias, Comentario, Canal) VALUES ('0034601',?,'',0)"_s,
            {u"otro"_s});
        QVariantList valores;
        const QString donde = condicionNombre(u"Alias"_s, buscado, valores);
        QCOMPARE(db.query(u"SELECT Codigo FROM Abonados WHERE "_s + donde, valores).recordCount(),
                 encontrado ? 1 : 0);
        QCOMPARE(ReglaNombres::iguales(guardado, buscado), encontrado);
        QCOMPARE(
            db.query(u"SELECT count(*) FROM Abonados WHERE Alias = ? COLLATE SINCASO"_s, {buscado})
                .value(0, 0)
                .toInt(),
            encontrado ? 1 : 0);
        QCOMPARE(db.query(u"SELECT upper(?)"_s, {guardado}).value(0, 0).toString(),
                 guardado.toUpper());
    }

    // The sqlite3 shell writes every table of a file the program made, and
    // the program then finds and sorts what the shell wrote as its own.
    void anotherSqliteClientWritesEveryTable() {
        db.exec(u"INSERT INTO Canales (Canal,Nombre,Principal) VALUES (1,'Cuenta_1',1)"_s);
        for (const QString& a : {u"Zoe"_s, u"beatriz"_s, u"Carmen"_s})
            db.exec(u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES (?,?,'',1)"_s,
                    {QString(u"0034600"_s + QString::number(a.size()) + a.left(1)), a});
        db.exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (0,'Amigos')"_s);
        db.exec(u"INSERT INTO Automaticos (Codigo,Nombre) VALUES (1,'Semanal')"_s);
        identidadBase(db);
        const QByteArray guion = R"SQL(
INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES ('0034699000001','Ángela','',1);
INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES ('0034699000002','borrar','',1);
UPDATE Abonados SET Comentario='del shell' WHERE Alias='Carmen';
DELETE FROM Abonados WHERE Alias='borrar';
INSERT INTO Grupos (Grupo,Nombre) VALUES (1,'Ñoños');
UPDATE Grupos SET Nombre='AMIGOS' WHERE Grupo=0;
DELETE FROM Grupos WHERE Grupo=1;
INSERT INTO AboGrup (Abonado,Grupo) VALUES ('0034699000001',0);
UPDATE AboGrup SET Grupo=0 WHERE Grupo=0;
DELETE FROM AboGrup WHERE Grupo=5;
INSERT INTO Canales (Canal,Nombre,Principal) VALUES (2,'Óscar',0);
UPDATE Canales SET Nombre='CUENTA_1' WHERE Canal=1;
DELETE FROM Canales WHERE Canal=2;
INSERT INTO Automaticos (Codigo,Nombre,TareaProgramada) VALUES (2,'Diario',1);
UPDATE Automaticos SET Nombre='SEMANAL' WHERE Codigo=1;
DELETE FROM Automaticos WHERE Codigo=2;
INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES (1,'0034699000001','hola');
UPDATE AboAuto SET Mensaje='adiós' WHERE Automatico=1;
DELETE FROM AboAuto WHERE Automatico=9;
INSERT INTO MenPro (Mensaje,Texto) VALUES (0,'uno');
UPDATE MenPro SET Texto='dos' WHERE Mensaje=0;
DELETE FROM MenPro WHERE Mensaje=7;
INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES ('2006-03-15 10:00:00',1,'600','x',2);
UPDATE envios SET intento=1;
DELETE FROM envios WHERE Canal=9;
INSERT INTO EnviosPorCanal (Canal,Filas) VALUES (99,0);
UPDATE EnviosPorCanal SET Filas=0 WHERE Canal=99;
DELETE FROM EnviosPorCanal WHERE Canal=99;
INSERT INTO HEnvios (Abonado,Registro,Mensaje,Resultado,Canal) VALUES ('600','2006-03-15 10:00:00','x','OK',1);
UPDATE HEnvios SET crem='Cuenta_1';
DELETE FROM HEnvios WHERE Canal=9;
INSERT INTO opciones (id,maxlote) VALUES (2,10);
UPDATE opciones SET maxlote=100 WHERE id=1;
DELETE FROM opciones WHERE id=2;
INSERT INTO Identidad (uuid) VALUES ('otra');
UPDATE Identidad SET uuid='otra bis' WHERE uuid='otra';
DELETE FROM Identidad WHERE uuid='otra bis';
PRAGMA integrity_check;
)SQL";
        // Every table the program made is written: a new one must join the script.
        for (const QString& tabla :
             db.queryTexts(u"SELECT name FROM sqlite_master WHERE type='table' AND name NOT LIKE "
                           u"'sqlite_%'"_s))
            for (const QString& orden : {u"INSERT INTO "_s, u"UPDATE "_s, u"DELETE FROM "_s})
                QVERIFY2(guion.contains((orden + tabla + u' ').toUtf8()),
                         qPrintable(orden + tabla));
        const QString ruta = db.path();
        db.close();
        QVERIFY2(!QStandardPaths::findExecutable(u"sqlite3"_s).isEmpty(),
                 "the sqlite3 shell (scripts/deps.sh) is missing");
        // The shell stops at the first statement that fails, and says why.
        QCOMPARE(prueba::shell(ruta, QString::fromUtf8(guion)), u"ok"_s);

        QVERIFY(db.open(ruta));
        QCOMPARE(db.queryTexts(u"PRAGMA integrity_check"_s), QVector<QString>{u"ok"_s});
        const auto buscar = [this](const QString& columna, const QString& tabla,
                                   const QString& nombre) {
            QVariantList valores;
            const QString donde = condicionNombre(columna, nombre, valores);
            return db.queryTexts(u"SELECT "_s + columna + u" FROM " + tabla + u" WHERE " + donde,
                                 valores);
        };
        QCOMPARE(buscar(u"Alias"_s, u"Abonados"_s, u"ÁNGELA"_s), QVector<QString>{u"Ángela"_s});
        QCOMPARE(buscar(u"Nombre"_s, u"Grupos"_s, u"amigos"_s), QVector<QString>{u"AMIGOS"_s});
        QCOMPARE(buscar(u"Nombre"_s, u"Automaticos"_s, u"Semanal"_s),
                 QVector<QString>{u"SEMANAL"_s});
        QCOMPARE(db.queryTexts(u"SELECT Alias FROM Abonados ORDER BY Alias COLLATE REGLA_LISTAS"_s),
                 (QVector<QString>{u"Ángela"_s, u"beatriz"_s, u"Carmen"_s, u"Zoe"_s}));
        db.close();
        // The compose screen's routines: the alias typed in another case,
        // and the names it offers, in their order.
        TestDb::openShared(ruta);
        QCOMPARE(msBuscarAlias(u"ángela"_s), u"0034699000001"_s);
        LecturaContactos lectura;
        QVector<QString> celdas;
        while (!lectura.terminada) leerContactosEnOrden(lectura, celdas, 1000);
        QStringList nombres;
        for (qsizetype i = 0; i < celdas.size(); i += 2) nombres << celdas.at(i);
        QCOMPARE(nombres, (QStringList{u"Ángela"_s, u"beatriz"_s, u"Carmen"_s, u"Zoe"_s}));
        QCOMPARE(celdas.at(1), u"0034699000001"_s);
        // What the program writes after the shell, the shell reads back.
        Conexion().exec(
            u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES ('0034611','ñu','',1)"_s);
        Conexion().close();
        QCOMPARE(prueba::shell(ruta, u"PRAGMA integrity_check; SELECT count(*) FROM Abonados;"_s),
                 u"ok\n5"_s);
    }

    // A file of the release before names the program's own collation in
    // its schema: opening it rebuilds those tables without it, keeping
    // their rows and indexes, so that other clients can write it again.
    void olderFileLosesOurCollation() {
        const QByteArray ruta = QFile::encodeName(world.root() + u"/anterior.db"_s);
        sqlite3* h = nullptr;
        QCOMPARE(sqlite3_open(ruta.constData(), &h), SQLITE_OK);
        sqlite3_create_collation(h, "SINCASO", SQLITE_UTF8, nullptr,
                                 [](void*, int n1, const void* s1, int n2, const void* s2) {
                                     return QString::compare(
                                         QString::fromUtf8(static_cast<const char*>(s1), n1),
                                         QString::fromUtf8(static_cast<const char*>(s2), n2),
                                         Qt::CaseInsensitive);
                                 });
        QCOMPARE(sqlite3_exec(h,
                              "CREATE TABLE Abonados (Codigo TEXT(50) NOT NULL PRIMARY KEY, "
                              "Alias TEXT(100) COLLATE SINCASO, Comentario TEXT(100), Canal "
                              "INTEGER);"
                              "CREATE INDEX Abonados_Alias ON Abonados (Alias COLLATE SINCASO);"
                              "CREATE TABLE Grupos (Grupo INTEGER NOT NULL PRIMARY KEY, "
                              "Nombre TEXT(50) COLLATE \"SINCASO\");"
                              "CREATE TABLE AboAuto (id_AboAuto INTEGER PRIMARY KEY "
                              "AUTOINCREMENT, Automatico INTEGER, Abonado TEXT(50), Mensaje TEXT "
                              "COLLATE SINCASO);"
                              "INSERT INTO AboAuto (Mensaje) VALUES ('a'),('b'),('c');"
                              "DELETE FROM AboAuto;"
                              "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
                              "WHERE i<300) INSERT INTO Abonados (Codigo, Alias) "
                              "SELECT i, substr('ÑñÁáZ', i%5+1, 1) || i FROM n;"
                              "INSERT INTO Grupos VALUES (0,'Amigos');"
                              "CREATE TABLE Canales (Canal INTEGER);"
                              "CREATE TABLE envios (Canal INTEGER);",
                              nullptr, nullptr, nullptr),
                 SQLITE_OK);
        sqlite3_close(h);
        db.close();
        QVERIFY(db.open(QFile::decodeName(ruta)));
        QCOMPARE(db.queryTexts(u"PRAGMA integrity_check"_s), QVector<QString>{u"ok"_s});
        QCOMPARE(db.queryTexts(u"SELECT count(*) FROM sqlite_master WHERE sql LIKE '%SINCASO%'"_s),
                 QVector<QString>{u"0"_s});
        QCOMPARE(
            db.queryTexts(u"SELECT sql FROM sqlite_master WHERE name='Abonados_Alias'"_s),
            QVector<QString>{u"CREATE INDEX Abonados_Alias ON Abonados (Alias COLLATE NOCASE)"_s});
        QCOMPARE(db.queryTexts(u"SELECT count(*) FROM Abonados"_s), QVector<QString>{u"300"_s});
        // A rebuilt table hands out no identity twice.
        db.exec(u"INSERT INTO AboAuto (Mensaje) VALUES ('d')"_s);
        QCOMPARE(db.lastInsertId(), 4);
        QVariantList valores;
        const QString donde = condicionNombre(u"Alias"_s, u"ñ5"_s, valores);
        QCOMPARE(db.queryTexts(u"SELECT Codigo FROM Abonados WHERE "_s + donde, valores),
                 QVector<QString>{u"5"_s});
        db.close();
        QCOMPARE(sqlite3_open(ruta.constData(), &h), SQLITE_OK);
        const int rc =
            sqlite3_exec(h,
                         "INSERT INTO Abonados (Codigo, Alias) VALUES ('x','Ñandú');"
                         "UPDATE Grupos SET Nombre='AMIGOS' WHERE Nombre='amigos' COLLATE NOCASE;",
                         nullptr, nullptr, nullptr);
        sqlite3_close(h);
        QCOMPARE(rc, SQLITE_OK);
        QVERIFY(db.open(QFile::decodeName(ruta)));
        QCOMPARE(db.queryTexts(u"PRAGMA integrity_check"_s), QVector<QString>{u"ok"_s});
        QCOMPARE(db.queryTexts(u"SELECT Nombre FROM Grupos"_s), QVector<QString>{u"AMIGOS"_s});
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
        prueba::escribir(path, QByteArray(4096, 'x'));
        BaseDatos otro;
        QVERIFY(!otro.open(path).motivo().isEmpty());
        QVERIFY(!otro.isOpen());
        QVERIFY(!otro.open(world.root() + u"/no-existe.db"_s));
        QVERIFY(!QFile::exists(world.root() + u"/no-existe.db"_s));
    }

    // A transaction ends on every way out: kept when committed, undone when
    // the scope is left by any exception or when the commit is refused, and
    // in every case the connection is free for the next one.
    void transactionEndsOnEveryPath_data() { salidas(1); }
    void transactionEndsOnEveryPath() {
        QFETCH(QString, salida);
        QFETCH(int, filas);
        hijoSinPadre();
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

    // A write over several turns is whole or nothing: while it is held the
    // program's other writers find the database busy and readers see it
    // half done, another program sees nothing of it, and it ends committed
    // or undone whole, the connection free again.
    void writeOverTurnsIsWholeOrNothing_data() { salidas(2); }
    void writeOverTurnsIsWholeOrNothing() {
        QFETCH(QString, salida);
        QFETCH(int, filas);
        hijoSinPadre();
        bool soltar = false, terminado = false;
        QString fallo;
        using namespace EscrituraPorTurnos;
        std::vector<Paso> pasos{sentencia(db, u"INSERT INTO MenPro VALUES (0,'uno')"_s),
                                [&] { return !soltar; },
                                sentencia(db, u"INSERT INTO MenPro VALUES (1,'dos')"_s),
                                [&] {
                                    if (salida == u"rechazo"_s)
                                        db.exec(u"INSERT INTO hijo VALUES (5)"_s);
                                    if (salida == u"error"_s)
                                        db.exec(u"INSERT INTO MenPro VALUES (1,'otra')"_s);
                                    if (salida == u"excepcion"_s) throw std::runtime_error("x");
                                    return false;
                                }};
        escribir(db, std::move(pasos), [&](const ErrorBD* e) {
            terminado = true;
            if (e) fallo = e->description();
        });
        QCoreApplication::processEvents();
        QVERIFY(!terminado && db.retenida());
        const auto rehusada = [&](const std::function<void()>& f) {
            try {
                f();
            } catch (const ErrorBD& e) {
                return db.lastWasBusy() && e.causa().contains(u"ocupada"_s);
            }
            return false;
        };
        QVERIFY(rehusada([&] { db.exec(u"INSERT INTO MenPro VALUES (9,'ajena')"_s); }));
        QVERIFY(rehusada([&] { Transaccion t(db); }));
        QVERIFY(rehusada([&] { db.savepoint(u"ajeno"_s); }));
        QVERIFY(rehusada([&] { db.exec(u"COMMIT"_s); }));
        QVERIFY(rehusada([&] { db.rollback(); }));
        QVERIFY(rehusada([&] { db.execScript(u"DELETE FROM MenPro"_s); }));
        // Steps of another run over turns wait for it to end.
        bool despues = false;
        EscrituraPorTurnos::porTurnos(db, {[&] {
                                          db.exec(u"INSERT INTO padre VALUES (1)"_s);
                                          despues = true;
                                          return false;
                                      }},
                                      [](const ErrorBD*) {});
        // So does another write in a transaction of its own: refused, what
        // the user asked for would be lost.
        std::optional<bool> otra;
        escribir(db, {sentencia(db, u"INSERT INTO padre VALUES (2)"_s)},
                 [&](const ErrorBD* e) { otra = !e; });
        QVERIFY(!otra);
        QCOMPARE(db.query(u"SELECT count(*) FROM MenPro"_s).value(0, 0).toInt(), 1);
        QVERIFY(!db.lastWasBusy());
        sqlite3* otro = nullptr;
        QCOMPARE(sqlite3_open(db.path().toUtf8().constData(), &otro), SQLITE_OK);
        const auto cuentaAjena = [&] {
            sqlite3_stmt* st = nullptr;
            sqlite3_prepare_v2(otro, "SELECT count(*) FROM MenPro", -1, &st, nullptr);
            sqlite3_step(st);
            const int n = sqlite3_column_int(st, 0);
            sqlite3_finalize(st);
            return n;
        };
        QCOMPARE(cuentaAjena(), 0);
        soltar = true;
        QTRY_VERIFY(terminado);
        QCOMPARE(fallo.isEmpty(), filas > 0);
        QCOMPARE(cuentaAjena(), filas);
        sqlite3_close(otro);
        QVERIFY(!db.retenida() && sqlite3_get_autocommit(db.handle()));
        QCOMPARE(db.query(u"SELECT count(*) FROM MenPro"_s).value(0, 0).toInt(), filas);
        QTRY_VERIFY(despues);
        QTRY_COMPARE(otra, std::optional<bool>(true));
        QCOMPARE(db.query(u"SELECT count(*) FROM padre WHERE rowid = 2"_s).value(0, 0).toInt(), 1);
        Transaccion siguiente(db);
        siguiente.commit();
    }

    // The commit of a write of several turns, and the log's copy, run on a
    // thread of their own: meanwhile a statement of the window's thread
    // fails at once as busy rather than wait for the engine, a list's page
    // is read once the connection is back (not shown empty for good), and
    // the write ends when the commit does.
    void aLongWritesCommitLeavesTheThread() {
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/hilo.db"_s));
        BaseDatos& c = Conexion();
        c.exec(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 21000) "
            u"INSERT INTO MenPro SELECT i, 't' || i FROM n"_s);
        ListaPaginada::Definicion d;
        d.desde = u"FROM MenPro"_s;
        d.clave = u"MenPro.rowid"_s;
        d.columnas = {{u"MenPro.Texto"_s, {}}};
        ListaPaginada lista(d);
        lista.cargar();
        struct Compromiso {
            std::atomic<Qt::HANDLE> hilo{nullptr};
            std::atomic<bool> soltar{false};
        } compromiso;
        // The engine's commit waits to be let go, for two seconds at most.
        sqlite3_commit_hook(
            c.handle(),
            [](void* p) {
                auto* e = static_cast<Compromiso*>(p);
                e->hilo = QThread::currentThreadId();
                for (int i = 0; i < 2000 && !e->soltar; ++i)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                return 0;
            },
            &compromiso);
        bool pasos = true;
        std::optional<bool> hecha;
        using namespace EscrituraPorTurnos;
        escribir(
            c, {sentencia(c, u"UPDATE MenPro SET Texto = 'u' || Mensaje"_s), [&] { return pasos; }},
            [&](const ErrorBD* e) { hecha = !e; });
        pasos = false;
        QTRY_VERIFY(c.enOtroHilo());
        QElapsedTimer reloj;
        reloj.start();
        bool rehusada = false;
        try {
            c.query(u"SELECT count(*) FROM MenPro"_s);
        } catch (const ErrorBD&) {
            rehusada = c.lastWasBusy();
        }
        QVERIFY(rehusada);
        QCOMPARE(lista.textoMostrado(20500, 0), std::nullopt);
        QVERIFY(reloj.elapsed() < 500);
        QVERIFY(!hecha && c.retenida());
        compromiso.soltar = true;
        QTRY_VERIFY(hecha);
        QVERIFY(*hecha);
        QVERIFY(compromiso.hilo != QThread::currentThreadId());
        QVERIFY(!c.enOtroHilo() && !c.retenida());
        QTRY_COMPARE(lista.textoMostrado(20500, 0), std::optional<QString>(u"u20501"_s));
        sqlite3_commit_hook(c.handle(), nullptr, nullptr);
        Conexion().close();
    }

    // Emptying a table drops its indexes and empties it, each one call
    // into the engine of tens of milliseconds at a million rows: a large
    // table gives each call a turn of its own, while a small one is gone
    // within the click. Done or undone, the table keeps its indexes and the
    // connection its usual page memory.
    void emptyingGivesEachLongCallATurn_data() {
        QTest::addColumn<int>("ultima");  // the last row's number
        QTest::addColumn<bool>("enLaLlamada");
        QTest::addColumn<bool>("falla");
        QTest::newRow("small: within the click") << 3 << true << false;
        QTest::newRow("rows by the hundred thousand: a turn each") << 300000 << false << false;
        QTest::newRow("refused at the emptying, undone") << 300000 << false << true;
    }
    void emptyingGivesEachLongCallATurn() {
        QFETCH(int, ultima);
        QFETCH(bool, enLaLlamada);
        QFETCH(bool, falla);
        for (int fila : {1, 2, ultima})
            db.exec(u"INSERT INTO AboGrup (rowid, Abonado, Grupo) VALUES (?, '600', 1)"_s, {fila});
        if (falla)
            db.exec(
                u"CREATE TRIGGER noBorrar BEFORE DELETE ON AboGrup BEGIN SELECT RAISE(ABORT, "
                u"'no'); END"_s);
        const auto memoria = [&] {
            return db.query(u"PRAGMA main.cache_size"_s).value(0, 0).toInt();
        };
        const int lectura = memoria();
        // The long calls, each with the pass of the event loop it ran in.
        struct Traza {
            int vuelta = 0;
            QList<QPair<int, QString>> largas;
        } traza;
        QTimer contador;
        contador.setInterval(0);
        connect(&contador, &QTimer::timeout, this, [&traza] { ++traza.vuelta; });
        contador.start();
        sqlite3_trace_v2(
            db.handle(), SQLITE_TRACE_STMT,
            [](unsigned, void* t, void*, void* x) {
                auto* traza = static_cast<Traza*>(t);
                const QString sql = QString::fromUtf8(static_cast<const char*>(x));
                if (sql.startsWith(u"DROP INDEX"_s) || sql == u"DELETE FROM AboGrup"_s)
                    traza->largas.append({traza->vuelta, sql});
                return 0;
            },
            &traza);
        bool terminado = false, fallida = false;
        EscrituraPorTurnos::escribir(db, {EscrituraPorTurnos::vaciar(db, u"AboGrup"_s)},
                                     [&](const ErrorBD* e) {
                                         fallida = e;
                                         terminado = true;
                                     });
        QCOMPARE(terminado, enLaLlamada);
        QTRY_VERIFY(terminado);
        sqlite3_trace_v2(db.handle(), 0, nullptr, nullptr);
        QCOMPARE(fallida, falla);
        QSet<int> vueltas;
        for (const auto& [vuelta, sql] : traza.largas) vueltas.insert(vuelta);
        // Three indexes and the rows: a turn each, or all at once.
        QCOMPARE(traza.largas.size(), 4);
        QCOMPARE(vueltas.size(), enLaLlamada ? 1 : 4);
        QCOMPARE(db.query(u"SELECT count(*) FROM AboGrup"_s).value(0, 0).toInt(), falla ? 3 : 0);
        QCOMPARE(db.query(u"SELECT count(*) FROM sqlite_master WHERE type = 'index' AND "
                          u"tbl_name = 'AboGrup' AND sql IS NOT NULL"_s)
                     .value(0, 0)
                     .toInt(),
                 3);
        QCOMPARE(memoria(), lectura);
    }

    // A lock another program holds is waited for between turns, never on
    // the caller's stack, and only as long as the connection waits.
    // Far down a list longer than one statement reads, in an index's
    // order, the rows are those of the whole order, nulls among them and
    // runs of equal values across pages: shown after a jump, over turns,
    // and read in turn from the top.
    void farPagesOfAnIndexOrder_data() {
        QTest::addColumn<int>("columna");  // -1: the rows' own order
        QTest::addColumn<bool>("descendente");
        QTest::addColumn<bool>("estable");    // equal rows go up whichever the direction
        QTest::addColumn<bool>("desempate");  // equal rows by name first
        QTest::newRow("the rows' order") << -1 << false << true << false;
        QTest::newRow("the rows' order, last first") << -1 << true << true << false;
        QTest::newRow("a date, oldest first") << 0 << false << false << false;
        QTest::newRow("a date, newest first") << 0 << true << false << false;
        QTest::newRow("a date, newest first, equal ones up") << 0 << true << true << false;
        QTest::newRow("a date, equal ones by name") << 0 << false << true << true;
        QTest::newRow("a date, newest first, equal ones by name") << 0 << true << true << true;
    }
    void farPagesOfAnIndexOrder() {
        QFETCH(int, columna);
        QFETCH(bool, descendente);
        QFETCH(bool, estable);
        QFETCH(bool, desempate);
        constexpr int kFilas = 24000;
        const QString ruta = world.root() + u"/lejos.db"_s;
        TestDb::openShared(TestDb::createCurrent(ruta));
        BaseDatos& c = Conexion();
        c.exec(u"CREATE TABLE Filas (Fecha TEXT, Nombre TEXT)"_s);
        c.exec(u"CREATE INDEX Filas_Fecha ON Filas (Fecha)"_s);
        // Five dates and no date, every seventh row; names that repeat.
        c.exec(
            u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO Filas (Fecha, Nombre) SELECT CASE WHEN i % 7 = 3 THEN NULL ELSE "
            u"'2006-03-1' || (i % 5) END, 'n' || (i * 7919 % 97) FROM n"_s,
            {kFilas - 1});
        struct Fila {
            QVariant fecha;
            QString nombre;
            int64_t rowid;
        };
        std::vector<Fila> esperadas;
        const ResultadoConsulta r = c.query(u"SELECT Fecha, Nombre, rowid FROM Filas"_s);
        for (int i = 0; i < r.recordCount(); ++i)
            esperadas.push_back(
                {r.value(i, 0), r.value(i, 1).toString(), r.value(i, 2).toLongLong()});
        // Nulls first going up, as the engine sorts them.
        const auto comparar = [](const QVariant& a, const QVariant& b) {
            if (a.isNull() || b.isNull()) return int(b.isNull()) - int(a.isNull());
            return a.toString().compare(b.toString());
        };
        std::sort(esperadas.begin(), esperadas.end(), [&](const Fila& a, const Fila& b) {
            const int signo = descendente ? -1 : 1;
            const int empates = descendente && !estable ? -1 : 1;
            if (columna >= 0) {
                if (const int k = comparar(a.fecha, b.fecha)) return k * signo < 0;
                if (desempate && a.nombre != b.nombre)
                    return a.nombre.compare(b.nombre) * empates < 0;
                return (a.rowid < b.rowid) == (empates > 0);
            }
            return (a.rowid < b.rowid) == !descendente;
        });

        ListaPaginada::Definicion d;
        d.desde = u"FROM Filas"_s;
        d.clave = u"Filas.rowid"_s;
        d.columnas = {{u"Fecha"_s, u"Fecha"_s}, {u"CAST(Filas.rowid AS TEXT)"_s, {}}};
        d.estable = estable;
        if (desempate) d.desempate = u"Filas.Nombre"_s;
        ListaPaginada lista(d);
        lista.cargar();
        lista.ordenar(columna, descendente);
        QCOMPARE(lista.filas(), kFilas);
        const auto numero = [&](int f) { return QString::number(esperadas[size_t(f)].rowid); };
        for (const int salto : {kFilas - 10, kFilas / 2, kFilas / 2 - 260}) {
            QTRY_VERIFY_WITH_TIMEOUT(lista.textoMostrado(salto, 1).has_value(), 20000);
            for (int f = salto; f < std::min(kFilas, salto + 300); ++f)
                QCOMPARE(lista.texto(f, 1), numero(f));
        }
        QStringList todas, quiero;
        for (int f = 0; f < kFilas; ++f) {
            todas << lista.texto(f, 1);
            quiero << numero(f);
        }
        QCOMPARE(todas, quiero);
        Conexion().close();
    }

    void aLockHeldElsewhereIsWaitedForBetweenTurns_data() {
        QTest::addColumn<int>("suelta");  // ms until the other program commits; -1 never
        QTest::addColumn<bool>("guardada");
        QTest::newRow("let go within the wait") << 200 << true;
        QTest::newRow("held past the wait") << -1 << false;
    }
    void aLockHeldElsewhereIsWaitedForBetweenTurns() {
        QFETCH(int, suelta);
        QFETCH(bool, guardada);
        sqlite3* otro = nullptr;
        QCOMPARE(sqlite3_open(db.path().toUtf8().constData(), &otro), SQLITE_OK);
        QCOMPARE(sqlite3_exec(otro, "BEGIN IMMEDIATE; INSERT INTO MenPro VALUES (5,'otro')",
                              nullptr, nullptr, nullptr),
                 SQLITE_OK);
        if (suelta >= 0)
            QTimer::singleShot(suelta, this,
                               [otro] { sqlite3_exec(otro, "COMMIT", nullptr, nullptr, nullptr); });
        db.establecerEspera(600);
        bool terminado = false;
        QString fallo;
        EscrituraPorTurnos::escribir(
            db, {EscrituraPorTurnos::sentencia(db, u"INSERT INTO MenPro VALUES (0,'uno')"_s)},
            [&](const ErrorBD* e) {
                terminado = true;
                if (e) fallo = e->description();
            });
        QVERIFY(!terminado);
        QTRY_VERIFY(terminado);
        QCOMPARE(fallo.isEmpty(), guardada);
        QCOMPARE(db.query(u"SELECT count(*) FROM MenPro WHERE Mensaje = 0"_s).value(0, 0).toInt(),
                 guardada ? 1 : 0);
        QVERIFY(!db.retenida());
        sqlite3_close_v2(otro);
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
    BaseDatos db;
};

QUELMO_TEST_MAIN(TestDatabase)
#include "test_database.moc"

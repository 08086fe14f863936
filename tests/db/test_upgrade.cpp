// The upgrade takes any generation of file to the current schema and keeps
// every row; a second run changes nothing.
#include "TestSupport.h"
#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "db/mdoDB.h"

using namespace Qt::StringLiterals;
using prueba::filas;

namespace {

// Schema and rows of every table, as text: what "changes nothing" compares.
QString volcado(const QString& path) {
    BaseDatos db;
    if (!db.open(path)) return u"<no abre>"_s;
    QString out;
    const ResultadoConsulta tablas = db.query(
        u"SELECT name, sql FROM sqlite_master WHERE name NOT LIKE 'sqlite_%' ORDER BY name"_s);
    for (int i = 0; i < tablas.recordCount(); ++i) {
        out += tablas.value(i, 1).toString() + u'\n';
        const QString nombre = tablas.value(i, 0).toString();
        if (!db.hasTable(nombre)) continue;
        const ResultadoConsulta filas =
            db.query(u"SELECT * FROM \""_s + nombre + u"\" ORDER BY rowid"_s);
        for (int r = 0; r < filas.recordCount(); ++r) {
            QStringList celdas;
            for (const QVariant& v : filas.row(r))
                celdas << (v.isNull() ? u"NULL"_s : v.toString());
            out += celdas.join(u'|') + u'\n';
        }
    }
    return out;
}

// The indexes of a file, as they are written.
QStringList indices(const QString& path) {
    BaseDatos db;
    if (!db.open(path)) return {};
    const ResultadoConsulta r = db.query(
        u"SELECT name FROM sqlite_master WHERE type='index' AND sql IS NOT NULL ORDER BY name"_s);
    QStringList nombres;
    for (int i = 0; i < r.recordCount(); ++i) nombres << r.value(i, 0).toString();
    return nombres;
}

void sembrarBase(const QString& path) {
    BaseDatos db;
    QVERIFY(db.open(path));
    db.exec(
        u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,Principal) "
        u"VALUES (1,'Cuenta_1',160,80,'HTTP://host','juan','kly',12,1)"_s);
    db.exec(u"INSERT INTO Abonados VALUES ('0034629000000','Ana','',1)"_s);
    db.exec(u"INSERT INTO Automaticos (Codigo,Nombre) VALUES (3,'Semanal')"_s);
    db.exec(
        u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES (3,'0034629000000','hola')"_s);
    db.exec(
        u"INSERT INTO HEnvios (Abonado,Registro,Mensaje,Resultado,Canal) "
        u"VALUES ('0034629000000','2006-03-15 10:00:00','hola','OK',1)"_s);
    db.exec(
        u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
        u"VALUES ('2006-03-15 10:00:00',1,'629000000','pendiente',2)"_s);
}

}  // namespace

class TestUpgrade : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() { world.reset(); }

    void baselineBecomesCurrentKeepingRows() {
        const QString path = TestDb::createBaseline(world.root() + u"/viejo.db"_s);
        sembrarBase(path);
        QVERIFY(!msValidarBD(path));

        msActualizarBD(path);
        QVERIFY(msValidarBD(path));
        QCOMPARE(indices(path), indices(TestDb::createCurrent(world.root() + u"/nuevo.db"_s)));

        // Old rows keep their values; new columns come empty or with their
        // defaults, and a null default stays null.
        TestDb::openShared(path);
        QCOMPARE(filas(u"SELECT Nombre, Saldo, imptextos, remopc, Remitente IS NULL, tini IS NULL "
                       u"FROM Canales"_s),
                 QStringList{u"Cuenta_1|12|0|0|1|1"_s});
        QCOMPARE(filas(u"SELECT id, maxlote, solocontactos, coalesce(imgfondo, ''), "
                       u"(SELECT dflt_value IS NULL FROM pragma_table_info('opciones') "
                       u"WHERE name='imgfondo') FROM opciones"_s),
                 QStringList{u"1|50|0||1"_s});
        QCOMPARE(filas(u"SELECT (SELECT crem IS NULL FROM HEnvios), (SELECT count(*) FROM "
                       u"sqlite_master WHERE name='HEnvios_Registro'), (SELECT count(*) FROM "
                       u"envios), (SELECT Alias FROM Abonados), (SELECT TareaProgramada IS NULL "
                       u"FROM Automaticos)"_s),
                 QStringList{u"1|1|1|Ana|1"_s});
        // Its place in the lists' order comes with it, and the outbox's count
        // is kept from then on.
        QCOMPARE(filas(u"SELECT ClaveNombre IS NOT NULL, ClaveComentario IS NOT NULL FROM "
                       u"Abonados"_s),
                 QStringList{u"1|1"_s});
        QCOMPARE(filas(u"SELECT ClaveNombre IS NOT NULL, Destinatarios, ClaveUltima IS NOT NULL "
                       u"FROM Automaticos"_s),
                 QStringList{u"1|1|1"_s});
        prueba::bd().exec(u"INSERT INTO envios (Canal) VALUES (1), (2)"_s);
        QCOMPARE(filas(u"SELECT Canal, Filas FROM EnviosPorCanal"_s),
                 (QStringList{u"1|2"_s, u"2|1"_s}));

        // The old row keeps its values and gains an identity; the same contact
        // can now stand twice in one multi-send.
        QCOMPARE(filas(u"SELECT id_AboAuto IS NOT NULL, Mensaje FROM AboAuto"_s),
                 QStringList{u"1|hola"_s});
        prueba::bd().exec(
            u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES (3,'0034629000000','otra')"_s);
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM AboAuto WHERE Automatico=3"_s), 2);
        // The count kept for the list follows the file's own triggers.
        QCOMPARE(prueba::cuantos(u"SELECT Destinatarios FROM Automaticos"_s), 2);
    }

    void secondRunChangesNothing_data() {
        QTest::addColumn<bool>("baseline");
        QTest::newRow("from baseline") << true;
        QTest::newRow("current file") << false;
    }
    void secondRunChangesNothing() {
        QFETCH(bool, baseline);
        const QString path = world.root() + u"/repetido.db"_s;
        if (baseline) {
            TestDb::createBaseline(path);
            sembrarBase(path);
            msActualizarBD(path);
        } else {
            TestDb::createCurrent(path);
        }
        const QString antes = volcado(path);
        msActualizarBD(path);
        msActualizarBD(path);
        QCOMPARE(volcado(path), antes);
        QVERIFY(msValidarBD(path));
    }

    void halfUpgradedGainsWhatIsMissing() {
        const QString path = TestDb::createBaseline(world.root() + u"/medio.db"_s);
        sembrarBase(path);
        {
            BaseDatos db;
            QVERIFY(db.open(path));
            db.exec(u"ALTER TABLE Canales ADD COLUMN Remitente TEXT(16)"_s);
            db.exec(u"UPDATE Canales SET Remitente='Juan'"_s);
            db.exec(
                u"CREATE TABLE opciones (id INTEGER NOT NULL PRIMARY KEY DEFAULT 1, maxlote INTEGER)"_s);
            db.exec(u"INSERT INTO opciones (id, maxlote) VALUES (1, 200)"_s);
        }
        msActualizarBD(path);
        QVERIFY(msValidarBD(path));
        TestDb::openShared(path);
        QCOMPARE(filas(u"SELECT Remitente, tini, tfin, movil FROM Canales"_s),
                 QStringList{u"Juan|||"_s});
        QCOMPARE(filas(u"SELECT maxlote, solocontactos FROM opciones"_s), QStringList{u"200|0"_s});
    }

    void unopenableFileIsLeftAlone() {
        const QString path = world.root() + u"/basura.db"_s;
        const QByteArray texto =
            "esto no es una base de datos, solo texto que ocupa sitio en el disco....";
        prueba::escribir(path, texto);
        msActualizarBD(path);
        QVERIFY(!msValidarBD(path));
        QCOMPARE(prueba::leer(path), texto);
        msActualizarBD(world.root() + u"/no-existe.db"_s);
        QVERIFY(!QFile::exists(world.root() + u"/no-existe.db"_s));
    }

    // The probe reads Canales, Automaticos and HEnvios only.
    void validationIgnoresOptions() {
        const QString path = TestDb::createCurrent(world.root() + u"/sinopciones.db"_s);
        {
            BaseDatos db;
            QVERIFY(db.open(path));
            db.exec(u"DROP TABLE opciones"_s);
        }
        QVERIFY(msValidarBD(path));
        {
            BaseDatos db;
            QVERIFY(db.open(path));
            db.exec(u"ALTER TABLE HEnvios DROP COLUMN crem"_s);
        }
        QVERIFY(!msValidarBD(path));
    }
};

QUELMO_TEST_MAIN(TestUpgrade)
#include "test_upgrade.moc"

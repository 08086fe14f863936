// The transmitter's cycle: when a run happens, what it clears, which flags
// stand during it, and how a failure shows.
#include "TestSupport.h"
#include "app/Transmisor.h"
#include "base/Ajustes.h"
#include "base/EstadoAplicacion.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "delivery/mdoSendRavion.h"

using namespace Qt::StringLiterals;

class TestTransmitter : public QObject {
    Q_OBJECT
  public:
    explicit TestTransmitter(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

    void conBase() { TestDb::openShared(TestDb::createCurrent(world.root() + u"/tx.db"_s)); }

  private Q_SLOTS:
    void init() {
        world.reset();
        conBase();
    }

    void switchDecidesWhetherARunHappens_data() {
        QTest::addColumn<QString>("activo");  // null: never written
        QTest::addColumn<bool>("corre");
        QTest::newRow("never written means off") << QString() << false;
        QTest::newRow("off") << u"0"_s << false;
        QTest::newRow("on") << u"1"_s << true;
        QTest::newRow("other number") << u"2"_s << false;
    }
    void switchDecidesWhetherARunHappens() {
        QFETCH(QString, activo);
        QFETCH(bool, corre);
        InterfazGuionada ui;
        if (!activo.isNull()) Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, activo);
        msLog(u"línea anterior"_s);
        estadoAplicacion().gsVersionPlataforma = u"400"_s;
        SendMessage();
        // A run empties the log even with an empty outbox; no run keeps it.
        QCOMPARE(estadoAplicacion().log.lines().isEmpty(), corre);
        QCOMPARE(estadoAplicacion().gsVersionPlataforma.isEmpty(), corre);
        QVERIFY(!estadoAplicacion().gbEnviando);
    }

    void flagsStandDuringTheRunOnly() {
        InterfazGuionada ui;
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"ImportA"_s, u"Path"_s, world.root() + u"/vigilado.txt"_s);
        for (int canal : {3, 1, 2})
            Conexion().exec(
                u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES (?,?,'600','x',2)"_s,
                {QDateTime::currentDateTime(), canal});
        QList<QPair<bool, bool>> vistos;
        ui.onProcessEvents = [&] {
            // The import's own log lines yield before its flag goes up.
            const QString ultima = estadoAplicacion().log.last();
            if (ultima.contains(u"Preparando importacion de Mensajes"_s) ||
                ultima.contains(u"No existen Mensajes en el fichero"_s))
                return;
            vistos.append({estadoAplicacion().gbEnviando, estadoAplicacion().gbImportado});
        };
        SendMessage();
        // The loop turns during the run (after each account, and with each
        // log line), always with both flags up; the flag of the import goes
        // up even though the file does not exist.
        QVERIFY(vistos.size() >= 3);
        for (const auto& [enviando, importado] : vistos) {
            QVERIFY(enviando);
            QVERIFY(importado);
        }
        QVERIFY(!estadoAplicacion().gbEnviando);
        QVERIFY(!estadoAplicacion().gbImportado);
    }

    void shortWatchedPathIsNoImport() {
        InterfazGuionada ui;
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"ImportA"_s, u"Path"_s, u"a.t"_s);
        Conexion().exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        bool importado = true;
        ui.onProcessEvents = [&] { importado = estadoAplicacion().gbImportado; };
        SendMessage();
        QVERIFY(!importado);
    }

    void failuresAreLogged_data() {
        QTest::addColumn<QString>("activo");
        QTest::addColumn<bool>("cerrar");
        QTest::addColumn<bool>("sigueEnviando");
        QTest::newRow("switch not a number") << u"sí"_s << false << false;
        QTest::newRow("database gone") << u"1"_s << true << false;
    }
    void failuresAreLogged() {
        QFETCH(QString, activo);
        QFETCH(bool, cerrar);
        QFETCH(bool, sigueEnviando);
        InterfazGuionada ui;
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, activo);
        if (cerrar) Conexion().close();
        SendMessage();
        QCOMPARE(estadoAplicacion().log.lines().size(), 1);
        QVERIFY(estadoAplicacion().log.last().contains(u" - Error en SendMessage: "_s));
        // A failure inside the run never leaves the closing refused.
        QCOMPARE(estadoAplicacion().gbEnviando, sigueEnviando);
        if (cerrar) {
            conBase();
            SendMessage();
            QVERIFY(!estadoAplicacion().gbEnviando);
        }
    }

    void tickTurnsTheTimerOffWhileItRuns() {
        InterfazGuionada ui;
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Conexion().exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        Transmisor t;
        t.armarTemporizador();
        bool activoDurante = true;
        ui.onProcessEvents = [&] { activoDurante = t.Timer1().isActive(); };
        t.msForzarEnvio();
        QVERIFY(!activoDurante);
        QVERIFY(t.Timer1().isActive());
        QCOMPARE(t.Timer1().interval(), 60000);
        t.detener();
        t.msForzarEnvio();
        QVERIFY(!t.Timer1().isActive());
    }
};

QUELMO_TEST_MAIN(TestTransmitter)
#include "test_transmitter.moc"

// The transmitter's cycle: when a run happens, what it clears, which flags
// stand during it, and how a failure shows.
#include "SimuladorPrueba.h"
#include "TestSupport.h"
#include "app/Transmisor.h"
#include "app/mdoOpciones.h"
#include "base/Ajustes.h"
#include "base/EstadoAplicacion.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
#include "delivery/mdoSendRavion.h"

using namespace Qt::StringLiterals;

class TestTransmitter : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test

    void conBase() { TestDb::openShared(TestDb::createCurrent(world.root() + u"/tx.db"_s)); }

  private Q_SLOTS:
    void init() {
        world.reset();
        conBase();
        ui.emplace();
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
        if (!activo.isNull()) Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, activo);
        msLog(u"línea anterior"_s);
        estadoAplicacion().gsVersionPlataforma = u"400"_s;
        QCoro::waitFor(SendMessage());
        // A run empties the log even with an empty outbox; no run keeps it.
        QCOMPARE(estadoAplicacion().log.lines().isEmpty(), corre);
        QCOMPARE(estadoAplicacion().gsVersionPlataforma.isEmpty(), corre);
        QVERIFY(!estadoAplicacion().gbEnviando);
    }

    void flagsStandDuringTheRunOnly() {
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"ImportA"_s, u"Path"_s, world.root() + u"/vigilado.txt"_s);
        for (int canal : {3, 1, 2}) prueba::pendiente(u"600"_s, u"x"_s, canal);
        QList<QPair<bool, bool>> vistos;
        const EnCadaLinea enCadaLinea([&] {
            // The import's own log lines yield before its flag goes up.
            const QString ultima = estadoAplicacion().log.last();
            if (ultima.contains(u"Preparando importacion de Mensajes"_s) ||
                ultima.contains(u"No existen Mensajes en el fichero"_s))
                return;
            vistos.append({estadoAplicacion().gbEnviando, estadoAplicacion().gbImportado});
        });
        QCoro::waitFor(SendMessage());
        // Every line of the run (one for each account here) comes with both
        // flags up; the flag of the import goes up even though the file does
        // not exist.
        QVERIFY(vistos.size() >= 3);
        for (const auto& [enviando, importado] : vistos) {
            QVERIFY(enviando);
            QVERIFY(importado);
        }
        QVERIFY(!estadoAplicacion().gbEnviando);
        QVERIFY(!estadoAplicacion().gbImportado);
    }

    void shortWatchedPathIsNoImport() {
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"ImportA"_s, u"Path"_s, u"a.t"_s);
        Conexion().exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        bool importado = true;
        const EnCadaLinea enCadaLinea([&] { importado = estadoAplicacion().gbImportado; });
        QCoro::waitFor(SendMessage());
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
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, activo);
        if (cerrar) Conexion().close();
        QCoro::waitFor(SendMessage());
        QCOMPARE(estadoAplicacion().log.lines().size(), 1);
        QVERIFY(estadoAplicacion().log.last().contains(u" - Error en SendMessage: "_s));
        // A failure inside the run never leaves the closing refused.
        QTEST(estadoAplicacion().gbEnviando, "sigueEnviando");
        if (cerrar) {
            conBase();
            QCoro::waitFor(SendMessage());
            QVERIFY(!estadoAplicacion().gbEnviando);
        }
    }

    // The options saved during a run, or a "send now", neither start a
    // second run nor let a tick come inside this one.
    void tickTurnsTheTimerOffWhileItRuns() {
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Conexion().exec(u"INSERT INTO envios (Canal) VALUES (1)"_s);
        Conexion().exec(u"INSERT INTO envios (Canal) VALUES (2)"_s);
        Transmisor t;
        t.armarTemporizador();
        bool activoDurante = false;
        int turnos = 0;
        const EnCadaLinea enCadaLinea([&] {
            if (turnos++ == 0) {
                Opciones o;
                QVERIFY(leerOpciones(o));
                o.intervalo = u"20"_s;
                QVERIFY(msGuardarOpciones(o, QString()));
                t.msForzarEnvio();
            }
            activoDurante = activoDurante || t.Timer1().isActive();
        });
        t.msForzarEnvio();
        QVERIFY(turnos > 1);
        QVERIFY(!activoDurante);
        QVERIFY(t.Timer1().isActive());
        QCOMPARE(t.Timer1().interval(), 20000);
        t.detener();
        t.msForzarEnvio();
        QVERIFY(!t.Timer1().isActive());
    }

    // A large write of ours held over several turns is no other program:
    // a run waits for it to be stored, and a batch's result that comes
    // meanwhile is written after it, once, without a word of a lock.
    void aWriteOverSeveralTurnsDelaysTheRunOnly_data() {
        QTest::addColumn<bool>("enVuelo");  // held while the batch is at the platform
        QTest::newRow("held before the tick") << false;
        QTest::newRow("held while the batch is out") << true;
    }
    void aWriteOverSeveralTurnsDelaysTheRunOnly() {
        QFETCH(bool, enVuelo);
        SimuladorPrueba sim(world.root(),
                            u"[plataforma]\nretraso_ms=300\n[cuenta1]\nusuario=demo\n"
                            u"clave=demo\nsaldo=1000\nmovil=0034600123456\n"_s);
        prueba::cuentaPrincipal(sim.host());
        for (int i = 0; i < 2; ++i) prueba::pendiente(u"0034600000001"_s, u"x"_s);
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Transmisor t;
        QSignalSpy ticks(&t, &Transmisor::tickTerminado);
        bool soltar = false, guardada = false;
        const auto retener = [&] {
            EscrituraPorTurnos::escribir(
                Conexion(),
                {EscrituraPorTurnos::sentencia(Conexion(), u"INSERT INTO MenPro VALUES (0,'a')"_s),
                 [&] { return !soltar; }},
                [&](const ErrorBD* fallo) { guardada = !fallo; });
        };
        if (!enVuelo) retener();
        t.msForzarEnvio();
        if (enVuelo) {
            QTRY_VERIFY(estadoAplicacion().gbEnviando);
            retener();
        }
        QTest::qWait(600);
        QCOMPARE(ticks.count(), 0);
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), 2);
        soltar = true;
        QTRY_VERIFY_WITH_TIMEOUT(ticks.count() == 1, 10000);
        QVERIFY(guardada);
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), 0);
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM HEnvios"_s), 2);
        QCOMPARE(sim.registro().size(), 2);
        QVERIFY(sim.duplicados().isEmpty());
        QVERIFY(!estadoAplicacion().log.lines().join(u'\n').contains(u"otro programa"_s));
        t.detener();
    }

    void continuousModeFollowsAFullBatchAtOnce_data() {
        QTest::addColumn<QString>("continuo");  // Tr/Continuo
        QTest::addColumn<bool>("porOrden");     // --continuous
        QTest::addColumn<QString>("destino");
        QTest::addColumn<int>("ejecuciones");
        QTest::addColumn<int>("quedan");
        // Five rows, two a batch: full, full, then one.
        QTest::newRow("setting on") << u"1"_s << false << u"0034600000001"_s << 3 << 0;
        QTest::newRow("command line") << u"0"_s << true << u"0034600000001"_s << 3 << 0;
        QTest::newRow("off: a whole interval") << u"0"_s << false << u"0034600000001"_s << 1 << 3;
        // A batch the platform refused left no row: no haste to send it again.
        QTest::newRow("refused batch") << u"1"_s << false << u"0034600000666"_s << 1 << 5;
    }
    void continuousModeFollowsAFullBatchAtOnce() {
        QFETCH(QString, continuo);
        QFETCH(bool, porOrden);
        QFETCH(QString, destino);
        SimuladorPrueba sim(world.root(),
                            u"[plataforma]\nrechazados=0034600000666\n[cuenta1]\nusuario=demo\n"
                            u"clave=demo\nsaldo=1000\nmovil=0034600123456\n"_s);
        Conexion().exec(u"update opciones set maxlote=2 where id=1"_s);
        prueba::cuentaPrincipal(sim.host());
        for (int i = 0; i < 5; ++i) prueba::pendiente(destino, u"x"_s);
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        Ajustes::saveSetting(u"Tr"_s, u"Continuo"_s, continuo);
        Transmisor::continuoPorOrden(porOrden);
        const auto restaurar = qScopeGuard([] { Transmisor::continuoPorOrden(false); });
        Transmisor t;
        t.armarTemporizador();
        QSignalSpy ticks(&t, &Transmisor::tickTerminado);

        t.msForzarEnvio();
        // Timer1 is armed again only when no run follows at once; with its
        // minute no tick of it comes before this.
        QTRY_VERIFY_WITH_TIMEOUT(t.Timer1().isActive(), 30000);
        QTEST(int(ticks.count()), "ejecuciones");
        QTEST(int(prueba::cuantos(u"SELECT count(*) FROM envios"_s)), "quedan");
        QCOMPARE(t.Timer1().interval(), 60000);
        t.detener();
    }
};

QUELMO_TEST_MAIN(TestTransmitter)
#include "test_transmitter.moc"

#include <optional>

// Scheduled messages becoming outbox rows: at each tick, and at start-up
// what is pending today, offered at once.
#include "TestSupport.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "scheduling/clsTareasPendientes.h"

#include <QTimer>
#include <optional>

using namespace Qt::StringLiterals;
using prueba::en;
using prueba::programa;

namespace {
using prueba::bd;

// A recipient of row `automatico`, a contact of account `canal`.
void destinatario(int automatico, const QString& numero, const QString& mensaje, int canal = 1) {
    bd().exec(u"INSERT OR IGNORE INTO Abonados (Codigo, Alias, Canal) VALUES (?,?,?)"_s,
              {numero, numero, canal});
    bd().exec(u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES (?,?,?)"_s,
              {automatico, numero, mensaje});
}

// A schedule with one recipient of its own.
void conDestinatario(int codigo, const QString& columnas) {
    programa(codigo, columnas);
    destinatario(codigo, u"60000000"_s + QString::number(codigo), u"hola"_s);
}

QString ultimaTarea(int codigo) {
    return prueba::columna(u"SELECT UltimaTarea FROM Automaticos WHERE Codigo=?"_s, {codigo})
        .value(0);
}

QStringList enCola() {
    return prueba::filas(
        u"SELECT Abonado, Mensaje, Canal, intento, Registro FROM envios ORDER BY Id"_s);
}

const QString kSemanal10 = u"Periodicidad=2 DiasSemana=4 Hora=10:00"_s;  // Wednesday 10:00
}  // namespace

class TestTareasPendientes : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() { world.baseNueva(u"pend.db"_s); }

    // Runs missed by every tick are offered at a start later that day, all
    // at once; sent, the time of sending is the last run and a further
    // start offers nothing. Not sent, they are offered again.
    void startLaterTheSameDay_data() {
        QTest::addColumn<bool>("enviar");
        QTest::newRow("sent") << true;
        QTest::newRow("not sent") << false;
    }
    void startLaterTheSameDay() {
        QFETCH(bool, enviar);
        conDestinatario(1, kSemanal10);
        conDestinatario(2, u"Periodicidad=1 Hora=11:30"_s);
        RelojFijo clock(en(u"15/03/2006 12:00:07"_s));
        QVERIFY(clsTareasPendientes().HayPendientesHoy());
        if (enviar) QCOMPARE(clsTareasPendientes().EnviarPendientes(), 2);
        QCOMPARE(enCola().size(), enviar ? 2 : 0);
        const QString ultima = enviar ? u"2006-03-15 12:00:07"_s : QString();
        QCOMPARE(ultimaTarea(1), ultima);
        QCOMPARE(ultimaTarea(2), ultima);

        clock.set(en(u"15/03/2006 13:00:00"_s));
        QCOMPARE(clsTareasPendientes().HayPendientesHoy(), !enviar);
    }

    // A tick while the start-up question waits fires what comes due; the
    // answer then judges each row on what the database holds, so nothing
    // goes twice, whichever comes first.
    void tickWhileTheQuestionWaits_data() {
        QTest::addColumn<QString>("arranque");
        QTest::addColumn<QString>("tic");
        QTest::addColumn<bool>("ticEnLaPregunta");
        QTest::addColumn<QString>("respuesta");
        QTest::addColumn<int>("alArrancar");  // rows EnviarPendientes fires
        QTest::addColumn<int>("alTic");       // rows the tick fires
        QTest::addColumn<QStringList>("ultimas");
        // Row 1 daily at 08:00, missed; row 2 daily at 09:00; row 3 daily
        // at 10:00.
        QTest::newRow("another row comes due while it waits")
            << u"08:59:30"_s << u"09:00:20"_s << true << u"09:00:46"_s << 1 << 1
            << QStringList{u"2006-03-15 09:00:46"_s, u"2006-03-15 09:00:00"_s, QString()};
        QTest::newRow("the asked row itself goes at a tick while it waits")
            << u"10:00:05"_s << u"10:00:20"_s << true << u"10:00:30"_s << 2 << 1
            << QStringList{u"2006-03-15 10:00:30"_s, u"2006-03-15 10:00:30"_s,
                           u"2006-03-15 10:00:00"_s};
        QTest::newRow("answered before the tick")
            << u"10:00:05"_s << u"10:00:20"_s << false << u"10:00:10"_s << 3 << 0
            << QStringList{u"2006-03-15 10:00:10"_s, u"2006-03-15 10:00:10"_s,
                           u"2006-03-15 10:00:10"_s};
    }
    void tickWhileTheQuestionWaits() {
        QFETCH(QString, arranque);
        QFETCH(QString, tic);
        QFETCH(bool, ticEnLaPregunta);
        QFETCH(QString, respuesta);
        QFETCH(int, alArrancar);
        QFETCH(int, alTic);
        QFETCH(QStringList, ultimas);
        conDestinatario(1, u"Periodicidad=1 Hora=08:00"_s);
        conDestinatario(2, u"Periodicidad=1 Hora=09:00"_s);
        conDestinatario(3, u"Periodicidad=1 Hora=10:00"_s);
        RelojFijo clock(en(u"15/03/2006 "_s + arranque));
        int disparadasAlTic = -1;
        const auto unTic = [&] {
            clock.set(en(u"15/03/2006 "_s + tic));
            disparadasAlTic = prueba::esperar(clsTareasPendientes::ReLoad());
        };
        QVERIFY(clsTareasPendientes().HayPendientesHoy());
        if (ticEnLaPregunta) unTic();
        clock.set(en(u"15/03/2006 "_s + respuesta));
        QCOMPARE(clsTareasPendientes().EnviarPendientes(), alArrancar);
        if (!ticEnLaPregunta) unTic();
        QCOMPARE(disparadasAlTic, alTic);
        QCOMPARE((QStringList{ultimaTarea(1), ultimaTarea(2), ultimaTarea(3)}), ultimas);
        // Each run that went, went once.
        QCOMPARE(enCola().size(), alArrancar + alTic);
        QCOMPARE(prueba::cuantos(u"SELECT count(DISTINCT Abonado) FROM envios"_s),
                 alArrancar + alTic);
    }

    // Each recipient with its own text and its contact's account, numbers
    // completed, the last run written once per recipient; a recipient whose
    // contact is gone falls away, one the sender would refuse stays out.
    void recipientsBecomeOutboxRows() {
        programa(5, kSemanal10);
        destinatario(5, u"+34600000001"_s, u"uno"_s, 1);
        destinatario(5, u"600000002"_s, u"l'hora d'anar-hi"_s, 2);
        destinatario(5, u"0034600000003"_s, u"tres"_s, 3);
        destinatario(5, u"Oficina"_s, u"cuatro"_s, 4);
        bd().exec(u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES (5,'699','x')"_s);
        bd().execScript(
            u"CREATE TABLE escrituras (n INTEGER); INSERT INTO escrituras VALUES (0);"
            u"CREATE TRIGGER cuenta AFTER UPDATE OF UltimaTarea ON Automaticos "
            u"BEGIN UPDATE escrituras SET n = n + 1; END;"_s);
        InterfazGuionada ui;
        RelojFijo clock(en(u"15/03/2006 10:00:20"_s));
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 1);
        const QString sufijo = u"|2|2006-03-15 10:00:20"_s;
        QCOMPARE(enCola(), QStringList({u"0034600000001|uno|1"_s + sufijo,
                                        u"0034600000002|l'hora d'anar-hi|2"_s + sufijo,
                                        u"0034600000003|tres|3"_s + sufijo}));
        QCOMPARE(prueba::cuantos(u"SELECT n FROM escrituras"_s), 4);
    }

    // A run of many recipients is written over turns of the event loop in
    // one transaction: the loop turns meanwhile, and every recipient goes
    // in once. A lock another program holds is waited for between turns;
    // closed before the run is stored, nothing of it went in, and the row
    // is still due at the next tick.
    void aLargeRunGoesOverTurns_data() { prueba::filasOtroPrograma("stored"); }
    void aLargeRunGoesOverTurns() {
        QFETCH(bool, ajeno);
        QFETCH(bool, cortar);
        constexpr int kDestinatarios = 20000;
        programa(7, kSemanal10);
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO Abonados (Codigo, Alias, Canal) "
            u"SELECT '0034' || (610000000 + i), 'c' || i, 1 + i % 2 FROM n"_s,
            {kDestinatarios - 1});
        bd().exec(
            u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) "
            u"SELECT 7, Codigo, 'hola ' || Alias FROM Abonados"_s);
        const QString ruta = bd().path();
        std::optional<prueba::OtroPrograma> otro = prueba::otroPrograma(ajeno, ruta);
        RelojFijo clock(en(u"15/03/2006 10:00:20"_s));
        int giros = 0;
        QTimer reloj;
        // Turns the loop takes while the write holds the connection.
        connect(&reloj, &QTimer::timeout, [&] { giros += bd().retenida() ? 1 : 0; });
        reloj.start(1);
        std::optional<int> disparadas;
        QCoro::connect(clsTareasPendientes::ReLoad(), this, [&](int16_t n) { disparadas = n; });
        prueba::dejarPasar(otro, cortar, [&] { return !disparadas; });
        QTRY_VERIFY_WITH_TIMEOUT(disparadas.has_value(), 30000);
        QCOMPARE(*disparadas, 1);
        // Each recipient with its own text, through its contact's account.
        const auto encolados = [] {
            return prueba::cuantos(
                u"SELECT count(DISTINCT envios.Abonado) FROM envios JOIN Abonados ON "
                u"Abonados.Codigo = envios.Abonado WHERE envios.Mensaje = 'hola ' || "
                u"Abonados.Alias "
                u"AND envios.Canal = Abonados.Canal"_s);
        };
        if (cortar) {
            TestDb::openShared(ruta);
            QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), 0);
            QCOMPARE(ultimaTarea(7), QString());
            QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 1);
        } else {
            QVERIFY2(giros >= 10, qPrintable(QString::number(giros)));
        }
        QCOMPARE(encolados(), kDestinatarios);
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), kDestinatarios);
        QCOMPARE(ultimaTarea(7), u"2006-03-15 10:00:00"_s);
        // The second tick of the minute finds it done.
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 0);
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), kDestinatarios);
    }

    // Without recipients a due row counts, but queues nothing and stays due.
    void rowWithoutRecipientsStaysDue() {
        programa(1, kSemanal10);
        programa(2, u"TareaProgramada=0 "_s + kSemanal10);
        RelojFijo clock(en(u"15/03/2006 10:00:20"_s));
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 1);
        clock.set(en(u"15/03/2006 12:00:00"_s));
        for (int arranque = 0; arranque < 2; ++arranque) {
            QVERIFY(clsTareasPendientes().HayPendientesHoy());
            QCOMPARE(clsTareasPendientes().EnviarPendientes(), 1);
        }
        QVERIFY(enCola().isEmpty());
        QVERIFY(ultimaTarea(1).isEmpty());
    }

    // A tick goes on past a failed calculation; that row has no run of its
    // own and does not go (not on what another row left in the
    // calculator). At start-up a failure ends the walk; what was queued
    // stays.
    void failedRow() {
        conDestinatario(1, u"Periodicidad=2 DiasSemana=1 Hora=10:00"_s);          // Monday
        conDestinatario(2, u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=31"_s);  // no 31 April
        conDestinatario(3, u"Periodicidad=1 Hora=10:00"_s);
        RelojFijo clock(en(u"10/04/2006 10:00:20"_s));
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 2);
        QVERIFY(ultimaTarea(2).isEmpty());
        QCOMPARE(ultimaTarea(3), u"2006-04-10 10:00:00"_s);

        bd().exec(u"UPDATE Automaticos SET UltimaTarea=NULL"_s);
        clock.set(en(u"10/04/2006 12:00:00"_s));
        QVERIFY(clsTareasPendientes().HayPendientesHoy());
        QCOMPARE(clsTareasPendientes().EnviarPendientes(), 0);
        QCOMPARE(ultimaTarea(1), u"2006-04-10 12:00:00"_s);
        QVERIFY(ultimaTarea(3).isEmpty());
        QCOMPARE(enCola().size(), 3);
    }

    // The headless start answers the question itself, with yes.
    void headlessStartSendsTodaysMissedRuns() {
        world.reset();
        QVERIFY(runProgram(world, {u"--headless"_s, u"--once"_s}).finished);
        TestDb::openShared(world.appDir() + u"/mensajes.db"_s);
        conDestinatario(1, u"Periodicidad=1 Hora=00:00"_s);  // always passed by now
        Conexion().close();
        const QDateTime antes = QDateTime::currentDateTime().addSecs(-1);
        const ProcessResult r = runProgram(world, {u"--headless"_s, u"--once"_s});
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.err.contains(u"pendientes de enviar"_s), qPrintable(r.err));
        TestDb::openShared(world.appDir() + u"/mensajes.db"_s);
        QCOMPARE(enCola().size(), 1);
        QVERIFY(deTextoBD(ultimaTarea(1)) >= antes);
    }
};

QUELMO_TEST_MAIN(TestTareasPendientes)
#include "test_clsTareasPendientes.moc"

// Scheduled messages becoming outbox rows: at each tick, and at start-up
// with one question.
#include "Programas.h"
#include "TestSupport.h"
#include "app/Clock.h"
#include "app/Settings.h"
#include "scheduling/clsNextTarea.h"
#include "scheduling/clsTareasPendientes.h"

using namespace Qt::StringLiterals;

namespace {
const QString kPregunta =
    u"Tiene mensajes programados para hoy pendientes de enviar\n\n¿Desea enviarlos ahora?"_s;

Database& db() {
    return appState().Conexion;
}

void contacto(const QString& numero, int canal) {
    db().exec(u"INSERT INTO Abonados (Codigo, Alias, Canal) VALUES (?,?,?)"_s,
              {numero, QString(u"alias "_s + numero), canal});
}

void destinatario(int automatico, const QString& numero, const QString& mensaje) {
    db().exec(u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES (?,?,?)"_s,
              {automatico, numero, mensaje});
}

// A schedule with one recipient of its own.
void programaCon(int codigo, const Programa& p) {
    p.guardar(codigo);
    const QString numero = u"60000000"_s + QString::number(codigo);
    contacto(numero, 1);
    destinatario(codigo, numero, QString(u"mensaje "_s + QString::number(codigo)));
}

QString ultimaTarea(int codigo) {
    return db()
        .query(u"SELECT UltimaTarea FROM Automaticos WHERE Codigo=?"_s, {codigo})
        .value(0, 0)
        .toString();
}

int enCola() {
    return db().query(u"SELECT count(*) FROM envios"_s).value(0, 0).toInt();
}
}  // namespace

class TestTareasPendientes : public QObject {
    Q_OBJECT
  public:
    explicit TestTareasPendientes(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/pend.db"_s));
        db().exec(u"DELETE FROM Automaticos"_s);
        db().exec(u"DELETE FROM AboAuto"_s);
        db().exec(u"DELETE FROM Abonados"_s);
        db().exec(u"DELETE FROM envios"_s);
    }

    // Twice a minute the timer ticks; the run goes out once, at its
    // planned time, and then the next week's run is the next.
    void ticksAroundTheMinute() {
        programaCon(1, Programa::semanal(4).a({10, 0}));
        ScriptedInterface ui;
        FixedClock clock(en("15/03/2006 10:00:20"));
        QCOMPARE(clsTareasPendientes().ReLoad(), 1);
        QCOMPARE(enCola(), 1);
        QCOMPARE(ultimaTarea(1), u"2006-03-15 10:00:00"_s);

        clock.set(en("15/03/2006 10:00:50"));
        QCOMPARE(clsTareasPendientes().ReLoad(), 0);
        clock.set(en("15/03/2006 10:01:20"));
        QCOMPARE(clsTareasPendientes().ReLoad(), 0);
        QCOMPARE(enCola(), 1);

        clsNextTarea t;
        t.setCodigo(1);
        t.CalcularProximaTarea();
        QCOMPARE(t.FechaProximaTarea(), en("22/03/2006 10:00:00"));
        QVERIFY(ui.boxes.isEmpty());
    }

    // The run of 10:00 missed by every tick is offered at a start later that
    // day: once, and sent on yes with the time of sending as the last run.
    void restartLaterTheSameDay() {
        programaCon(1, Programa::semanal(4).a({10, 0}));
        programaCon(2, Programa::diaria(1).a({11, 30}));
        ScriptedInterface ui;
        ui.answers = {Msg::Yes};
        FixedClock clock(en("15/03/2006 12:00:07"));
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 2);
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(ui.boxes[0].text, kPregunta);
        QCOMPARE(ui.boxes[0].style, Msg::YesNo + Msg::Information);
        QVERIFY(ui.boxes[0].title.isEmpty());
        QCOMPARE(ultimaTarea(1), u"2006-03-15 12:00:07"_s);
        QCOMPARE(ultimaTarea(2), u"2006-03-15 12:00:07"_s);
        QCOMPARE(enCola(), 2);
        const QueryResult fila = db().query(
            u"SELECT Abonado, Mensaje, Canal, intento, Registro FROM envios WHERE "
            u"Mensaje='mensaje 1'"_s);
        QCOMPARE(fila.value(0, 0).toString(), u"0034600000001"_s);
        QCOMPARE(fila.value(0, 3).toInt(), 2);
        QCOMPARE(fila.value(0, 4).toString(), u"2006-03-15 12:00:07"_s);

        // A second start the same day: nothing is after the last run.
        clock.set(en("15/03/2006 13:00:00"));
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 0);
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(enCola(), 2);
    }

    void answerNoQueuesNothing() {
        programaCon(1, Programa::semanal(4).a({10, 0}));
        ScriptedInterface ui;
        ui.answers = {Msg::No, Msg::Yes};
        FixedClock clock(en("15/03/2006 12:00:00"));
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 0);
        QCOMPARE(enCola(), 0);
        QVERIFY(ultimaTarea(1).isEmpty());
        // And it is asked again at the next start.
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 1);
        QCOMPARE(ui.boxes.size(), 2);
    }

    // Each recipient with its own text, through its own contact's account;
    // the last run is written once per recipient.
    void threeRecipientsThreeRows() {
        Programa::semanal(4).a({10, 0}).guardar(5);
        contacto(u"600000001"_s, 1);
        contacto(u"600000002"_s, 2);
        contacto(u"600000003"_s, 3);
        destinatario(5, u"600000001"_s, u"uno"_s);
        destinatario(5, u"600000002"_s, u"dos"_s);
        destinatario(5, u"600000003"_s, u"tres"_s);
        destinatario(5, u"699999999"_s, u"contacto borrado"_s);
        db().execScript(
            u"CREATE TABLE escrituras (n INTEGER); INSERT INTO escrituras VALUES (0);"
            u"CREATE TRIGGER cuenta AFTER UPDATE OF UltimaTarea ON Automaticos "
            u"BEGIN UPDATE escrituras SET n = n + 1; END;"_s);
        ScriptedInterface ui;
        FixedClock clock(en("15/03/2006 10:00:20"));
        QCOMPARE(clsTareasPendientes().ReLoad(), 1);
        const QueryResult filas =
            db().query(u"SELECT Abonado, Mensaje, Canal FROM envios ORDER BY Id"_s);
        QCOMPARE(filas.recordCount(), 3);
        const QStringList textos{u"uno"_s, u"dos"_s, u"tres"_s};
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(filas.value(i, 0).toString(),
                     QString(u"003460000000"_s + QString::number(i + 1)));
            QCOMPARE(filas.value(i, 1).toString(), textos[i]);
            QCOMPARE(filas.value(i, 2).toInt(), i + 1);
        }
        QCOMPARE(db().query(u"SELECT n FROM escrituras"_s).value(0, 0).toInt(), 3);
    }

    void numbersAndTexts_data() {
        QTest::addColumn<QString>("numero");
        QTest::addColumn<QString>("mensaje");
        QTest::addColumn<QString>("enCola");
        QTest::newRow("plus") << u"+34600000000"_s << u"hola"_s << u"0034600000000"_s;
        QTest::newRow("national") << u"600000000"_s << u"hola"_s << u"0034600000000"_s;
        QTest::newRow("international") << u"0034600000000"_s << u"hola"_s << u"0034600000000"_s;
        QTest::newRow("not a number") << u"Oficina"_s << u"hola"_s << u"Oficina"_s;
        QTest::newRow("apostrophe")
            << u"600000000"_s << u"l'hora d'anar-hi"_s << u"0034600000000"_s;
    }
    void numbersAndTexts() {
        QFETCH(QString, numero);
        QFETCH(QString, mensaje);
        QFETCH(QString, enCola);
        Programa::semanal(4).a({10, 0}).guardar(1);
        contacto(numero, 1);
        destinatario(1, numero, mensaje);
        ScriptedInterface ui;
        FixedClock clock(en("15/03/2006 10:00:20"));
        QCOMPARE(clsTareasPendientes().ReLoad(), 1);
        const QueryResult fila = db().query(u"SELECT Abonado, Mensaje FROM envios"_s);
        QCOMPARE(fila.recordCount(), 1);
        QCOMPARE(fila.value(0, 0).toString(), enCola);
        QCOMPARE(fila.value(0, 1).toString(), mensaje);
    }

    // Without recipients a due row counts as fired, but stays due.
    void rowWithoutRecipientsStaysDue() {
        Programa::semanal(4).a({10, 0}).guardar(1);
        ScriptedInterface ui;
        ui.answers = {Msg::Yes, Msg::Yes};
        FixedClock clock(en("15/03/2006 12:00:00"));
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 1);
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 1);
        QCOMPARE(ui.boxes.size(), 2);
        QCOMPARE(enCola(), 0);
        QVERIFY(ultimaTarea(1).isEmpty());
    }

    void nothingActiveTouchesNothing() {
        Programa inactiva = Programa::semanal(4).a({10, 0});
        inactiva.activa = false;
        programaCon(1, inactiva);
        ScriptedInterface ui;
        FixedClock clock(en("15/03/2006 10:00:20"));
        QCOMPARE(clsTareasPendientes().ReLoad(), 0);
        clock.set(en("15/03/2006 12:00:00"));
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 0);
        QVERIFY(ui.boxes.isEmpty());
        QCOMPARE(enCola(), 0);
    }

    // A row whose calculation fails doesn't stop the tick: it is judged on
    // what the calculator still holds from the row before, and the rows
    // after it are looked at as usual.
    void tickGoesOnPastAFailedRow() {
        programaCon(1, Programa::semanal(1).a({10, 0}));  // Monday
        programaCon(2, Programa::diaDelMes(31));          // no 31 April
        programaCon(3, Programa::diaria(1).a({10, 0}));
        ScriptedInterface ui;
        FixedClock clock(en("10/04/2006 10:00:20"));
        QCOMPARE(clsTareasPendientes().ReLoad(), 3);
        QCOMPARE(enCola(), 3);
        QCOMPARE(ultimaTarea(2), u"2006-04-10 10:00:00"_s);
        QCOMPARE(ultimaTarea(3), u"2006-04-10 10:00:00"_s);
    }

    // At start-up a failure ends the walk: what was queued stays, the rows
    // after it wait for the next start.
    void startUpStopsAtAFailedRow() {
        programaCon(1, Programa::semanal(4).a({10, 0}));
        programaCon(2, Programa::anual(29, 2));
        programaCon(3, Programa::diaria(1).a({10, 0}));
        ScriptedInterface ui;
        ui.answers = {Msg::Yes};
        FixedClock clock(en("15/03/2006 12:00:00"));
        QCOMPARE(clsTareasPendientes().PendientesEnviar(), 0);
        QCOMPARE(enCola(), 1);
        QCOMPARE(ultimaTarea(1), u"2006-03-15 12:00:00"_s);
        QVERIFY(ultimaTarea(3).isEmpty());
    }

    // The headless start answers the question itself, with yes.
    void headlessStartSendsTodaysMissedRuns() {
        QDir(world.configHome()).removeRecursively();
        QDir(world.dataHome()).removeRecursively();
        QVERIFY(runProgram(world, {u"--headless"_s, u"--once"_s}).finished);
        const QString ruta = world.appDir() + u"/mensajes.db"_s;
        {
            Database base;
            QVERIFY(base.open(ruta));
            base.exec(u"INSERT INTO Abonados (Codigo, Alias, Canal) VALUES ('600000001','a',1)"_s);
            base.exec(
                u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) "
                u"VALUES (1,'600000001','buenos días')"_s);
            // Every day at midnight: always passed by the time of the start.
            base.exec(
                u"INSERT INTO Automaticos (Codigo, Nombre, TareaProgramada, Hora, "
                u"Periodicidad, FechaIni, FechaFin, Cada) VALUES (1, 'cada día', 1, "
                u"'2006-01-02 00:00:00', 1, '2006-01-01 00:00:00', '9999-12-31 00:00:00', 1)"_s);
        }
        const QDateTime antes = QDateTime::currentDateTime().addSecs(-1);
        const ProcessResult r = runProgram(world, {u"--headless"_s, u"--once"_s});
        QVERIFY(r.finished);
        QCOMPARE(r.exitCode, 0);
        QVERIFY2(r.err.contains(u"pendientes de enviar"_s), qPrintable(r.err));
        Database base;
        QVERIFY(base.open(ruta));
        const QueryResult fila = base.query(u"SELECT Abonado, Mensaje FROM envios"_s);
        QCOMPARE(fila.recordCount(), 1);
        QCOMPARE(fila.value(0, 1).toString(), u"buenos días"_s);
        const QDateTime ultima =
            deTextoBD(base.query(u"SELECT UltimaTarea FROM Automaticos"_s).value(0, 0).toString());
        QVERIFY(ultima >= antes);
    }
};

QUELMO_TEST_MAIN(TestTareasPendientes)
#include "test_clsTareasPendientes.moc"

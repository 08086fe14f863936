// When a scheduled message runs next: every kind of recurrence, to the
// minute and to the day, at the month's end and across calls.
#include "Programas.h"
#include "TestSupport.h"
#include "app/Clock.h"
#include "scheduling/clsNextTarea.h"

using namespace Qt::StringLiterals;

namespace {
// Wednesday.
const char* const kAhora = "15/03/2006 10:00:30";
const QString kSinRun = u"-"_s;
const QString kFallo = u"fallo"_s;

QString resultado(const clsNextTarea& t) {
    return t.HayTarea() ? t.FechaProximaTarea().toString(u"dd/MM/yyyy HH:mm:ss"_s) : kSinRun;
}
}  // namespace

class TestNextTarea : public QObject {
    Q_OBJECT
  public:
    explicit TestNextTarea(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

  private Q_SLOTS:
    void initTestCase() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/calc.db"_s));
    }
    void init() { appState().Conexion.exec(u"DELETE FROM Automaticos"_s); }

    void nextRun_data() {
        QTest::addColumn<Programa>("programa");
        QTest::addColumn<QDateTime>("reloj");
        QTest::addColumn<bool>("alDia");
        QTest::addColumn<QString>("esperado");  // "-" no run, "fallo" no date

        const QDate hoy(2006, 3, 15);
        const auto fila = [](const char* nombre, const Programa& p, const char* reloj, bool alDia,
                             const QString& esperado) {
            QTest::newRow(nombre) << p << en(reloj) << alDia << esperado;
        };
        fila("once, this minute", Programa::unaVez(hoy, {10, 0}), kAhora, false,
             u"15/03/2006 10:00:00"_s);
        fila("once, minute gone", Programa::unaVez(hoy, {10, 0}), "15/03/2006 10:01:30", false,
             kSinRun);
        fila("once, yesterday", Programa::unaVez(hoy.addDays(-1), {10, 0}), kAhora, false, kSinRun);

        fila("daily 3, passed today", Programa::diaria(3), kAhora, false, u"18/03/2006 09:00:00"_s);
        fila("daily 3, early next day", Programa::diaria(3), "16/03/2006 08:00:00", false,
             u"16/03/2006 09:00:00"_s);
        fila("daily 3, later today", Programa::diaria(3).a({11, 0}), kAhora, false,
             u"15/03/2006 11:00:00"_s);
        fila("daily, starts later", Programa::diaria(1).desde({2006, 3, 20}), kAhora, false,
             u"20/03/2006 09:00:00"_s);
        fila("daily, ended today", Programa::diaria(1).hasta(hoy), kAhora, false, kSinRun);
        fila("daily, ends tomorrow, later today",
             Programa::diaria(1).hasta({2006, 3, 16}).a({11, 0}), kAhora, false,
             u"15/03/2006 11:00:00"_s);
        fila("daily, ends tomorrow, next run on the end day",
             Programa::diaria(1).hasta({2006, 3, 16}), kAhora, false, kSinRun);

        fila("weekly Mon+Fri", Programa::semanal(1 | 16), kAhora, false, u"17/03/2006 09:00:00"_s);
        fila("weekly Wed, passed", Programa::semanal(4), kAhora, false, u"22/03/2006 09:00:00"_s);
        fila("weekly Wed, this minute", Programa::semanal(4).a({10, 0}), kAhora, false,
             u"15/03/2006 10:00:00"_s);
        fila("weekly Wed, minute gone", Programa::semanal(4).a({10, 0}), "15/03/2006 10:01:30",
             false, u"22/03/2006 10:00:00"_s);
        fila("weekly Mon, starts next Wed", Programa::semanal(1).desde({2006, 3, 22}), kAhora,
             false, u"27/03/2006 09:00:00"_s);
        fila("weekly, no later day before the end", Programa::semanal(4).hasta({2006, 3, 20}),
             kAhora, false, kSinRun);

        fila("monthly day 20", Programa::diaDelMes(20), kAhora, false, u"20/03/2006 09:00:00"_s);
        fila("monthly day 15, passed", Programa::diaDelMes(15), kAhora, false,
             u"15/04/2006 09:00:00"_s);
        fila("monthly day 15, later today", Programa::diaDelMes(15).a({11, 0}), kAhora, false,
             u"15/03/2006 11:00:00"_s);
        fila("monthly day 10", Programa::diaDelMes(10), kAhora, false, u"10/04/2006 09:00:00"_s);
        fila("monthly day 31 into February", Programa::diaDelMes(31), "31/01/2006 12:00:00", false,
             u"28/02/2006 09:00:00"_s);
        fila("monthly day 31 in April", Programa::diaDelMes(31), "10/04/2006 10:00:30", false,
             kFallo);
        fila("monthly day 30 in February", Programa::diaDelMes(30), "10/02/2006 10:00:30", false,
             kFallo);
        fila("second Tuesday, passed", Programa::enesimoDelMes(2, 2), kAhora, false,
             u"11/04/2006 09:00:00"_s);
        fila("last Friday", Programa::enesimoDelMes(5, 5), kAhora, false, u"31/03/2006 09:00:00"_s);
        fila("second Tuesday at midnight is reported the day before",
             Programa::enesimoDelMes(2, 2).a({0, 0}), "01/03/2006 10:00:30", false,
             u"13/03/2006 00:00:00"_s);

        fila("yearly 20 March", Programa::anual(20, 3), kAhora, false, u"20/03/2006 09:00:00"_s);
        fila("yearly 15 March, passed", Programa::anual(15, 3), kAhora, false,
             u"15/03/2007 09:00:00"_s);
        fila("yearly 1 March", Programa::anual(1, 3), kAhora, false, u"01/03/2007 09:00:00"_s);
        fila("yearly 29 February, common year", Programa::anual(29, 2), kAhora, false, kFallo);
        fila("yearly 1 March, starting in 2008", Programa::anual(1, 3).desde({2008, 6, 10}), kAhora,
             false, u"01/03/2007 09:00:00"_s);

        const char* tarde = "15/03/2006 20:00:00";
        fila("to the day: daily keeps today's passed run", Programa::diaria(1), tarde, true,
             u"15/03/2006 09:00:00"_s);
        fila("to the day: daily 2 is tomorrow", Programa::diaria(2), tarde, true,
             u"16/03/2006 09:00:00"_s);
        fila("to the day: weekly Wed", Programa::semanal(4), tarde, true, u"15/03/2006 09:00:00"_s);
        fila("to the day: weekly Tue+Thu passes yesterday", Programa::semanal(2 | 8), tarde, true,
             u"16/03/2006 09:00:00"_s);
        fila("to the day: monthly day 15", Programa::diaDelMes(15).a({11, 0}), tarde, true,
             u"15/03/2006 11:00:00"_s);
        fila("to the day: monthly day 14", Programa::diaDelMes(14), tarde, true,
             u"14/04/2006 09:00:00"_s);
        fila("to the day: third Wednesday today goes to next month", Programa::enesimoDelMes(3, 3),
             tarde, true, u"18/04/2006 09:00:00"_s);
        fila("to the day: third Wednesday reported on the Tuesday", Programa::enesimoDelMes(3, 3),
             "14/03/2006 20:00:00", true, u"14/03/2006 09:00:00"_s);
        fila("to the day: yearly today", Programa::anual(15, 3), tarde, true,
             u"15/03/2006 09:00:00"_s);
    }
    void nextRun() {
        QFETCH(Programa, programa);
        QFETCH(QDateTime, reloj);
        QFETCH(bool, alDia);
        QFETCH(QString, esperado);
        programa.guardar(7);
        FixedClock clock(reloj);
        clsNextTarea t;
        t.setCodigo(7);
        try {
            alDia ? t.CalcularProximaTarea2() : t.CalcularProximaTarea();
        } catch (const FechaNoValida& e) {
            QCOMPARE(e.number(), int(ErrNum::TypeMismatch));
            QCOMPARE(kFallo, esperado);
            return;
        }
        QCOMPARE(resultado(t), esperado);
        QCOMPARE(t.codigo(), 7);
    }

    void dayWeekOfMonth_data() {
        QTest::addColumn<int>("mes");
        QTest::addColumn<int>("anio");
        QTest::addColumn<int>("semana");
        QTest::addColumn<int>("diaSemana");
        QTest::addColumn<QDate>("esperado");
        QTest::newRow("second Tuesday") << 3 << 2006 << 2 << 2 << QDate(2006, 3, 14);
        QTest::newRow("second Tuesday, April") << 4 << 2006 << 2 << 2 << QDate(2006, 4, 11);
        QTest::newRow("last Friday on the 31st") << 3 << 2006 << 5 << 5 << QDate(2006, 3, 31);
        QTest::newRow("last Sunday of December") << 12 << 2006 << 5 << 7 << QDate(2006, 12, 31);
        QTest::newRow("last Monday, four in the month")
            << 2 << 2006 << 5 << 1 << QDate(2006, 2, 27);
        QTest::newRow("week out of range is the first") << 3 << 2006 << 0 << 5 << QDate(2006, 3, 3);
        QTest::newRow("fourth Wednesday, month starting Wednesday")
            << 3 << 2006 << 4 << 3 << QDate(2006, 3, 22);
    }
    void dayWeekOfMonth() {
        QFETCH(int, mes);
        QFETCH(int, anio);
        QFETCH(int, semana);
        QFETCH(int, diaSemana);
        QFETCH(QDate, esperado);
        QCOMPARE(clsNextTarea::DayWeekOfMonth(int16_t(mes), int16_t(anio), int16_t(semana),
                                              int16_t(diaSemana)),
                 esperado);
    }

    // Day first whatever the locale, and no day the month lacks.
    void dayFirstTexts_data() {
        QTest::addColumn<QString>("texto");
        QTest::addColumn<QDateTime>("esperado");  // invalid: no date
        QTest::newRow("day only") << u"01/02/2006"_s << en("01/02/2006 00:00:00");
        QTest::newRow("short fields") << u"1/3/2006 9:05"_s << en("01/03/2006 09:05:00");
        QTest::newRow("leap day") << u"29/02/2008 23:59:59"_s << en("29/02/2008 23:59:59");
        QTest::newRow("31 April") << u"31/04/2006 09:00"_s << QDateTime();
        QTest::newRow("29 February, common year") << u"29/02/2006"_s << QDateTime();
        QTest::newRow("month 13") << u"01/13/2006"_s << QDateTime();
        QTest::newRow("bare times") << u"00:00:00 09:00:00"_s << QDateTime();
        QTest::newRow("two times") << u"15/03/2006 09:00:00 11:00:00"_s << QDateTime();
    }
    void dayFirstTexts() {
        QFETCH(QString, texto);
        QFETCH(QDateTime, esperado);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        auto restaurar = qScopeGuard([] { QLocale::setDefault(QLocale::c()); });
        try {
            const QDateTime leida = clsNextTarea::leerFecha(texto);
            QVERIFY2(esperado.isValid(), qPrintable(leida.toString()));
            QCOMPARE(leida.date(), esperado.date());
            QCOMPARE(leida.time(), esperado.time());
            QCOMPARE(clsNextTarea::leerFecha(clsNextTarea::textoFecha(leida)), leida);
        } catch (const FechaNoValida&) {
            QVERIFY(!esperado.isValid());
        }
    }

    // One object serves many rows: what a calculation doesn't assign is
    // what the row before left.
    void resultsCarryOverFromTheRowBefore() {
        Programa::diaDelMes(20).guardar(1);
        Programa::diaDelMes(31).guardar(2);
        Programa inactiva = Programa::diaria(1);
        inactiva.activa = false;
        inactiva.ultima = QDateTime(QDate(2006, 4, 1), QTime(9, 0));
        inactiva.guardar(3);
        FixedClock clock(en("10/04/2006 10:00:30"));
        clsNextTarea t;
        QCOMPARE(t.HayTarea(), false);
        QCOMPARE(t.FechaProximaTarea(), clsNextTarea::fechaCero());
        QCOMPARE(t.UltimaTarea(), clsNextTarea::fechaCero());

        t.setCodigo(1);
        t.CalcularProximaTarea();
        QCOMPARE(resultado(t), u"20/04/2006 09:00:00"_s);
        QCOMPARE(t.UltimaTarea(), QDateTime(QDate(1900, 1, 1), QTime(0, 0)));

        // Day 31 in April fails after the end was checked: true stands, the
        // date is the other row's.
        t.setCodigo(2);
        QVERIFY_THROWS_EXCEPTION(FechaNoValida, t.CalcularProximaTarea());
        QCOMPARE(resultado(t), u"20/04/2006 09:00:00"_s);

        // A row whose schedule is off is no row: false, the date kept, and
        // its last run not read.
        t.setCodigo(3);
        t.CalcularProximaTarea();
        QCOMPARE(t.HayTarea(), false);
        QCOMPARE(t.FechaProximaTarea(), QDateTime(QDate(2006, 4, 20), QTime(9, 0)));
        QCOMPARE(t.UltimaTarea(), QDateTime(QDate(1900, 1, 1), QTime(0, 0)));
    }

    // To the day, a row with no run still takes the time of Hora: on an
    // object that has held no date that is no date at all.
    void toTheDayWithNothingHeldFails() {
        Programa::diaria(1).hasta({2006, 1, 31}).guardar(1);
        FixedClock clock(en(kAhora));
        clsNextTarea t;
        t.setCodigo(1);
        QVERIFY_THROWS_EXCEPTION(FechaNoValida, t.CalcularProximaTarea2());
        QCOMPARE(t.HayTarea(), false);
    }
};

QUELMO_TEST_MAIN(TestNextTarea)
#include "test_clsNextTarea.moc"

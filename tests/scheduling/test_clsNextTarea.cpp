// When a scheduled message runs next: every kind of recurrence, to the
// minute and to the day, at the month's end and across rows.
#include "TestSupport.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "scheduling/clsNextTarea.h"

using namespace Qt::StringLiterals;
using prueba::en;
using prueba::programa;

namespace {
// case | columns over a daily 09:00 schedule | clock | 1 to the minute, 2 to
// the day | next run, "-" none, "fallo" a date the month lacks.
// 15/03/2006 is a Wednesday.
const auto kCasos =
    uR"(
once, this minute       | Periodicidad=0 FechaIni=2006-03-15 Hora=10:00  | 15/03/2006 10:00:30 | 1 | 15/03/2006 10:00
once, minute gone       | Periodicidad=0 FechaIni=2006-03-15 Hora=10:00  | 15/03/2006 10:01:30 | 1 | -
once, yesterday         | Periodicidad=0 FechaIni=2006-03-14 Hora=10:00  | 15/03/2006 10:00:30 | 1 | -
daily 3, passed         | Periodicidad=1 Cada=3                          | 15/03/2006 10:00:30 | 1 | 18/03/2006 09:00
daily 3, next morning   | Periodicidad=1 Cada=3                          | 16/03/2006 08:00:00 | 1 | 16/03/2006 09:00
daily 3, later today    | Periodicidad=1 Cada=3 Hora=11:00               | 15/03/2006 10:00:30 | 1 | 15/03/2006 11:00
daily, starts later     | Periodicidad=1 FechaIni=2006-03-20             | 15/03/2006 10:00:30 | 1 | 20/03/2006 09:00
daily, ended today      | Periodicidad=1 FechaFin=2006-03-15             | 15/03/2006 10:00:30 | 1 | -
daily, ends tomorrow    | Periodicidad=1 FechaFin=2006-03-16 Hora=11:00  | 15/03/2006 10:00:30 | 1 | 15/03/2006 11:00
daily, run on end day   | Periodicidad=1 FechaFin=2006-03-16             | 15/03/2006 10:00:30 | 1 | -
weekly Mon+Fri          | Periodicidad=2 DiasSemana=17                   | 15/03/2006 10:00:30 | 1 | 17/03/2006 09:00
weekly Wed, passed      | Periodicidad=2 DiasSemana=4                    | 15/03/2006 10:00:30 | 1 | 22/03/2006 09:00
weekly Wed, this minute | Periodicidad=2 DiasSemana=4 Hora=10:00         | 15/03/2006 10:00:30 | 1 | 15/03/2006 10:00
weekly Wed, minute gone | Periodicidad=2 DiasSemana=4 Hora=10:00         | 15/03/2006 10:01:30 | 1 | 22/03/2006 10:00
weekly, starts next Wed | Periodicidad=2 DiasSemana=1 FechaIni=2006-03-22 | 15/03/2006 10:00:30 | 1 | 27/03/2006 09:00
weekly, no day left     | Periodicidad=2 DiasSemana=4 FechaFin=2006-03-20 | 15/03/2006 10:00:30 | 1 | -
day 20                  | Periodicidad=3 MensualEsDia=1 MensualDiaMes=20 | 15/03/2006 10:00:30 | 1 | 20/03/2006 09:00
day 15, passed          | Periodicidad=3 MensualEsDia=1 MensualDiaMes=15 | 15/03/2006 10:00:30 | 1 | 15/04/2006 09:00
day 15, later today     | Periodicidad=3 MensualEsDia=1 MensualDiaMes=15 Hora=11:00 | 15/03/2006 10:00:30 | 1 | 15/03/2006 11:00
day 10                  | Periodicidad=3 MensualEsDia=1 MensualDiaMes=10 | 15/03/2006 10:00:30 | 1 | 10/04/2006 09:00
day 31 into February    | Periodicidad=3 MensualEsDia=1 MensualDiaMes=31 | 31/01/2006 12:00:00 | 1 | 28/02/2006 09:00
day 31 in April         | Periodicidad=3 MensualEsDia=1 MensualDiaMes=31 | 10/04/2006 10:00:30 | 1 | fallo
day 30 in February      | Periodicidad=3 MensualEsDia=1 MensualDiaMes=30 | 10/02/2006 10:00:30 | 2 | fallo
second Tuesday, passed  | Periodicidad=3 MensualNumSemana=2 MensualDiaSemana=2 | 15/03/2006 10:00:30 | 1 | 11/04/2006 09:00
last Friday             | Periodicidad=3 MensualNumSemana=5 MensualDiaSemana=5 | 15/03/2006 10:00:30 | 1 | 31/03/2006 09:00
second Tuesday, 00:00   | Periodicidad=3 MensualNumSemana=2 MensualDiaSemana=2 Hora=00:00 | 01/03/2006 10:00:30 | 1 | 13/03/2006 00:00
yearly 20/3             | Periodicidad=4 AnualDia=20 AnualMes=3          | 15/03/2006 10:00:30 | 1 | 20/03/2006 09:00
yearly 15/3, passed     | Periodicidad=4 AnualDia=15 AnualMes=3          | 15/03/2006 10:00:30 | 1 | 15/03/2007 09:00
yearly 1/3              | Periodicidad=4 AnualDia=1 AnualMes=3           | 15/03/2006 10:00:30 | 1 | 01/03/2007 09:00
yearly 29/2, 2006       | Periodicidad=4 AnualDia=29 AnualMes=2          | 15/03/2006 10:00:30 | 1 | fallo
yearly 31/6             | Periodicidad=4 AnualDia=31 AnualMes=6          | 15/03/2006 20:00:00 | 2 | fallo
yearly 1/3 from 2008    | Periodicidad=4 AnualDia=1 AnualMes=3 FechaIni=2008-06-10 | 15/03/2006 10:00:30 | 1 | 01/03/2007 09:00
day: daily keeps today  | Periodicidad=1                                 | 15/03/2006 20:00:00 | 2 | 15/03/2006 09:00
day: daily 2, tomorrow  | Periodicidad=1 Cada=2                          | 15/03/2006 20:00:00 | 2 | 16/03/2006 09:00
day: weekly Wed         | Periodicidad=2 DiasSemana=4                    | 15/03/2006 20:00:00 | 2 | 15/03/2006 09:00
day: weekly Tue+Thu     | Periodicidad=2 DiasSemana=10                   | 15/03/2006 20:00:00 | 2 | 16/03/2006 09:00
day: day 15             | Periodicidad=3 MensualEsDia=1 MensualDiaMes=15 Hora=11:00 | 15/03/2006 20:00:00 | 2 | 15/03/2006 11:00
day: day 14             | Periodicidad=3 MensualEsDia=1 MensualDiaMes=14 | 15/03/2006 20:00:00 | 2 | 14/04/2006 09:00
day: third Wed today    | Periodicidad=3 MensualNumSemana=3 MensualDiaSemana=3 | 15/03/2006 20:00:00 | 2 | 18/04/2006 09:00
day: third Wed, on Tue  | Periodicidad=3 MensualNumSemana=3 MensualDiaSemana=3 | 14/03/2006 20:00:00 | 2 | 14/03/2006 09:00
day: yearly today       | Periodicidad=4 AnualDia=15 AnualMes=3          | 15/03/2006 20:00:00 | 2 | 15/03/2006 09:00
)"_s;

QString resultado(const clsNextTarea& t) {
    return t.HayTarea() ? t.FechaProximaTarea().toString(u"dd/MM/yyyy HH:mm"_s) : u"-"_s;
}
}  // namespace

class TestNextTarea : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void initTestCase() {
        // Dates go day first whatever the locale says.
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        world.baseNueva(u"calc.db"_s);
    }
    void init() { Conexion().exec(u"DELETE FROM Automaticos"_s); }

    void nextRun_data() {
        QTest::addColumn<QString>("columnas");
        QTest::addColumn<QString>("reloj");
        QTest::addColumn<bool>("alDia");
        QTest::addColumn<QString>("esperado");
        for (const QString& linea : kCasos.split(u'\n', Qt::SkipEmptyParts)) {
            const QStringList c = linea.split(u'|');
            QTest::newRow(qPrintable(c[0].trimmed()))
                << c[1] << c[2].trimmed() << (c[3].trimmed() == u"2"_s) << c[4].trimmed();
        }
    }
    void nextRun() {
        QFETCH(QString, columnas);
        QFETCH(QString, reloj);
        QFETCH(bool, alDia);
        QFETCH(QString, esperado);
        programa(7, columnas);
        RelojFijo clock(en(reloj));
        clsNextTarea t;
        t.setCodigo(7);
        try {
            alDia ? t.CalcularProximaTarea2() : t.CalcularProximaTarea();
            QCOMPARE(resultado(t), esperado);
        } catch (const FechaNoValida& e) {
            QCOMPARE(u"fallo"_s, esperado);
            QCOMPARE(e.number(), int(ErrNum::TypeMismatch));
        }
    }

    void dayWeekOfMonth_data() {
        QTest::addColumn<QList<int>>("mesAnioSemanaDia");
        QTest::addColumn<QDate>("esperado");
        QTest::newRow("2nd Tue") << QList<int>{3, 2006, 2, 2} << QDate(2006, 3, 14);
        QTest::newRow("2nd Tue, April") << QList<int>{4, 2006, 2, 2} << QDate(2006, 4, 11);
        QTest::newRow("last Fri on the 31st") << QList<int>{3, 2006, 5, 5} << QDate(2006, 3, 31);
        QTest::newRow("last Sun, December") << QList<int>{12, 2006, 5, 7} << QDate(2006, 12, 31);
        QTest::newRow("last Mon, four of them") << QList<int>{2, 2006, 5, 1} << QDate(2006, 2, 27);
        QTest::newRow("week 0 is the first") << QList<int>{3, 2006, 0, 5} << QDate(2006, 3, 3);
    }
    void dayWeekOfMonth() {
        QFETCH(QList<int>, mesAnioSemanaDia);
        QFETCH(QDate, esperado);
        const auto& a = mesAnioSemanaDia;
        QCOMPARE(clsNextTarea::DayWeekOfMonth(int16_t(a[0]), int16_t(a[1]), int16_t(a[2]),
                                              int16_t(a[3])),
                 esperado);
    }

    // One object serves many rows: what a calculation doesn't assign is
    // what the row before left.
    void resultsCarryOverFromTheRowBefore() {
        programa(1, u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=20"_s);
        programa(2, u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=31"_s);
        programa(3, u"TareaProgramada=0"_s);
        RelojFijo clock(en(u"10/04/2006 10:00:30"_s));
        clsNextTarea t;
        QCOMPARE(t.FechaProximaTarea(), clsNextTarea::fechaCero());
        t.setCodigo(1);
        t.CalcularProximaTarea();
        QCOMPARE(resultado(t), u"20/04/2006 09:00"_s);
        QCOMPARE(t.UltimaTarea(), en(u"01/01/1900 00:00"_s));
        // No 31 April: the end was checked before, the date is row 1's.
        t.setCodigo(2);
        QVERIFY_THROWS_EXCEPTION(FechaNoValida, t.CalcularProximaTarea());
        QCOMPARE(resultado(t), u"20/04/2006 09:00"_s);
        // A schedule that is off: no run, the date kept.
        t.setCodigo(3);
        t.CalcularProximaTarea();
        QVERIFY(!t.HayTarea());
        QCOMPARE(t.FechaProximaTarea(), en(u"20/04/2006 09:00"_s));
        // To the day, a row without a run still takes the time of Hora: the
        // day held from before, or, on an object that never held a date, no
        // date at all.
        programa(4, u"FechaFin=2006-01-31 Hora=11:00"_s);
        t.setCodigo(4);
        t.CalcularProximaTarea2();
        QVERIFY(!t.HayTarea());
        QCOMPARE(t.FechaProximaTarea(), en(u"20/04/2006 11:00"_s));
        clsNextTarea nueva;
        nueva.setCodigo(4);
        QVERIFY_THROWS_EXCEPTION(FechaNoValida, nueva.CalcularProximaTarea2());
    }
};

QUELMO_TEST_MAIN(TestNextTarea)
#include "test_clsNextTarea.moc"

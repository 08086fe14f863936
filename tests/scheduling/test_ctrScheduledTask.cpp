// The schedule control: its properties as the widgets hold them, the checks
// it makes on the user's input and its panels.
#include "TestSupportGui.h"
#include "scheduling/ctrNumberPick.h"
#include "scheduling/ctrScheduledTask.h"

#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

QDate dia(const QString& texto) {
    return QDate::fromString(texto, u"dd/MM/yyyy"_s);
}

QString marcados(const ctrScheduledTask& c) {
    QStringList t;
    for (const QCheckBox* d : c.chkDay)
        if (d->isChecked()) t << d->text();
    return t.join(u' ');
}

}  // namespace

class TestCtrScheduledTask : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void startsOnTheNextFullHourAndToday() {
        RelojFijo reloj(QDateTime(QDate(2006, 3, 15), QTime(10, 0, 30)));
        ctrScheduledTask c;
        QCOMPARE(c.Hora(), u"11:00"_s);
        QCOMPARE(c.Periodicidad(), 0);
        QCOMPARE(c.p_UnaSolaVez_Fecha(), QDate(2006, 3, 15));
        QCOMPARE(c.p_Fecha_Ini(), QDate(2006, 3, 15));
        QCOMPARE(c.p_Fecha_Fin(), fechaMaxima());
        QCOMPARE(c.p_Anual_Mes(), 3);
        QCOMPARE(c.cmbAnualMes->currentText(), u"Marzo"_s);
        // Names of days and months in Spanish, capitalised.
        QCOMPARE(c.chkDay[2]->text(), u"Miércoles"_s);
        QCOMPARE(c.cmbMesDia->itemText(6), u"Domingo"_s);
        QCOMPARE(c.cmbTipoTask->itemText(3), u"Mesualmente"_s);
        QCOMPARE(c.cmbMesSemana->itemText(2), u"tercer"_s);
        QVERIFY(!c.dpFechaFin->isEnabled());
    }

    void weekdayBitsBothWays_data() {
        QTest::addColumn<int>("antes");
        QTest::addColumn<int>("escrito");
        QTest::addColumn<QString>("dias");
        QTest::newRow("65: Monday and Sunday, the rest unchecked")
            << 127 << 65 << u"Lunes Domingo"_s;
        QTest::newRow("64: Sunday alone") << 1 << 64 << u"Domingo"_s;
        QTest::newRow("17: Monday and Friday") << 0 << 17 << u"Lunes Viernes"_s;
        QTest::newRow("127: every day")
            << 0 << 127 << u"Lunes Martes Miércoles Jueves Viernes Sábado Domingo"_s;
    }
    void weekdayBitsBothWays() {
        QFETCH(int, antes);
        QFETCH(int, escrito);
        InterfazGuionada ui;
        ctrScheduledTask c;
        c.setP_Semanal_Dias(int16_t(antes));
        c.setP_Semanal_Dias(int16_t(escrito));
        QTEST(marcados(c), "dias");
        QCOMPARE(c.p_Semanal_Dias(), escrito);
        QVERIFY(ui.boxes.isEmpty());
    }

    void theOnlyDayCannotBeUnchecked_data() {
        QTest::addColumn<int>("dias");
        QTest::addColumn<int>("clic");
        QTest::addColumn<int>("despues");
        QTest::addColumn<bool>("mensaje");
        QTest::newRow("the only day") << 4 << 2 << 4 << true;
        QTest::newRow("one of two") << 5 << 2 << 1 << false;
        QTest::newRow("checking another") << 4 << 6 << 68 << false;
    }
    void theOnlyDayCannotBeUnchecked() {
        QFETCH(int, dias);
        QFETCH(int, clic);
        QFETCH(int, despues);
        QFETCH(bool, mensaje);
        InterfazGuionada ui;
        ctrScheduledTask c;
        c.setPeriodicidad(2);
        c.setP_Semanal_Dias(int16_t(dias));
        QSignalSpy cambios(&c, &ctrScheduledTask::Change);
        c.chkDay[clic]->click();
        QCOMPARE(c.p_Semanal_Dias(), despues);
        QCOMPARE(cambios.count(), 1);
        QCOMPARE(prueba::cajas(ui),
                 mensaje
                     ? QStringList{prueba::caja(
                           Msg::Critical, u"Debe de seleccionar al menos un día de la semana"_s)}
                     : QStringList());
        if (mensaje) QCOMPARE(ui.boxes[0].title, u"Error - Entrada de datos"_s);
    }

    void endDateAndItsBox_data() {
        QTest::addColumn<QDate>("escrito");
        QTest::addColumn<bool>("marcado");
        QTest::addColumn<QDate>("enElSelector");
        QTest::addColumn<QDate>("leido");
        const QDate hoy(2006, 3, 15);
        QTest::newRow("the maximum date: no end") << fechaMaxima() << false << hoy << fechaMaxima();
        QTest::newRow("any other date checks the box")
            << QDate(2006, 6, 30) << true << QDate(2006, 6, 30) << QDate(2006, 6, 30);
        QTest::newRow("a past end is taken as it is, without a word")
            << QDate(2005, 1, 1) << true << QDate(2005, 1, 1) << QDate(2005, 1, 1);
        QTest::newRow("30/12/9999 is an end")
            << QDate(9999, 12, 30) << true << QDate(9999, 12, 30) << QDate(9999, 12, 30);
    }
    void endDateAndItsBox() {
        QFETCH(QDate, escrito);
        QFETCH(bool, marcado);
        QFETCH(QDate, enElSelector);
        QFETCH(QDate, leido);
        RelojFijo reloj(QDateTime(QDate(2006, 3, 15), QTime(10, 0)));
        InterfazGuionada ui;
        ctrScheduledTask c;
        c.setP_Fecha_Fin(QDate(2006, 4, 1));
        c.setP_Fecha_Fin(escrito);
        QCOMPARE(c.chkFechaFin->isChecked(), marcado);
        QCOMPARE(c.p_Fecha_Es_Fin(), marcado);
        QCOMPARE(c.dpFechaFin->isEnabled(), marcado);
        QCOMPARE(c.dpFechaFin->date(), enElSelector);
        QCOMPARE(c.p_Fecha_Fin(), leido);
        QVERIFY(ui.boxes.isEmpty());
    }

    void userDatesAreChecked_data() {
        QTest::addColumn<QString>("que");
        QTest::addColumn<QDate>("elegida");
        QTest::addColumn<QDate>("queda");
        QTest::addColumn<QString>("mensaje");
        const QString antesInicio =
            u"La fecha seleccionada, no debe ser anterior a la fecha de inicio."_s;
        const QString antesHoy =
            u"La fecha seleccionada, no debe ser anterior a la fecha actual."_s;
        // The start is 20/03/2006, today 15/03/2006.
        QTest::newRow("end before the start")
            << u"fin"_s << dia(u"18/03/2006"_s) << dia(u"20/03/2006"_s) << antesInicio;
        QTest::newRow("end after the start")
            << u"fin"_s << dia(u"25/03/2006"_s) << dia(u"25/03/2006"_s) << QString();
        QTest::newRow("start after the end drags it along")
            << u"inicio"_s << dia(u"01/04/2006"_s) << dia(u"01/04/2006"_s) << QString();
        QTest::newRow("a start in the past is accepted")
            << u"inicio"_s << dia(u"01/01/2006"_s) << dia(u"22/03/2006"_s) << QString();
        QTest::newRow("checking the end box keeps the end after the start")
            << u"casilla"_s << QDate() << dia(u"20/03/2006"_s) << QString();
        QTest::newRow("calendar before today")
            << u"calendario"_s << dia(u"14/03/2006"_s) << dia(u"15/03/2006"_s) << antesHoy;
        QTest::newRow("calendar after today")
            << u"calendario"_s << dia(u"20/03/2006"_s) << dia(u"20/03/2006"_s) << QString();
    }
    void userDatesAreChecked() {
        QFETCH(QString, que);
        QFETCH(QDate, elegida);
        QFETCH(QDate, queda);
        QFETCH(QString, mensaje);
        RelojFijo reloj(QDateTime(QDate(2006, 3, 15), QTime(10, 0)));
        InterfazGuionada ui;
        ctrScheduledTask c;
        c.setP_Fecha_Ini(QDate(2006, 3, 20));
        c.setP_Fecha_Fin(que == u"casilla" ? fechaMaxima() : QDate(2006, 3, 22));
        QSignalSpy cambios(&c, &ctrScheduledTask::Change);
        if (que == u"fin") {
            c.dpFechaFin->setDate(elegida);
            QCOMPARE(c.p_Fecha_Fin(), queda);
        } else if (que == u"casilla") {
            c.chkFechaFin->click();
            QVERIFY(c.dpFechaFin->isEnabled());
            QCOMPARE(c.p_Fecha_Fin(), queda);
        } else if (que == u"inicio") {
            c.dpFechaIni->setDate(elegida);
            QCOMPARE(c.p_Fecha_Fin(), queda);
        } else {
            c.mvFecha->setSelectedDate(elegida);
            QCOMPARE(c.p_UnaSolaVez_Fecha(), queda);
        }
        QCOMPARE(cambios.count(), 1);
        QCOMPARE(ui.boxes.size(), mensaje.isEmpty() ? 0 : 1);
        if (!mensaje.isEmpty())
            QCOMPARE(ui.boxes[0].title + u' ' + ui.boxes[0].text,
                     u"Error - Entrada de datos "_s + mensaje);
    }

    void numberPickBounds_data() {
        QTest::addColumn<QString>("inicial");
        QTest::addColumn<QString>("teclas");  // typed at the end; "+"/"-" spin
        QTest::addColumn<QString>("texto");
        QTest::addColumn<int>("cambios");
        QTest::newRow("150 in 1..100 becomes 100") << u""_s << u"150"_s << u"100"_s << 3;
        QTest::newRow("0 in 1..100 becomes 1") << u""_s << u"0"_s << u"1"_s << 1;
        QTest::newRow("letters and backspace are swallowed") << u"5"_s << u"a\b-x"_s << u"4"_s << 1;
        QTest::newRow("spin up at the top does nothing") << u"100"_s << u"+"_s << u"100"_s << 0;
        QTest::newRow("spin down at the bottom does nothing") << u"1"_s << u"-"_s << u"1"_s << 0;
        QTest::newRow("spin up") << u"7"_s << u"++"_s << u"9"_s << 2;
        QTest::newRow("spin on an empty text does nothing") << u""_s << u"+"_s << u""_s << 0;
    }
    void numberPickBounds() {
        QFETCH(QString, inicial);
        QFETCH(QString, teclas);
        QFETCH(int, cambios);
        ctrNumberPick n;
        n.setMinValue(1);
        n.setMaxValue(100);
        n.setValor(inicial);
        QSignalSpy spy(&n, &ctrNumberPick::Change);
        for (QChar t : teclas) {
            if (t == u'+')
                n.arriba->click();
            else if (t == u'-')
                n.abajo->click();
            else if (t == u'\b')
                QTest::keyClick(n.txtNumber, Qt::Key_Backspace);
            else {
                n.txtNumber->end(false);
                QTest::keyClicks(n.txtNumber, QString(t));
            }
        }
        QTEST(n.Valor(), "texto");
        QCOMPARE(spy.count(), cambios);
    }

    void panelsByKind_data() {
        QTest::addColumn<int>("tipo");
        for (int tipo = 0; tipo < 5; ++tipo) QTest::addRow("%d", tipo) << tipo;
    }
    void panelsByKind() {
        QFETCH(int, tipo);
        ctrScheduledTask c;
        c.show();
        c.cmbTipoTask->setCurrentIndex(tipo == 0 ? 4 : 0);
        QSignalSpy cambios(&c, &ctrScheduledTask::Change);
        c.cmbTipoTask->setCurrentIndex(tipo);
        QCOMPARE(cambios.count(), 1);
        for (int i = 0; i < 5; ++i) QCOMPARE(c.frame1[i]->isVisible(), i == tipo);
        QCOMPARE(c.frameFechaIniFechaFin->isVisible(), tipo != 0);
    }
};

QUELMO_GUI_TEST_MAIN(TestCtrScheduledTask)
#include "test_ctrScheduledTask.moc"

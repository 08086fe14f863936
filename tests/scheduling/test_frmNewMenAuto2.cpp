// The scheduled message editor and its two pickers: what a row loads into
// the schedule control and what closing stores, the recipients with their
// texts, and a schedule made on the screen that fires at its minute.
#include "AyudaProgramacion.h"
#include "scheduling/clsNextTarea.h"
#include "scheduling/clsTareasPendientes.h"
#include "scheduling/ctrNumberPick.h"
#include "scheduling/ctrScheduledTask.h"
#include "scheduling/frmNewMenAuto2.h"
#include "scheduling/frmSeleccionMensaje.h"
#include "scheduling/frmSeleccionMensaje2.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimeEdit>
#include <QTimer>
#include <QToolButton>
#include <optional>

using namespace Qt::StringLiterals;
using namespace programacion_prueba;

namespace {

const QStringList kColumnas{u"Periodicidad"_s,     u"Hora"_s,          u"FechaIni"_s,
                            u"FechaFin"_s,         u"Cada"_s,          u"DiasSemana"_s,
                            u"MensualEsDia"_s,     u"MensualDiaMes"_s, u"MensualNumSemana"_s,
                            u"MensualDiaSemana"_s, u"AnualDia"_s,      u"AnualMes"_s};

// The schedule columns of a row as "Column=value", dates as stored.
QString columnasDe(int codigo) {
    const ResultadoConsulta r = bd().query(
        u"SELECT "_s + kColumnas.join(u',') + u" FROM Automaticos WHERE Codigo = ?"_s, {codigo});
    QStringList t;
    for (int c = 0; c < kColumnas.size(); ++c)
        t << kColumnas[c] + u'=' + textoDe(r.value(0, c)).remove(u" 00:00:00"_s);
    return t.join(u' ');
}

// What the control shows, property by property.
QString propiedadesDe(const ctrScheduledTask* c) {
    const auto d = [](const QDate& x) { return x.toString(u"dd/MM/yyyy"_s); };
    return u"tipo=%1 hora=%2 fecha=%3 ini=%4 fin=%5 diaria=%6 semanal=%7 dias=%8 esdia=%9 "
           u"diames=%10 semana=%11 diasemana=%12 anual=%13/%14"_s.arg(c->Periodicidad())
               .arg(c->Hora(), d(c->p_UnaSolaVez_Fecha()), d(c->p_Fecha_Ini()), d(c->p_Fecha_Fin()))
               .arg(c->p_Diaria_Cada().value_or(0))
               .arg(c->p_Semanal_Cada().value_or(0))
               .arg(c->p_Semanal_Dias())
               .arg(int(c->p_Mensual_Es_Dia()))
               .arg(c->p_Mensual_Dia_Mes().value_or(0))
               .arg(c->p_Mensual_Num_Semana())
               .arg(c->p_Mensual_dia_Semana())
               .arg(c->p_Anual_Dia().value_or(0))
               .arg(c->p_Anual_Mes());
}

QStringList filas(const frmNewMenAuto2& e) {
    QStringList t;
    const ModeloListado* m = e.ListView1->modelo();
    for (int f = 0; f < m->rowCount(); ++f) t << m->texto(f, 0) + u": "_s + m->texto(f, 1);
    return t;
}

}  // namespace

class TestFrmNewMenAuto2 : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"editor.db"_s);
        contacto(u"0034600000001"_s, u"Ana"_s, 0);
        contacto(u"0034600000002"_s, u"Bea"_s, 1);
        contacto(u"0034600000003"_s, u"Carla"_s, 0);
        lista(0, u"Amigos"_s);
        miembro(u"0034600000001"_s, 0);
        miembro(u"0034600000002"_s, 0);
    }

    // The control takes the kind's own columns, and the label describes it.
    void loadingMapsColumnsOntoTheControl_data() {
        QTest::addColumn<QString>("columnas");
        QTest::addColumn<QString>("propiedades");
        QTest::addColumn<QString>("descripcion");
        // Columns of other kinds hold values that must not reach the control.
        const QString ruido =
            u" Cada=7 DiasSemana=3 MensualDiaMes=9 MensualNumSemana=3 MensualDiaSemana=3 "
            u"AnualDia=11 AnualMes=8"_s;
        const QString desde = u"\nFecha Inicio: 01/01/2006\nFecha Fin: 31/12/9999\n\nHORA:09:00"_s;
        QTest::newRow("once: the day goes to the calendar and the start")
            << u"Periodicidad=0 Hora=10:30 FechaIni=2006-03-20"_s + ruido
            << u"tipo=0 hora=10:30 fecha=20/03/2006 ini=20/03/2006 fin=31/12/9999 diaria=1 "
               u"semanal=1 dias=4 esdia=1 diames=1 semana=1 diasemana=1 anual=1/3"_s
            << u"Una sola vez\n20/03/2006\nHORA:10:30"_s;
        QTest::newRow("daily with an end")
            << u"Periodicidad=1 FechaFin=2006-06-30"_s + ruido
            << u"tipo=1 hora=09:00 fecha=15/03/2006 ini=01/01/2006 fin=30/06/2006 diaria=7 "
               u"semanal=1 dias=4 esdia=1 diames=1 semana=1 diasemana=1 anual=1/3"_s
            << u"Diariamente\nCada 7 día\nFecha Inicio: 01/01/2006\nFecha Fin: 30/06/2006\n\n"
               u"HORA:09:00"_s;
        QTest::newRow("weekly, 101 is Sunday, Saturday, Wednesday and Monday")
            << u"Periodicidad=2 Cada=2 DiasSemana=101 MensualDiaMes=9 AnualDia=11"_s
            << u"tipo=2 hora=09:00 fecha=15/03/2006 ini=01/01/2006 fin=31/12/9999 diaria=1 "
               u"semanal=2 dias=101 esdia=1 diames=1 semana=1 diasemana=1 anual=1/3"_s
            << u"Semanalmente\nCada 2 semana\ncada: Dom Sabado Miercoles Lunes "_s + desde;
        QTest::newRow("monthly, fixed day, begins with a line break")
            << u"Periodicidad=3 MensualEsDia=1"_s + ruido
            << u"tipo=3 hora=09:00 fecha=15/03/2006 ini=01/01/2006 fin=31/12/9999 diaria=1 "
               u"semanal=1 dias=4 esdia=1 diames=9 semana=1 diasemana=1 anual=1/3"_s
            << u"\nMensualmente\ncada 9 de cada mes"_s + desde;
        QTest::newRow("monthly, the third Wednesday reads tercero")
            << u"Periodicidad=3 MensualEsDia=0"_s + ruido
            << u"tipo=3 hora=09:00 fecha=15/03/2006 ini=01/01/2006 fin=31/12/9999 diaria=1 "
               u"semanal=1 dias=4 esdia=0 diames=1 semana=3 diasemana=3 anual=1/3"_s
            << u"\nMensualmente\nEl tercero Miercoles de cada mes."_s + desde;
        QTest::newRow("monthly, the last Sunday")
            << u"Periodicidad=3 MensualEsDia=0 MensualNumSemana=5 MensualDiaSemana=7"_s
            << u"tipo=3 hora=09:00 fecha=15/03/2006 ini=01/01/2006 fin=31/12/9999 diaria=1 "
               u"semanal=1 dias=4 esdia=0 diames=1 semana=5 diasemana=7 anual=1/3"_s
            << u"\nMensualmente\nEl último Domingo de cada mes."_s + desde;
        QTest::newRow("yearly, the month in the locale")
            << u"Periodicidad=4"_s + ruido
            << u"tipo=4 hora=09:00 fecha=15/03/2006 ini=01/01/2006 fin=31/12/9999 diaria=1 "
               u"semanal=1 dias=4 esdia=1 diames=1 semana=1 diasemana=1 anual=11/8"_s
            << u"Anualmente\nDia: 11 Mes:agosto"_s + desde;
    }
    void loadingMapsColumnsOntoTheControl() {
        QFETCH(QString, columnas);
        RelojFijo reloj(en(u"15/03/2006 08:00"_s));
        programa(5, columnas);
        InterfazGuionada ui;
        frmNewMenAuto2 e;
        e.setCodigo(5);
        QTEST(propiedadesDe(e.ctrScheduledTask1), "propiedades");
        QVERIFY(e.optTask[1]->isChecked());
        QVERIFY(e.ctrScheduledTask1->isEnabled());
        QTEST(e.lblTarea->text(), "descripcion");
        QVERIFY(ui.boxes.isEmpty());
    }

    void closingStoresTheKindsOwnColumns_data() {
        QTest::addColumn<QString>("cambios");
        QTest::addColumn<QString>("columnas");
        // The row starts monthly on day 20 with a yearly part and a Cada of 5.
        QTest::newRow("weekly overwrites Cada, keeps monthly and yearly")
            << u"tipo=2 semanal=3 dias=17"_s
            << u"Periodicidad=2 Hora=1899-12-30 09:00:00 FechaIni=2006-01-01 "
               u"FechaFin=9999-12-31 Cada=3 DiasSemana=17 MensualEsDia=1 MensualDiaMes=20 "
               u"MensualNumSemana=2 MensualDiaSemana=2 AnualDia=7 AnualMes=5"_s;
        QTest::newRow("once stores its day as FechaIni")
            << u"tipo=0 fecha=20/03/2006 hora=10:15"_s
            << u"Periodicidad=0 Hora=1899-12-30 10:15:00 FechaIni=2006-03-20 "
               u"FechaFin=9999-12-31 Cada=5 DiasSemana=1 MensualEsDia=1 MensualDiaMes=20 "
               u"MensualNumSemana=2 MensualDiaSemana=2 AnualDia=7 AnualMes=5"_s;
        QTest::newRow("monthly nth weekday leaves the fixed day")
            << u"tipo=3 esdia=0 semana=5 diasemana=7"_s
            << u"Periodicidad=3 Hora=1899-12-30 09:00:00 FechaIni=2006-01-01 "
               u"FechaFin=9999-12-31 Cada=5 DiasSemana=1 MensualEsDia=0 MensualDiaMes=20 "
               u"MensualNumSemana=5 MensualDiaSemana=7 AnualDia=7 AnualMes=5"_s;
        QTest::newRow("yearly with an end")
            << u"tipo=4 anualdia=29 anualmes=2 fin=30/06/2007"_s
            << u"Periodicidad=4 Hora=1899-12-30 09:00:00 FechaIni=2006-01-01 "
               u"FechaFin=2007-06-30 Cada=5 DiasSemana=1 MensualEsDia=1 MensualDiaMes=20 "
               u"MensualNumSemana=2 MensualDiaSemana=2 AnualDia=29 AnualMes=2"_s;
    }
    void closingStoresTheKindsOwnColumns() {
        QFETCH(QString, cambios);
        RelojFijo reloj(en(u"15/03/2006 08:00"_s));
        programa(3,
                 u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=20 MensualNumSemana=2 "
                 u"MensualDiaSemana=2 Cada=5 DiasSemana=1 AnualDia=7 AnualMes=5"_s);
        InterfazGuionada ui;
        frmNewMenAuto2 e;
        e.setCodigo(3);
        ctrScheduledTask* c = e.ctrScheduledTask1;
        for (const QString& par : cambios.split(u' ')) {
            const QString k = par.section(u'=', 0, 0), v = par.section(u'=', 1);
            const int n = v.toInt();
            const QDate d = QDate::fromString(v, u"dd/MM/yyyy"_s);
            if (k == u"tipo") c->cmbTipoTask->setCurrentIndex(n);
            if (k == u"semanal") c->crtNumberPick2->setValor(v);
            if (k == u"dias") c->setP_Semanal_Dias(int16_t(n));
            if (k == u"fecha") c->setP_UnaSolaVez_Fecha(d);
            if (k == u"hora") c->dpHora->setTime(QTime::fromString(v, u"HH:mm"_s));
            if (k == u"esdia") c->Option1[n ? 0 : 1]->click();
            if (k == u"semana") c->cmbMesSemana->setCurrentIndex(n - 1);
            if (k == u"diasemana") c->cmbMesDia->setCurrentIndex(n - 1);
            if (k == u"anualdia") c->crtNumberPickAnualDia->setValor(v);
            if (k == u"anualmes") c->cmbAnualMes->setCurrentIndex(n - 1);
            if (k == u"fin") c->setP_Fecha_Fin(d);
        }
        e.XPButton2->click();
        QTEST(columnasDe(3), "columnas");
        QCOMPARE(cuantos(u"select TareaProgramada from Automaticos where Codigo = 3"_s), 1);
        QVERIFY(ui.boxes.isEmpty());
    }

    // What a field shows when Cerrar acts is what is stored, however Cerrar
    // was reached: the hour and the dates take their value only as their
    // field is left, and a shortcut or Enter leaves none. An emptied number
    // can't be read: Cerrar passes over it and the column keeps its value.
    // Today's run went an hour ago; after the change it is neither sent
    // again nor lost.
    void typedValuesReachTheRowWhateverClosesTheEditor_data() {
        QTest::addColumn<QString>("columnas");
        QTest::addColumn<QString>("campo");
        QTest::addColumn<QString>("tecleado");  // empty: the field emptied
        QTest::addColumn<QString>("cierre");
        QTest::addColumn<QString>("nombreColumna");
        QTest::addColumn<QString>("guardado");
        const QString diaria = u"Periodicidad=1 FechaFin=2006-06-30"_s;
        for (const QString& cierre : {u"Alt+C"_s, u"Enter"_s, u"clic"_s}) {
            QTest::addRow("hour, %s", qPrintable(cierre))
                << diaria << u"dpHora"_s << u"16"_s << cierre << u"Hora"_s
                << u"1899-12-30 16:00:00"_s;
            QTest::addRow("start, %s", qPrintable(cierre))
                << diaria << u"dpFechaIni"_s << u"20"_s << cierre << u"FechaIni"_s
                << u"2006-01-20 00:00:00"_s;
            QTest::addRow("end, %s", qPrintable(cierre))
                << diaria << u"dpFechaFin"_s << u"15"_s << cierre << u"FechaFin"_s
                << u"2006-06-15 00:00:00"_s;
        }
        QTest::newRow("emptied Cada, daily") << u"Periodicidad=1 Cada=3"_s << u"crtNumberPick1"_s
                                             << QString() << u"Alt+C"_s << u"Cada"_s << u"3"_s;
        QTest::newRow("emptied Cada, weekly")
            << u"Periodicidad=2 Cada=2 DiasSemana=8"_s << u"crtNumberPick2"_s << QString()
            << u"Alt+C"_s << u"Cada"_s << u"2"_s;
        QTest::newRow("emptied day of the month")
            << u"Periodicidad=3 MensualEsDia=1 MensualDiaMes=20"_s << u"crtNumberPick3"_s
            << QString() << u"Alt+C"_s << u"MensualDiaMes"_s << u"20"_s;
        QTest::newRow("emptied day of the year")
            << u"Periodicidad=4 AnualDia=7 AnualMes=5"_s << u"crtNumberPickAnualDia"_s << QString()
            << u"Alt+C"_s << u"AnualDia"_s << u"7"_s;
    }
    void typedValuesReachTheRowWhateverClosesTheEditor() {
        QFETCH(QString, columnas);
        QFETCH(QString, campo);
        QFETCH(QString, tecleado);
        QFETCH(QString, cierre);
        QFETCH(QString, nombreColumna);
        QFETCH(QString, guardado);
        const QDateTime ahora = en(u"15/03/2006 10:00:00"_s);
        RelojFijo reloj(ahora);
        programa(7, columnas);
        bd().exec(u"update Automaticos set UltimaTarea = '2006-03-15 09:00:00'"_s);
        InterfazGuionada ui;
        frmNewMenAuto2 e;
        e.setCodigo(7);
        e.tabs->setCurrentIndex(2);
        e.show();
        QVERIFY(QTest::qWaitForWindowActive(&e));
        QWidget* editor = e.ctrScheduledTask1->findChild<QWidget*>(campo);
        if (auto* n = qobject_cast<ctrNumberPick*>(editor)) editor = n->txtNumber;
        editor->setFocus();
        if (tecleado.isEmpty()) {
            QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClick(editor, Qt::Key_Delete);
        }
        QTest::keyClicks(editor, tecleado);
        QCOMPARE(editor->property("text").toString().left(2), tecleado);
        QSignalSpy cerrado(e.XPButton2, &QPushButton::clicked);
        if (cierre == u"Alt+C")
            QTest::keyClick(editor, Qt::Key_C, Qt::AltModifier);
        else if (cierre == u"Enter")
            QTest::keyClick(editor, Qt::Key_Return);
        else
            QTest::mouseClick(e.XPButton2, Qt::LeftButton);
        QTRY_COMPARE(cerrado.count(), 1);
        QCOMPARE(columna(u"select "_s + nombreColumna + u" from Automaticos where Codigo = 7"),
                 QStringList{guardado});
        // The typed change is a change: today's run may go again.
        QCOMPARE(cuantos(u"select count(*) from Automaticos where UltimaTarea is null"_s), 1);
        clsNextTarea t;
        t.setCodigo(7);
        t.CalcularProximaTarea();
        QVERIFY(t.HayTarea() && t.FechaProximaTarea() > ahora);
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 0);
        QVERIFY(ui.boxes.isEmpty());
    }

    void noProgramarKeepsTheSchedule() {
        RelojFijo reloj(en(u"15/03/2006 08:00"_s));
        programa(2, u"Periodicidad=2 Cada=2 DiasSemana=65"_s);
        const QString antes = columnasDe(2);
        {
            frmNewMenAuto2 e;
            e.setCodigo(2);
            e.optTask[0]->click();
            QVERIFY(!e.ctrScheduledTask1->isEnabled());
            QCOMPARE(e.lblTarea->text(), u"No hay ninguna tera programada"_s);
            QCOMPARE(e.lblProximaTarea->text(), u"Programado: no"_s);
            e.XPButton2->click();
        }
        QCOMPARE(cuantos(u"select TareaProgramada from Automaticos where Codigo = 2"_s), 0);
        QCOMPARE(columnasDe(2), antes);
        // Switched on again, the schedule shows as it was.
        frmNewMenAuto2 e;
        e.setCodigo(2);
        QVERIFY(e.optTask[0]->isChecked() && !e.ctrScheduledTask1->isEnabled());
        QCOMPARE(e.lblTarea->text(), u"No hay ninguna tera programada"_s);
        e.optTask[1]->click();
        QCOMPARE(e.ctrScheduledTask1->p_Semanal_Dias(), 65);
        QCOMPARE(e.ctrScheduledTask1->p_Semanal_Cada(), std::optional<int16_t>(2));
        QVERIFY(e.lblTarea->text().startsWith(u"Semanalmente\nCada 2 semana\ncada: Dom Lunes"_s));
    }

    void onlyARealChangeForgetsTheLastRun_data() {
        QTest::addColumn<QString>("cambio");
        QTest::addColumn<bool>("olvidada");
        QTest::newRow("loading alone") << u""_s << false;
        QTest::newRow("switching the option alone") << u"opcion"_s << true;
        QTest::newRow("the name is no change of schedule") << u"nombre"_s << false;
        QTest::newRow("closing without a change") << u"cerrar"_s << false;
    }
    void onlyARealChangeForgetsTheLastRun() {
        QFETCH(QString, cambio);
        QFETCH(bool, olvidada);
        RelojFijo reloj(en(u"15/03/2006 08:00"_s));
        programa(4, u"Periodicidad=1"_s);
        bd().exec(u"update Automaticos set UltimaTarea = '2006-03-14 09:00:00'"_s);
        frmNewMenAuto2 e;
        e.setCodigo(4);
        if (cambio == u"opcion") e.optTask[0]->click();
        if (cambio == u"nombre") e.txtNombre->setText(u"Otro"_s);
        if (cambio == u"cerrar") e.XPButton2->click();
        QCOMPARE(cuantos(u"select count(*) from Automaticos where UltimaTarea is null"_s),
                 olvidada ? 1 : 0);
    }

    void theNextRunFollowsTheEdits() {
        RelojFijo reloj(en(u"15/03/2006 10:00:30"_s));
        programa(1, u"Periodicidad=1 Cada=3"_s);
        frmNewMenAuto2 e;
        e.setCodigo(1);
        QCOMPARE(e.lblProximaTarea->text(), u"Programado: 18/03/2006 09:00:00"_s);
        e.ctrScheduledTask1->dpHora->setTime(QTime(11, 0));
        QCOMPARE(e.lblProximaTarea->text(), u"Programado: 15/03/2006 11:00:00"_s);
        e.ctrScheduledTask1->chkFechaFin->click();
        QCOMPARE(e.lblProximaTarea->text(), u"Programado: Finalizado"_s);
        // Nothing of it was stored.
        QCOMPARE(cuantos(u"select count(*) from Automaticos where FechaFin like '9999%'"_s), 1);
    }

    void aNameOfAnotherRowIsRefused_data() {
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<bool>("rechazado");
        QTest::newRow("another row's name") << u"Clientes"_s << true;
        QTest::newRow("another row's name in other case") << u"CLIENTES"_s << true;
        QTest::newRow("this row's own name") << u"Propio"_s << false;
        QTest::newRow("a new name") << u"Nuevo"_s << false;
    }
    void aNameOfAnotherRowIsRefused() {
        QFETCH(QString, nombre);
        QFETCH(bool, rechazado);
        bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (1,'Clientes'),(2,'Propio')"_s);
        InterfazGuionada ui;
        frmNewMenAuto2 e;
        e.setCodigo(2);
        e.txtNombre->setText(nombre);
        if (!rechazado) elegir({u"Ana"_s}, {}, u"Hola"_s);
        e.cmdAdd->click();
        QTRY_VERIFY(!e.ocupada());
        QCOMPARE(cajas(ui),
                 rechazado ? QStringList{caja(
                                 Msg::Critical,
                                 u"El nombre seleccionado para este Envío Múltiple ya existe..."_s)}
                           : QStringList());
        QCOMPARE(cuantos(u"select count(*) from AboAuto"_s), rechazado ? 0 : 1);
        QCOMPARE(columna(u"select Nombre from Automaticos where Codigo = 2"_s),
                 QStringList{rechazado ? u"Propio"_s : nombre});
    }

    void addingRecipients_data() {
        QTest::addColumn<QStringList>("contactos");
        QTest::addColumn<QStringList>("listas");
        QTest::addColumn<QString>("texto");
        QTest::addColumn<bool>("saludo");
        QTest::addColumn<int>("veces");
        QTest::addColumn<QStringList>("lineas");
        QTest::newRow("a contact twice gives two rows")
            << QStringList{u"Ana"_s} << QStringList{} << u"Hola"_s << false << 2
            << QStringList{u"Ana: Hola"_s, u"Ana: Hola"_s};
        QTest::newRow("the salutation starts with the alias")
            << QStringList{u"Bea"_s, u"Carla"_s} << QStringList{} << u"mañana a las 9"_s << true
            << 1 << QStringList{u"Bea: Bea, mañana a las 9"_s, u"Carla: Carla, mañana a las 9"_s};
        QTest::newRow("a contact also in a chosen list comes once")
            << QStringList{u"Ana"_s} << QStringList{u"Amigos"_s} << u"x"_s << false << 1
            << QStringList{u"Ana: x"_s, u"Bea: x"_s};
        QTest::newRow("blanks and an apostrophe are kept")
            << QStringList{u"Carla"_s} << QStringList{} << u"  l'agenda  "_s << false << 1
            << QStringList{u"Carla:   l'agenda  "_s};
        QTest::newRow("no destinations adds nothing")
            << QStringList{} << QStringList{} << u"Hola"_s << false << 1 << QStringList{};
    }
    void addingRecipients() {
        QFETCH(QStringList, contactos);
        QFETCH(QStringList, listas);
        QFETCH(QString, texto);
        QFETCH(bool, saludo);
        QFETCH(int, veces);
        QFETCH(QStringList, lineas);
        InterfazGuionada ui;
        frmNewMenAuto2 e;
        e.setCodigo(1);
        e.txtNombre->setText(u"Envío Múltiple nº 1"_s);
        for (int i = 0; i < veces; ++i) {
            elegir(contactos, listas, texto, saludo);
            e.cmdAdd->click();
            QTRY_VERIFY(!e.ocupada());
        }
        QCOMPARE(filas(e), lineas);
        // A row not yet stored shows no count until it gets recipients.
        QCOMPARE(
            e.lblContactos->text(),
            lineas.isEmpty() ? QString() : u"Este envío tiene %1 mensaje(s)"_s.arg(lineas.size()));
        QCOMPARE(
            cuantos(u"select count(*) from Automaticos where Nombre = 'Envío Múltiple nº 1'"_s),
            lineas.isEmpty() ? 0 : 1);
        QVERIFY(ui.boxes.isEmpty());
        QCOMPARE(estadoAplicacion().gsDestinos, QString());
    }

    // A list of thousands goes in over turns of the event loop, in one
    // transaction, each member once; the editor takes nothing meanwhile.
    // Closed before it is stored, nothing of it went in and the box says so.
    void aLargeListGoesInWhole_data() { prueba::filasOtroPrograma("stored"); }
    void aLargeListGoesInWhole() {
        QFETCH(bool, ajeno);
        QFETCH(bool, cortar);
        constexpr int kMiembros = 20000;
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO Abonados (Codigo, Alias, Canal) "
            u"SELECT '0034' || (610000000 + i), 'socio ' || i, 0 FROM n"_s,
            {kMiembros - 1});
        lista(1, u"Socios"_s);
        bd().exec(
            u"INSERT INTO AboGrup (Abonado, Grupo) SELECT Codigo, 1 FROM Abonados "
            u"WHERE Alias LIKE 'socio %'"_s);
        const QString ruta = bd().path();
        std::optional<prueba::OtroPrograma> otro = prueba::otroPrograma(ajeno, ruta);
        InterfazGuionada ui;
        frmNewMenAuto2 e;
        e.setCodigo(1);
        e.txtNombre->setText(u"Socios"_s);
        e.show();
        int giros = 0;
        QTimer reloj;
        connect(&reloj, &QTimer::timeout, [&] { giros += bd().retenida() ? 1 : 0; });
        reloj.start(1);
        elegir({u"Ana"_s}, {u"Socios"_s}, u"Hola"_s, true);
        e.cmdAdd->click();
        QVERIFY(e.ocupada());
        QVERIFY(!e.cmdAdd->isEnabled() && !e.XPButton2->isEnabled());
        prueba::dejarPasar(otro, cortar, [&] { return e.ocupada(); });
        QTRY_VERIFY_WITH_TIMEOUT(!e.ocupada(), 30000);
        QVERIFY(e.cmdAdd->isEnabled());
        if (cortar) {
            QCOMPARE(cajas(ui), QStringList{caja(Msg::Critical,
                                                 u"Error en Mantenimiento de Mensajes "
                                                 u"Programados\nLa conexión con la base de datos "
                                                 u"se cerró"_s)});
            TestDb::openShared(ruta);
            QCOMPARE(cuantos(u"select count(*) from AboAuto"_s), 0);
            QCOMPARE(cuantos(u"select count(*) from Automaticos"_s), 0);
            return;
        }
        if (!ajeno) QVERIFY2(giros >= 10, qPrintable(QString::number(giros)));
        QVERIFY(ui.boxes.isEmpty());
        QCOMPARE(cuantos(u"select count(DISTINCT Abonado) from AboAuto JOIN Abonados ON "
                         u"Abonados.Codigo = AboAuto.Abonado WHERE Automatico = 1 AND "
                         u"Mensaje = Alias || ', Hola'"_s),
                 kMiembros + 1);
        QCOMPARE(cuantos(u"select count(*) from AboAuto"_s), kMiembros + 1);
        QCOMPARE(e.ListView1->modelo()->rowCount(), kMiembros + 1);
        QCOMPARE(columna(u"select Nombre from Automaticos"_s), QStringList{u"Socios"_s});
    }

    void pickersRefuseBlankTexts_data() {
        QTest::addColumn<bool>("cambio");  // false: the picker for new recipients
        QTest::addColumn<QString>("texto");
        QTest::addColumn<QString>("mensaje");
        QTest::addColumn<QString>("guardado");
        QTest::newRow("new: blanks only")
            << false << u"   "_s << u"Seleccione un texto para el mensaje"_s << QString();
        QTest::newRow("change: blanks only")
            << true << u"   "_s << u"Escriba un mensaje."_s << u"Hola"_s;
        QTest::newRow("change: ends trimmed, inside kept")
            << true << u"  Nos  vemos "_s << QString() << u"Nos  vemos"_s;
    }
    void pickersRefuseBlankTexts() {
        QFETCH(bool, cambio);
        QFETCH(QString, texto);
        QFETCH(QString, mensaje);
        QFETCH(QString, guardado);
        InterfazGuionada ui;
        frmNewMenAuto2 e;
        e.setCodigo(1);
        elegir({u"Ana"_s}, {}, u"Hola"_s);
        e.cmdAdd->click();
        QTRY_VERIFY(!e.ocupada());
        if (cambio) {
            e.ListView1->seleccionarFila(0);
            alAbrirModal([texto](QDialog* d) {
                auto* t = d->findChild<QPlainTextEdit*>(u"txtMensaje"_s);
                QCOMPARE(t->toPlainText(), u"Hola"_s);
                QCOMPARE(d->findChild<QLabel*>(u"lblCaracteres"_s)->text(), u"(4)"_s);
                t->setPlainText(texto);
                d->findChild<QPushButton*>(u"cmdAdd"_s)->click();
                if (d->isVisible()) d->reject();
            });
            e.XPButton3->click();
        } else {
            elegir({u"Bea"_s}, {}, texto);
            e.cmdAdd->click();
            QTRY_VERIFY(!e.ocupada());
        }
        QCOMPARE(cajas(ui),
                 mensaje.isEmpty()
                     ? QStringList()
                     : QStringList{caja(cambio ? Msg::Exclamation : Msg::Information, mensaje)});
        QCOMPARE(columna(u"select Mensaje from AboAuto order by id_AboAuto"_s),
                 QStringList{cambio ? guardado : u"Hola"_s});
    }

    void removingRecipients_data() {
        QTest::addColumn<QString>("boton");
        QTest::addColumn<int>("respuesta");
        QTest::addColumn<QStringList>("quedan");
        QTest::newRow("the selected one, without a question")
            << u"XPButton1"_s << 0 << QStringList{u"Bea: Hola"_s};
        QTest::newRow("all, yes") << u"cmdDelete"_s << Msg::Yes << QStringList{};
        QTest::newRow("all, no") << u"cmdDelete"_s << Msg::No
                                 << QStringList{u"Ana: Hola"_s, u"Bea: Hola"_s};
    }
    void removingRecipients() {
        QFETCH(QString, boton);
        QFETCH(int, respuesta);
        QFETCH(QStringList, quedan);
        InterfazGuionada ui;
        ui.answers = {respuesta};
        frmNewMenAuto2 e;
        e.setCodigo(1);
        elegir({u"Ana"_s, u"Bea"_s}, {}, u"Hola"_s);
        e.cmdAdd->click();
        QTRY_VERIFY(!e.ocupada());
        e.ListView1->seleccionarFila(0);
        e.findChild<QPushButton*>(boton)->click();
        QCOMPARE(filas(e), quedan);
        QCOMPARE(cuantos(u"select count(*) from AboAuto"_s), quedan.size());
        QCOMPARE(cajas(ui),
                 boton == u"XPButton1"
                     ? QStringList()
                     : QStringList{caja(Msg::YesNo | 32,
                                        u"Esta seguro que desea eliminar todos los Contactos "
                                        u"para este mensaje automático ?"_s)});
    }

    // The lines are the recipients that are contacts, by name from the
    // start (names alike by number), and a header click sorts them; the
    // line chosen is the row removed, whatever the order.
    void theLinesSortAsTheHeadersSay_data() {
        QTest::addColumn<QList<int>>("clics");
        QTest::addColumn<QStringList>("lineas");
        QTest::newRow("opened: by name, names alike by number")
            << QList<int>{}
            << QStringList{u"ana: ñu"_s, u"Ana: Ábaco"_s, u"Bea: mesa"_s, u"Carla: zorro"_s};
        QTest::newRow("name again: descending, names alike as they stood")
            << QList<int>{0}
            << QStringList{u"Carla: zorro"_s, u"Bea: mesa"_s, u"ana: ñu"_s, u"Ana: Ábaco"_s};
        // A click turns the direction round, whichever column it is on.
        QTest::newRow("message: descending")
            << QList<int>{1}
            << QStringList{u"Carla: zorro"_s, u"ana: ñu"_s, u"Bea: mesa"_s, u"Ana: Ábaco"_s};
        QTest::newRow("message twice: accents and case don't count")
            << QList<int>{1, 1}
            << QStringList{u"Ana: Ábaco"_s, u"Bea: mesa"_s, u"ana: ñu"_s, u"Carla: zorro"_s};
    }
    void theLinesSortAsTheHeadersSay() {
        QFETCH(QList<int>, clics);
        QFETCH(QStringList, lineas);
        contacto(u"0034600000000"_s, u"ana"_s, 0);
        bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (1, 'Uno'), (2, 'Dos')"_s);
        // A number that is no contact any more shows nowhere.
        bd().exec(
            u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES "
            u"(1, '0034600000003', 'zorro'), (1, '0034600000001', 'Ábaco'), "
            u"(2, '0034600000002', 'otro envío'), (1, '0034600000000', 'ñu'), "
            u"(1, '0034699999999', 'sin contacto'), (1, '0034600000002', 'mesa')"_s);
        frmNewMenAuto2 e;
        e.setCodigo(1);
        QTRY_VERIFY(!e.ocupada());
        QCOMPARE(e.lblContactos->text(), u"Este envío tiene 4 mensaje(s)"_s);
        for (int c : clics) Q_EMIT e.ListView1->header()->sectionClicked(c);
        QCOMPARE(filas(e), lineas);
        e.ListView1->seleccionarFila(int(lineas.indexOf(u"Bea: mesa"_s)));
        e.XPButton1->click();
        QTRY_VERIFY(!e.ocupada());
        lineas.removeOne(u"Bea: mesa"_s);
        QCOMPARE(filas(e), lineas);
        QCOMPARE(e.lblContactos->text(), u"Este envío tiene 3 mensaje(s)"_s);
        QCOMPARE(
            columna(u"select Mensaje from AboAuto order by id_AboAuto"_s),
            (QStringList{u"zorro"_s, u"Ábaco"_s, u"otro envío"_s, u"ñu"_s, u"sin contacto"_s}));
    }

    void aRowThatDoesNotExistShowsNoSchedule() {
        frmNewMenAuto2 e;
        e.setCodigo(9);
        QCOMPARE(e.lblTarea->text(), u"No hay ninguna tarea programada"_s);
        QVERIFY(e.optTask[0]->isChecked() && !e.ctrScheduledTask1->isEnabled());
        QCOMPARE(e.tabs->currentIndex(), 0);
        e.XPButton2->click();
        QCOMPARE(cuantos(u"select count(*) from Automaticos"_s), 0);
    }

    // A daily multi-send made on the screen one minute ahead goes out at
    // the tick after that minute, each recipient with its own text.
    void aScheduleMadeOnTheScreenFires() {
        RelojFijo reloj(en(u"15/03/2006 10:00:30"_s));
        InterfazGuionada ui;
        {
            frmNewMenAuto2 e;
            e.setCodigo(1);
            e.txtNombre->setText(u"Envío Múltiple nº 1"_s);
            elegir({u"Ana"_s, u"Bea"_s}, {}, u"Buenos días"_s, true);
            e.cmdAdd->click();
            QTRY_VERIFY(!e.ocupada());
            e.ListView1->seleccionarFila(1);
            alAbrirModal([](QDialog* d) {
                d->findChild<QPlainTextEdit*>(u"txtMensaje"_s)->setPlainText(u"Para Bea"_s);
                d->findChild<QPushButton*>(u"cmdAdd"_s)->click();
            });
            e.XPButton3->click();
            e.tabs->setCurrentIndex(2);
            e.optTask[1]->click();
            ctrScheduledTask* c = e.ctrScheduledTask1;
            c->cmbTipoTask->setCurrentIndex(1);
            c->dpHora->setTime(QTime(10, 1));
            QCOMPARE(e.lblProximaTarea->text(), u"Programado: 15/03/2006 10:01:00"_s);
            e.XPButton2->click();
        }
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 0);
        reloj.set(en(u"15/03/2006 10:01:10"_s));
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 1);
        QCOMPARE(
            columna(u"select abonado || ' ' || mensaje || ' ' || canal from envios "
                    u"order by abonado"_s),
            (QStringList{u"0034600000001 Ana, Buenos días 0"_s, u"0034600000002 Para Bea 1"_s}));
        reloj.set(en(u"15/03/2006 10:01:40"_s));
        QCOMPARE(prueba::esperar(clsTareasPendientes::ReLoad()), 0);
        QVERIFY(ui.boxes.isEmpty());
    }
};

QUELMO_GUI_TEST_MAIN(TestFrmNewMenAuto2)
#include "test_frmNewMenAuto2.moc"

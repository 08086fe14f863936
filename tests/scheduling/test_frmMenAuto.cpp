// The list of multi-sends: what each line shows of its schedule, adding
// with the proposed name, editing, deleting, and the entries that open it.
#include "AyudaProgramacion.h"
#include "scheduling/ProximasTareas.h"
#include "scheduling/clsTareasPendientes.h"
#include "scheduling/frmMenAuto.h"
#include "scheduling/frmNewMenAuto2.h"

#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;
using namespace programacion_prueba;

namespace {

QStringList lineas(const frmMenAuto& p) {
    QStringList t;
    const ModeloListado* m = p.ListView1->modelo();
    for (int f = 0; f < m->rowCount(); ++f) t << m->fila(f).join(u" | "_s);
    return t;
}

// The stored next runs worked out, as the first tick after the open does.
void alDia() {
    ProximasTareas::ponerAlDia();
    while (ProximasTareas::repasadoHasta()) clsTareasPendientes().Repasar();
}

void recipiente(int automatico, const QString& numero) {
    bd().exec(u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES (?, ?, 'x')"_s,
              {automatico, numero});
}

}  // namespace

class TestFrmMenAuto : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"lista.db"_s);
        contacto(u"0034600000001"_s, u"Ana"_s, 0);
    }

    void linesShowNextAndLastRun_data() {
        QTest::addColumn<QString>("columnas");
        QTest::addColumn<QString>("ultima");
        QTest::addColumn<QString>("linea");
        QTest::newRow("never run")
            << u"Periodicidad=1"_s << QString() << u"R | 2 | 15/03/2006 11:00:00 | nunca"_s;
        QTest::newRow("run before") << u"Periodicidad=1"_s << u"2006-03-14 11:00:00"_s
                                    << u"R | 2 | 15/03/2006 11:00:00 | 14/03/2006 11:00:00"_s;
        QTest::newRow("ended") << u"Periodicidad=1 FechaFin=2006-03-10"_s
                               << u"2006-03-09 11:00:00"_s << u"R | 2 | Finalizado | "_s;
        QTest::newRow("once, passed")
            << u"Periodicidad=0 FechaIni=2006-03-14"_s << QString() << u"R | 2 | Finalizado | "_s;
        QTest::newRow("switched off, though sent before")
            << u"Periodicidad=1 TareaProgramada=0"_s << u"2006-03-14 11:00:00"_s
            << u"R | 2 | no | "_s;
        QTest::newRow("a day its month lacks shows no run")
            << u"Periodicidad=4 AnualDia=29 AnualMes=2"_s << QString() << u"R | 2 |  | "_s;
    }
    void linesShowNextAndLastRun() {
        QFETCH(QString, columnas);
        QFETCH(QString, ultima);
        QFETCH(QString, linea);
        RelojFijo reloj(en(u"15/03/2006 10:00:30"_s));
        programa(7, u"Hora=11:00 "_s + columnas);
        bd().exec(u"update Automaticos set Nombre = 'R', UltimaTarea = ?"_s,
                  {ultima.isEmpty() ? QVariant() : QVariant(ultima)});
        recipiente(7, u"0034600000001"_s);
        recipiente(7, u"0034600000001"_s);
        bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (8, 'Sin programa')"_s);
        // Opened before the next runs are worked out: it shows them once
        // they are.
        frmMenAuto p;
        QTRY_COMPARE(lineas(p), (QStringList{linea, u"Sin programa | 0 | no | "_s}));
    }

    void addProposesTheNextCode_data() {
        QTest::addColumn<QList<int>>("codigos");
        QTest::addColumn<bool>("conContactos");
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<int>("filas");
        QTest::newRow("the first ever is 1")
            << QList<int>{} << true << u"Envío Múltiple nº 1"_s << 1;
        QTest::newRow("highest plus one")
            << QList<int>{2, 9} << true << u"Envío Múltiple nº 10"_s << 3;
        QTest::newRow("closed without recipients stores nothing")
            << QList<int>{4} << false << u"Envío Múltiple nº 5"_s << 1;
    }
    void addProposesTheNextCode() {
        QFETCH(QList<int>, codigos);
        QFETCH(bool, conContactos);
        QFETCH(QString, nombre);
        QFETCH(int, filas);
        for (int c : codigos)
            bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (?, ?)"_s,
                      {c, u"M%1"_s.arg(c)});
        InterfazGuionada ui;
        frmMenAuto p;
        QString propuesto;
        alAbrirModal([&](QDialog* d) {
            propuesto = d->findChild<QLineEdit*>(u"txtNombre"_s)->text();
            if (conContactos) {
                elegir({u"Ana"_s}, {}, u"Hola"_s);
                d->findChild<QPushButton*>(u"cmdAdd"_s)->click();
            }
            d->findChild<QPushButton*>(u"XPButton2"_s)->click();
        });
        p.cmdAdd->click();
        QCOMPARE(propuesto, nombre);
        QCOMPARE(cuantos(u"select count(*) from Automaticos"_s), filas);
        QCOMPARE(p.ListView1->modelo()->rowCount(), filas);
        if (conContactos)
            QCOMPARE(columna(u"select Nombre from Automaticos order by Codigo desc limit 1"_s),
                     QStringList{nombre});
        QVERIFY(ui.boxes.isEmpty());
    }

    void deleteAsksAndRemovesRecipients_data() {
        QTest::addColumn<int>("respuesta");
        QTest::addColumn<QStringList>("quedan");
        QTest::newRow("yes") << Msg::Yes << QStringList{u"B"_s};
        QTest::newRow("no") << Msg::No << QStringList{u"A"_s, u"B"_s};
    }
    void deleteAsksAndRemovesRecipients() {
        QFETCH(int, respuesta);
        QFETCH(QStringList, quedan);
        bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (1,'A'),(2,'B')"_s);
        recipiente(1, u"0034600000001"_s);
        recipiente(2, u"0034600000001"_s);
        InterfazGuionada ui;
        ui.answers = {respuesta};
        frmMenAuto p;
        p.ListView1->seleccionarFila(0);
        p.cmdDelete->click();
        QCOMPARE(cajas(ui), QStringList{caja(Msg::YesNo | 32,
                                             u"Esta seguro que desea eliminar este Envío "
                                             u"Múltiple ?\nA"_s)});
        QCOMPARE(textosDe(p.ListView1, 0), quedan);
        QCOMPARE(cuantos(u"select count(*) from AboAuto"_s), quedan.size());
    }

    void editOpensTheFirstRowOfTheName() {
        bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (3,'Igual'),(5,'Igual')"_s);
        InterfazGuionada ui;
        frmMenAuto p;
        p.ListView1->seleccionarFila(1);
        int editado = -1;
        alAbrirModal([&](QDialog* d) {
            editado = qobject_cast<frmNewMenAuto2*>(d)->codigo();
            d->findChild<QLineEdit*>(u"txtNombre"_s)->setText(u"Cambiado"_s);
            d->findChild<QPushButton*>(u"XPButton2"_s)->click();
        });
        p.cmdEdit->click();
        QCOMPARE(editado, 3);
        QCOMPARE(columna(u"select Nombre from Automaticos order by Codigo"_s),
                 (QStringList{u"Cambiado"_s, u"Igual"_s}));
        QCOMPARE(textosDe(p.ListView1, 0), (QStringList{u"Cambiado"_s, u"Igual"_s}));
    }

    // A click on any header sorts the lines the list read from the stored
    // next runs (descending first); the selected line still edits its row.
    void everyColumnSorts_data() {
        QTest::addColumn<int>("col");
        for (int c = 0; c < 4; ++c) QTest::newRow(qPrintable(QString::number(c))) << c;
    }
    void everyColumnSorts() {
        QFETCH(int, col);
        RelojFijo reloj(en(u"15/03/2006 10:00:30"_s));
        programa(1, u"Periodicidad=1 Hora=11:00"_s);
        programa(2, u"Periodicidad=0 FechaIni=2006-03-14"_s);
        programa(3, u"Periodicidad=4 AnualDia=20 AnualMes=3"_s);
        bd().exec(
            u"UPDATE Automaticos SET Nombre = 'N' || (4 - Codigo), UltimaTarea = "
            u"'2006-03-1' || Codigo || ' 09:00:00' WHERE Codigo > 1"_s);
        bd().exec(u"UPDATE Automaticos SET Nombre = 'N3' WHERE Codigo = 1"_s);
        recipiente(2, u"0034600000001"_s);
        alDia();
        frmMenAuto p;
        p.ListView1->ordenarPorColumna(col);
        QStringList esperado = textosDe(p.ListView1, col);
        std::sort(esperado.begin(), esperado.end(), std::greater<>());
        QCOMPARE(textosDe(p.ListView1, col), esperado);
        const QString nombre = textosDe(p.ListView1, 0).value(0);
        p.ListView1->seleccionarFila(0);
        int editado = -1;
        alAbrirModal([&](QDialog* d) {
            editado = qobject_cast<frmNewMenAuto2*>(d)->codigo();
            d->reject();
        });
        p.cmdEdit->click();
        QCOMPARE(u"N"_s + QString::number(4 - editado), nombre);
    }

    void anEmptyTableLeavesEditAndDeleteIdle() {
        InterfazGuionada ui;
        frmMenAuto p;
        p.cmdEdit->click();
        p.cmdDelete->click();
        QCOMPARE(p.ListView1->modelo()->rowCount(), 0);
        QVERIFY(ui.boxes.isEmpty());
    }
};

QUELMO_GUI_TEST_MAIN(TestFrmMenAuto)
#include "test_frmMenAuto.moc"

// The list of multi-sends: what each line shows of its schedule, adding
// with the proposed name, editing, deleting, and the entries that open it.
#include "AyudaProgramacion.h"
#include "scheduling/ProximasTareas.h"
#include "scheduling/clsTareasPendientes.h"
#include "scheduling/frmMenAuto.h"
#include "scheduling/frmNewMenAuto2.h"
#include "scheduling/mdoProgramacion.h"

#include <QLineEdit>
#include <QPushButton>
#include <optional>

using namespace Qt::StringLiterals;
using namespace programacion_prueba;

namespace {

// The stored next runs worked out, as the first tick after the open does.
void alDia() {
    ProximasTareas::ponerAlDia();
    while (ProximasTareas::repasadoHasta()) prueba::esperar(clsTareasPendientes::Repasar());
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
            << u"Periodicidad=1"_s << QString() << u"R|2|15/03/2006 11:00:00|nunca"_s;
        QTest::newRow("run before") << u"Periodicidad=1"_s << u"2006-03-14 11:00:00"_s
                                    << u"R|2|15/03/2006 11:00:00|14/03/2006 11:00:00"_s;
        QTest::newRow("ended") << u"Periodicidad=1 FechaFin=2006-03-10"_s
                               << u"2006-03-09 11:00:00"_s << u"R|2|Finalizado|"_s;
        QTest::newRow("once, passed")
            << u"Periodicidad=0 FechaIni=2006-03-14"_s << QString() << u"R|2|Finalizado|"_s;
        QTest::newRow("switched off, though sent before")
            << u"Periodicidad=1 TareaProgramada=0"_s << u"2006-03-14 11:00:00"_s << u"R|2|no|"_s;
        QTest::newRow("a day its month lacks shows no run")
            << u"Periodicidad=4 AnualDia=29 AnualMes=2"_s << QString() << u"R|2||"_s;
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
        QTRY_COMPARE(filasDe(p.ListView1), (QStringList{linea, u"Sin programa|0|no|"_s}));
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

    // A multi-send goes with all its recipients or not at all: a large one
    // over turns, waiting for a lock another program holds without holding
    // the window, the screen taking nothing meanwhile.
    void deleteAsksAndRemovesRecipients_data() {
        QTest::addColumn<int>("respuesta");
        QTest::addColumn<QStringList>("quedan");
        QTest::addColumn<bool>("ajeno");
        QTest::addColumn<bool>("cortar");
        QTest::newRow("yes") << Msg::Yes << QStringList{u"B"_s} << false << false;
        QTest::newRow("no") << Msg::No << QStringList{u"A"_s, u"B"_s} << false << false;
        QTest::newRow("yes, another program holds the file a moment")
            << Msg::Yes << QStringList{u"B"_s} << true << false;
        QTest::newRow("yes, the file closed while it waits")
            << Msg::Yes << QStringList{u"A"_s, u"B"_s} << true << true;
    }
    void deleteAsksAndRemovesRecipients() {
        QFETCH(int, respuesta);
        QFETCH(QStringList, quedan);
        QFETCH(bool, ajeno);
        QFETCH(bool, cortar);
        bd().exec(u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (1,'A'),(2,'B')"_s);
        recipiente(2, u"0034600000001"_s);
        const int muchos = ajeno ? 30000 : 1;
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) SELECT 1, '0034600' || i, "
            u"'hola' FROM n"_s,
            {muchos - 1});
        InterfazGuionada ui;
        ui.answers = {respuesta};
        frmMenAuto p;
        p.ListView1->seleccionarFila(0);
        // The next runs are still being worked out again, as after every
        // open, when the other program takes the file: that work must not
        // wait for it on the window's thread either.
        const QString ruta = bd().path();
        std::optional<prueba::OtroPrograma> otro = prueba::otroPrograma(ajeno, ruta);
        p.cmdDelete->click();
        QCOMPARE(cajas(ui), QStringList{caja(Msg::YesNo | 32,
                                             u"Esta seguro que desea eliminar este Envío "
                                             u"Múltiple ?\nA"_s)});
        if (ajeno) {
            QVERIFY(p.ocupada() && !p.ListView1->isEnabled() && !p.cmdDelete->isEnabled());
            QTest::qWait(150);
            if (cortar) bd().close();
            otro->soltar();
        }
        QTRY_VERIFY(!p.ocupada());
        QVERIFY(p.ListView1->isEnabled());
        if (cortar) TestDb::openShared(ruta);
        const bool borrado = respuesta == Msg::Yes && !cortar;
        QCOMPARE(prueba::filas(u"select Codigo, Destinatarios from Automaticos order by 1"_s),
                 borrado ? QStringList{u"2|1"_s} : (QStringList{u"1|%1"_s.arg(muchos), u"2|1"_s}));
        QCOMPARE(cuantos(u"select count(*) from AboAuto"_s), borrado ? 1 : muchos + 1);
        QCOMPARE(textosDe(p.ListView1, 0), cortar ? QStringList() : quedan);
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

    // Multi-sends and recipients written, renamed and moved by another
    // SQLite client: each sequence of clicks orders the lines on the
    // file's indexes as the lists' rule orders the texts shown, equal
    // texts in the order they stood in, and each count kept is the count.
    void sortsOnTheIndexesAsTheRule_data() {
        QTest::addColumn<QList<int>>("clics");
        QTest::newRow("Nombre") << QList<int>{0};
        QTest::newRow("Nombre, then Nº Men.") << QList<int>{0, 1};
        QTest::newRow("Nº Men., then Programado") << QList<int>{1, 2};
        QTest::newRow("Programado, then Último envío") << QList<int>{2, 3};
        QTest::newRow("Último envío, then Nombre twice") << QList<int>{3, 0, 0};
    }
    void sortsOnTheIndexesAsTheRule() {
        QFETCH(QList<int>, clics);
        const QString ruta = bd().path();
        shell(ruta,
              u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 48) "
              u"INSERT INTO Automaticos (Codigo, Nombre, TareaProgramada, ProximaTarea, "
              u"UltimaTarea) SELECT i, CASE i % 8 WHEN 0 THEN 'Álvaro' WHEN 1 THEN 'beatriz' "
              u"WHEN 2 THEN 'Ñu' WHEN 3 THEN 'nz' WHEN 4 THEN NULL WHEN 5 THEN 'ALVARO' "
              u"WHEN 6 THEN 'óscar' ELSE 'Oscar' END, CASE i % 5 WHEN 0 THEN 0 WHEN 1 THEN "
              u"NULL ELSE 1 END, CASE i % 7 WHEN 0 THEN NULL WHEN 1 THEN '' WHEN 2 THEN "
              u"'2006-03-1' || (i % 10) || ' 11:00:00' WHEN 3 THEN '2007-01-0' || (i % 9 + 1) || "
              u"' 00:00:00' WHEN 4 THEN '1899-12-30 0' || (i % 10) || ':30:00' WHEN 5 THEN "
              u"'mañana' ELSE '2006-02-2' || (i % 10) || ' 09:15:00' END, CASE i % 6 WHEN 0 "
              u"THEN NULL WHEN 1 THEN '' WHEN 2 THEN '2006-03-0' || (i % 9 + 1) || ' 10:00:00' "
              u"WHEN 3 THEN '1899-12-30 00:00:00' WHEN 4 THEN substr('AyerayesAYES', i % 3 "
              u"* 4 + 1, 4) ELSE '15/03/2006 10:00' END FROM n; "
              u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 12) "
              u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) SELECT Codigo, '1', 'm' "
              u"FROM Automaticos, n WHERE i <= Codigo * 7 % 13; "
              u"UPDATE Automaticos SET Nombre = 'Émile' WHERE Codigo % 9 = 0; "
              u"DELETE FROM AboAuto WHERE id_AboAuto % 5 = 0; "
              u"UPDATE AboAuto SET Automatico = Automatico + 1 WHERE id_AboAuto % 7 = 0; "
              u"INSERT INTO Automaticos (Codigo, Nombre) VALUES (49, 'nz');"_s);
        // Our connection opens the file again, as the program would, and
        // runs change what the last run shows, or only the next run's date.
        TestDb::openShared(ruta);
        bd().execScript(
            u"UPDATE Automaticos SET ProximaTarea = NULL WHERE Codigo % 4 = 0; "
            u"UPDATE Automaticos SET ProximaTarea = '2006-05-0' || (Codigo % 9 + 1) || "
            u"' 10:00:00' WHERE Codigo % 4 = 1; UPDATE Automaticos SET TareaProgramada = NOT "
            u"coalesce(TareaProgramada, 0) WHERE Codigo % 3 = 0; UPDATE Automaticos SET "
            u"UltimaTarea = '2006-03-2' || (Codigo % 10) || ' 10:00:00' WHERE Codigo % 11 = 0;"_s);
        QCOMPARE(cuantos(u"SELECT count(*) FROM Automaticos WHERE Destinatarios IS NOT "
                         u"(SELECT count(*) FROM AboAuto WHERE Automatico = Codigo)"_s),
                 0);
        ListaPaginada indices(definicionMensajesProgramados());
        ListaPaginada::Definicion sinIndices = definicionMensajesProgramados();
        for (ListaPaginada::Columna& c : sinIndices.columnas) c.orden.clear();
        ListaPaginada regla(sinIndices);
        indices.cargar();
        regla.cargar();
        QCOMPARE(indices.filas(), 49);
        bool descendente = false;
        for (const int c : clics) {
            descendente = !descendente;
            indices.ordenar(c, descendente);
            regla.ordenar(c, descendente);
            for (int f = 0; f < regla.filas(); ++f)
                QVERIFY2(indices.clave(f) == regla.clave(f),
                         qPrintable(u"line %1: %2 | %3"_s.arg(f).arg(indices.texto(f, c),
                                                                     regla.texto(f, c))));
        }
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

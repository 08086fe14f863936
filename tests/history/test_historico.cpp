// The sent history: what the list shows and in which order, the header
// rule of the date column, resend through today's principal account, and
// the two deletions with their questions.
#include "TestSupportGui.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "base/ReglaListas.h"
#include "db/Conexion.h"
#include "history/PantallasHistorico.h"
#include "history/frmHEnvios.h"
#include "widgets/Listado.h"
#include "widgets/PantallasHijas.h"

#include <QApplication>
#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

using prueba::bd;
using prueba::cajas;

void enviado(const QString& registro, const QString& numero, const QString& mensaje, int canal = 1,
             const QVariant& crem = u"Tienda"_s, const QString& resultado = u"Mensaje aceptado"_s) {
    bd().exec(
        u"INSERT INTO HEnvios (Abonado,Registro,Mensaje,Resultado,Canal,crem) "
        u"VALUES (?,?,?,?,?,?)"_s,
        {numero, registro, mensaje, resultado, canal, crem});
}

QStringList columna(const QAbstractItemModel* m, int c) {
    QStringList t;
    for (int f = 0; f < m->rowCount(); ++f) t << m->index(f, c).data().toString();
    return t;
}

constexpr int kPregunta = Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2;

// Three messages around a day's boundary, stored out of order.
void tresMensajes() {
    enviado(u"2006-03-15 00:00:05"_s, u"0034600000002"_s, u"Ábaco"_s, 2, QVariant());
    enviado(u"2006-03-14 23:59:59"_s, u"0034600000001"_s, u"zorro"_s);
    enviado(u"2006-03-16 10:00:00"_s, u"0034600000003"_s, u"ñu"_s);
}

}  // namespace

class TestHistorico : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    std::optional<InterfazGuionada> ui;  // scripted answers, new for each test

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"historico.db"_s);
        ui.emplace();
    }

    void listShowsSixColumnsNewestFirst() {
        tresMensajes();
        registrarPantallasHistorico();
        QVERIFY(Pantallas::abrir(u"frmHEnvios"_s));
        frmHEnvios* pantalla = PantallasHijas::instance<frmHEnvios>();
        QCOMPARE(pantalla->windowTitle(), u"Mensajes Enviados"_s);
        const QAbstractItemModel* m = pantalla->ListView1->model();
        QStringList cabeceras;
        for (int c = 0; c < m->columnCount(); ++c)
            cabeceras << m->headerData(c, Qt::Horizontal).toString();
        QCOMPARE(cabeceras, (QStringList{u"Enviado      "_s, u"Número"_s, u"Cuenta (Remitente)"_s,
                                         u"Mensaje"_s, u"Resultado"_s, u"id"_s}));
        QVERIFY(pantalla->ListView1->isColumnHidden(5));
        QCOMPARE(columna(m, 0), (QStringList{u"16/03/2006 10:00:00"_s, u"15/03/2006 00:00:05"_s,
                                             u"14/03/2006 23:59:59"_s}));
        QCOMPARE(columna(m, 5),
                 (QStringList{u"20060316100000"_s, u"20060315000005"_s, u"20060314235959"_s}));
        // An older row without a sender text shows its account's code.
        QCOMPARE(columna(m, 2), (QStringList{u"Tienda"_s, u"2"_s, u"Tienda"_s}));
        QCOMPARE(columna(m, 4), QStringList(3, u"Mensaje aceptado"_s));
        QCOMPARE(pantalla->ListView1->header()->sortIndicatorSection(), 0);
        QCOMPARE(pantalla->ListView1->header()->sortIndicatorOrder(), Qt::DescendingOrder);
        // The date picker goes with "Fecha anterior a:", chosen at load.
        QVERIFY(pantalla->Option1_1->isChecked());
        QVERIFY(pantalla->txtfecha->isEnabled());
        pantalla->Option1_0->setChecked(true);
        QVERIFY(!pantalla->txtfecha->isEnabled());
        pantalla->Option1_1->setChecked(true);
        QVERIFY(pantalla->txtfecha->isEnabled());
        // A row another program wrote without a date is counted and shown.
        bd().exec(
            u"INSERT INTO HEnvios (Abonado, Mensaje) VALUES ('0034600000004', 'sin fecha')"_s);
        pantalla->msCargarHistorico();
        QTRY_VERIFY(!pantalla->ocupada());
        QCOMPARE(columna(m, 3), (QStringList{u"ñu"_s, u"Ábaco"_s, u"zorro"_s, u"sin fecha"_s}));
        delete pantalla;
    }

    void headerClicks_data() {
        QTest::addColumn<QList<int>>("clics");
        QTest::addColumn<int>("columnaMirada");
        QTest::addColumn<QStringList>("orden");
        QTest::addColumn<int>("flecha");
        QTest::addColumn<Qt::SortOrder>("sentido");
        const QStringList antiguos{u"0034600000001"_s, u"0034600000002"_s, u"0034600000003"_s};
        const QStringList recientes{antiguos.at(2), antiguos.at(1), antiguos.at(0)};
        QTest::newRow("first header: oldest first")
            << QList<int>{0} << 1 << antiguos << 0 << Qt::AscendingOrder;
        QTest::newRow("first header twice: newest first again")
            << QList<int>{0, 0} << 1 << recientes << 0 << Qt::DescendingOrder;
        QTest::newRow("another header, then the first: ascending")
            << QList<int>{3, 0} << 1 << antiguos << 0 << Qt::AscendingOrder;
        // Accents and case don't count, "ñ" comes after "n".
        QTest::newRow("message header")
            << QList<int>{3} << 3 << QStringList{u"Ábaco"_s, u"ñu"_s, u"zorro"_s} << 3
            << Qt::AscendingOrder;
        QTest::newRow("message header twice")
            << QList<int>{3, 3} << 3 << QStringList{u"zorro"_s, u"ñu"_s, u"Ábaco"_s} << 3
            << Qt::DescendingOrder;
        QTest::newRow("account header: a code before a name")
            << QList<int>{2} << 2 << QStringList{u"2"_s, u"Tienda"_s, u"Tienda"_s} << 2
            << Qt::AscendingOrder;
    }
    void headerClicks() {
        QFETCH(QList<int>, clics);
        QFETCH(int, columnaMirada);
        QFETCH(QStringList, orden);
        QFETCH(int, flecha);
        QFETCH(Qt::SortOrder, sentido);
        tresMensajes();
        frmHEnvios pantalla;
        for (int c : clics) Q_EMIT pantalla.ListView1->header()->sectionClicked(c);
        QCOMPARE(columna(pantalla.ListView1->model(), columnaMirada), orden);
        QCOMPARE(pantalla.ListView1->header()->sortIndicatorSection(), flecha);
        QCOMPARE(pantalla.ListView1->header()->sortIndicatorOrder(), sentido);
        // Ctrl and the column's number do the same from the keyboard.
        frmHEnvios otra;
        for (int c : clics)
            QTest::keyClick(otra.ListView1, Qt::Key(Qt::Key_1 + c), Qt::ControlModifier);
        QCOMPARE(columna(otra.ListView1->model(), columnaMirada), orden);
        QCOMPARE(otra.ListView1->header()->sortIndicatorSection(), flecha);
        QCOMPARE(otra.ListView1->header()->sortIndicatorOrder(), sentido);
    }

    // The keys go along the lines as in any list: Home and End to the
    // first and last, the arrows a line, Tab out of the list; the line the
    // keys reach is the one shown chosen, what "Reenviar" takes.
    void keysGoAlongTheLines_data() {
        QTest::addColumn<int>("tecla");
        QTest::addColumn<int>("modificador");
        QTest::addColumn<int>("fila");  // -1: the focus left the list
        QTest::newRow("End") << int(Qt::Key_End) << int(Qt::NoModifier) << 29;
        QTest::newRow("Home") << int(Qt::Key_Home) << int(Qt::NoModifier) << 0;
        QTest::newRow("Ctrl+End") << int(Qt::Key_End) << int(Qt::ControlModifier) << 29;
        QTest::newRow("Down") << int(Qt::Key_Down) << int(Qt::NoModifier) << 6;
        QTest::newRow("Right stays on the line") << int(Qt::Key_Right) << int(Qt::NoModifier) << 5;
        QTest::newRow("Tab leaves") << int(Qt::Key_Tab) << int(Qt::NoModifier) << -1;
    }
    void keysGoAlongTheLines() {
        QFETCH(int, tecla);
        QFETCH(int, modificador);
        QFETCH(int, fila);
        for (int i = 0; i < 30; ++i)
            enviado(u"2006-03-10 10:%1:00"_s.arg(i, 2, 10, QChar(u'0')),
                    u"00346000000%1"_s.arg(i, 2, 10, QChar(u'0')), u"m"_s);
        frmHEnvios pantalla;
        pantalla.show();
        QVERIFY(QTest::qWaitForWindowActive(&pantalla));
        QTRY_VERIFY(!pantalla.ocupada());
        auto* lista = pantalla.ListView1;
        lista->setFocus(Qt::TabFocusReason);
        lista->setCurrentIndex(lista->model()->index(5, 1));
        QTest::keyClick(lista, Qt::Key(tecla), Qt::KeyboardModifiers(modificador));
        if (fila < 0) {
            QVERIFY(QApplication::focusWidget() != lista);
            return;
        }
        QCOMPARE(QApplication::focusWidget(), lista);
        QCOMPARE(lista->currentIndex().row(), fila);
        const QModelIndexList elegidas = lista->selectionModel()->selectedRows();
        QCOMPARE(elegidas.size(), 1);
        QCOMPARE(elegidas.first().row(), fila);
    }

    // The list reads a page of 1,000 rows at a time: the order must hold
    // across pages whichever way they are reached, with equal texts in the
    // order of their age even where a page cuts a run of them.
    void pagesKeepTheOrder_data() {
        QTest::addColumn<QList<int>>("clics");
        QTest::addColumn<int>("columnaMirada");  // -1: the date
        QTest::addColumn<bool>("descendente");
        QTest::addColumn<QList<int>>("primero");  // rows read before all in turn
        QTest::newRow("date, newest first, in turn") << QList<int>{} << -1 << true << QList<int>{};
        QTest::newRow("date, oldest first, from the end")
            << QList<int>{0} << -1 << false << QList<int>{3499};
        QTest::newRow("message, in turn") << QList<int>{3} << 3 << false << QList<int>{};
        QTest::newRow("message descending, in turn")
            << QList<int>{3, 3} << 3 << true << QList<int>{};
        QTest::newRow("message, a page skipped")
            << QList<int>{3} << 3 << false << QList<int>{0, 2500};
        QTest::newRow("message descending, from the end")
            << QList<int>{3, 3} << 3 << true << QList<int>{3499};
        QTest::newRow("account, from the middle")
            << QList<int>{2} << 2 << false << QList<int>{1700};
    }
    void pagesKeepTheOrder() {
        QFETCH(QList<int>, clics);
        QFETCH(int, columnaMirada);
        QFETCH(bool, descendente);
        QFETCH(QList<int>, primero);
        // Few distinct texts and dates, so that runs of equal keys cross
        // the pages' edges.
        const QStringList palabras{u"Ábaco"_s, u"abaco"_s, u"ñu"_s,    u"Nube"_s,
                                   u"nu"_s,    u"zorro"_s, u"Zorro"_s, QString()};
        struct Esperada {
            QString clave, numero;
            int64_t rowid;
        };
        std::vector<Esperada> esperadas;
        bd().begin();
        for (int i = 0; i < 3500; ++i) {
            const QString palabra = palabras.at(i % palabras.size());
            const QString mensaje =
                palabra.isNull() ? QString() : palabra + QString::number(i % 3 ? i % 5 : 7);
            const QVariant crem = i % 4 ? QVariant(u"Tienda %1"_s.arg(i % 2)) : QVariant();
            const QString numero = u"00346%1"_s.arg(i, 8, 10, QChar(u'0'));
            enviado(u"2006-03-%1 10:00:00"_s.arg(10 + i % 7), numero, mensaje, 9, crem);
            const QString clave = columnaMirada == 3   ? mensaje
                                  : columnaMirada == 2 ? (crem.isNull() ? u"9"_s : crem.toString())
                                                       : QString::number(10 + i % 7);
            esperadas.push_back({ReglaListas::clave(clave), numero, i + 1});
        }
        bd().commit();
        std::stable_sort(esperadas.begin(), esperadas.end(),
                         [](const Esperada& a, const Esperada& b) { return a.clave < b.clave; });
        if (descendente) std::reverse(esperadas.begin(), esperadas.end());
        QStringList orden;
        for (const Esperada& e : esperadas) orden << e.numero;

        frmHEnvios pantalla;
        for (int c : clics) Q_EMIT pantalla.ListView1->header()->sectionClicked(c);
        // Delivered after the list was filled: it shows at the next fill.
        enviado(u"2006-03-13 10:00:00"_s, u"0034699999999"_s, u"abaco"_s, 9, u"Tienda 0"_s);
        const QAbstractItemModel* m = pantalla.ListView1->model();
        for (int f : primero) QCOMPARE(m->index(f, 1).data().toString(), orden.at(f));
        QCOMPARE(columna(m, 1), orden);
    }

    void resend_data() {
        QTest::addColumn<int>("principal");  // 0: none
        QTest::addColumn<QString>("mensaje");
        QTest::addColumn<int>("respuesta");
        QTest::addColumn<bool>("dobleClic");
        QTest::addColumn<QString>("esperado");  // the outbox row, empty: none
        QTest::newRow("sent by 3, principal 1: goes by 1")
            << 1 << u"Hola"_s << Msg::Yes << false << u"0034600000009|Hola|2|1"_s;
        QTest::newRow("no principal account: account 0")
            << 0 << u"Hola"_s << Msg::Yes << false << u"0034600000009|Hola|2|0"_s;
        QTest::newRow("apostrophe kept, by double click")
            << 1 << u"L'Hospitalet, d'acord"_s << Msg::Yes << true
            << u"0034600000009|L'Hospitalet, d'acord|2|1"_s;
        QTest::newRow("answer no") << 1 << u"Hola"_s << Msg::No << false << QString();
    }
    void resend() {
        QFETCH(int, principal);
        QFETCH(QString, mensaje);
        QFETCH(int, respuesta);
        QFETCH(bool, dobleClic);
        QFETCH(QString, esperado);
        prueba::cuenta(3, u"Tres"_s);
        if (principal) prueba::cuenta(principal, u"Uno"_s, {{u"Principal"_s, 1}});
        enviado(u"2006-03-14 09:30:00"_s, u"0034600000009"_s, mensaje, 3, u"Otra"_s);
        RelojFijo reloj(QDateTime(QDate(2006, 3, 20), QTime(12, 0)));
        ui->answers = {respuesta};
        QSignalSpy bandeja(&Avisos::instancia(), &Avisos::bandejaCambiada);
        frmHEnvios pantalla;
        // Nothing selected: nothing asked.
        pantalla.XPButton2->click();
        QVERIFY(ui->boxes.isEmpty());
        const QModelIndex fila = pantalla.ListView1->model()->index(0, 1);
        pantalla.ListView1->selectionModel()->select(
            fila, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        if (dobleClic)
            Q_EMIT pantalla.ListView1->doubleClicked(fila);
        else
            pantalla.XPButton2->click();
        QStringList vistas{QString::number(kPregunta) +
                           u" ¿Seguro que desea Reenviar el Mensaje Seleccionado? \n\nMensaje: "_s +
                           mensaje + u"\nNúmero: 0034600000009\nDe fecha : 14/03/2006 09:30:00"_s};
        if (!esperado.isEmpty())
            vistas << QString::number(Msg::Information) +
                          u" El mensaje está listo para enviar en la Bandeja de Salida\nsi tiene "
                          u"activado el Modo Transmisor el mensaje se enviará en unos segundos."_s;
        QCOMPARE(cajas(*ui), vistas);
        QCOMPARE(prueba::filas(u"SELECT Abonado, Mensaje, intento, Canal FROM envios"_s),
                 esperado.isEmpty() ? QStringList() : QStringList{esperado});
        if (!esperado.isEmpty())
            QCOMPARE(prueba::filas(u"SELECT Registro FROM envios"_s),
                     QStringList{u"2006-03-20 12:00:00"_s});
        QCOMPARE(bandeja.count(), esperado.isEmpty() ? 0 : 1);
        // The history keeps its row.
        QCOMPARE(pantalla.ListView1->model()->rowCount(), 1);
    }

    void resendFailureIsTold() {
        enviado(u"2006-03-14 09:30:00"_s, u"0034600000009"_s, u"Hola"_s);
        bd().exec(u"DROP TABLE envios"_s);
        ui->answers = {Msg::Yes};
        frmHEnvios pantalla;
        pantalla.ListView1->selectionModel()->select(
            pantalla.ListView1->model()->index(0, 0),
            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        pantalla.XPButton2->click();
        QCOMPARE(cajas(*ui).mid(1), QStringList{u"48 No se ha podido reenviar el mensaje"_s});
    }

    void deletion_data() {
        QTest::addColumn<bool>("todos");
        QTest::addColumn<QString>("fecha");  // typed into the picker
        QTest::addColumn<int>("respuesta");
        QTest::addColumn<QStringList>("preguntas");
        QTest::addColumn<QStringList>("quedan");  // dates of the rows left, as shown
        const QStringList todas{u"16/03/2006 10:00:00"_s, u"15/03/2006 00:00:05"_s,
                                u"14/03/2006 23:59:59"_s};
        const QString anterior =
            QString::number(kPregunta) +
            u" Se van a elminar todos los mensajes con fecha anterior a 15/03/2006\n\n"
            u"¿Está seguro de elminar estos mensajes?"_s;
        const QString todo =
            QString::number(kPregunta) +
            u" Está seguro de querer eliminar todos los mensajes enviados del histórico?"_s;
        QTest::newRow("older than a day: the day itself stays")
            << false << u"15/03/2006"_s << Msg::Yes << QStringList{anterior} << todas.mid(0, 2);
        QTest::newRow("older than a day, answer no")
            << false << u"15/03/2006"_s << Msg::No << QStringList{anterior} << todas;
        QTest::newRow("the picker emptied")
            << false << QString() << Msg::Yes
            << QStringList{QString::number(Msg::Exclamation) +
                           u" Fecha no válida, por favor introduzca la fecha en formato "
                           u"dd/mm/yyyy"_s}
            << todas;
        QTest::newRow("everything")
            << true << QString() << Msg::Yes << QStringList{todo} << QStringList();
        QTest::newRow("everything, answer no")
            << true << QString() << Msg::No << QStringList{todo} << todas;
    }
    void deletion() {
        QFETCH(bool, todos);
        QFETCH(QString, fecha);
        QFETCH(int, respuesta);
        QFETCH(QStringList, quedan);
        tresMensajes();
        ui->answers = {respuesta};
        frmHEnvios pantalla;
        if (todos) {
            pantalla.Option1_0->setChecked(true);
        } else {
            // Typed as the user types it: the picker may hold no date.
            pantalla.txtfecha->findChild<QLineEdit*>()->setText(fecha);
        }
        // A row added behind the screen's back shows only after a reload.
        enviado(u"2006-03-17 08:00:00"_s, u"0034600000004"_s, u"nuevo"_s);
        pantalla.XPButton1->click();
        QTEST(cajas(*ui), "preguntas");
        // A delete that ran shows the list read anew, with the late row.
        const bool alcanzado = respuesta == Msg::Yes && (todos || !fecha.isEmpty());
        if (alcanzado && !todos) quedan.prepend(u"17/03/2006 08:00:00"_s);
        QCOMPARE(columna(pantalla.ListView1->model(), 0), quedan);
        QCOMPARE(bd().query(u"SELECT count(*) FROM HEnvios"_s).value(0, 0).toInt(),
                 int(quedan.size()) + (alcanzado ? 0 : 1));
    }

    // A deletion of many rows goes over turns: meanwhile the screen takes
    // nothing but "Cerrar", and then it shows what is left. By date it
    // commits as it goes, oldest first: a move into the history gets in
    // meanwhile, and stopped halfway it has taken what an earlier day
    // would have. Everything goes whole.
    void aLargeDeletionGoesOverTurns_data() {
        QTest::addColumn<bool>("todos");
        QTest::addColumn<bool>("cortar");
        QTest::newRow("older than a day") << false << false;
        QTest::newRow("older than a day, the file closed halfway") << false << true;
        QTest::newRow("everything") << true << false;
    }
    void aLargeDeletionGoesOverTurns() {
        QFETCH(bool, todos);
        QFETCH(bool, cortar);
        // One a minute from 1 January 2006: 149,760 before 15 April, 10,240
        // on it and after.
        constexpr int kViejas = 149760;
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 159999) "
            u"INSERT INTO HEnvios (Abonado, Registro, Mensaje, Resultado, Canal) "
            u"SELECT '0034600000001', datetime('2006-01-01', '+' || i || ' minutes'), i, "
            u"'Mensaje aceptado', 1 FROM n"_s);
        const QString dia = u"2006-04-15"_s;
        ui->answers = {Msg::Yes};
        frmHEnvios pantalla;
        pantalla.show();
        QVERIFY(QTest::qWaitForWindowActive(&pantalla));
        // A history this long may be counted over turns first.
        QTRY_VERIFY(!pantalla.ocupada());
        QCOMPARE(pantalla.ListView1->model()->rowCount(), 160000);
        if (todos)
            pantalla.Option1_0->setChecked(true);
        else
            pantalla.txtfecha->setDate(QDate(2006, 4, 15));
        pantalla.XPButton1->setFocus();
        pantalla.XPButton1->click();
        // Emptying the table takes one turn at this size.
        if (!todos) {
            QVERIFY(pantalla.ocupada());
            QVERIFY(!pantalla.XPButton1->isEnabled() && !pantalla.ListView1->isEnabled());
            QVERIFY(pantalla.cmdClose->isEnabled());
            enviado(u"2006-04-20 10:00:00"_s, u"0034600000009"_s, u"entre medias"_s);
        }
        const QString ruta = bd().path();
        if (cortar) bd().close();
        QTRY_VERIFY_WITH_TIMEOUT(!pantalla.ocupada(), 20000);
        QVERIFY(pantalla.XPButton1->isEnabled() && pantalla.ListView1->isEnabled());
        // The keys are where they were, not on "Cerrar".
        QCOMPARE(QApplication::focusWidget(), pantalla.XPButton1);
        if (cortar) {
            QVERIFY(prueba::enRegistro(u"No se pudo borrar el histórico: "_s));
            TestDb::openShared(ruta);
            const QStringList quedan = prueba::filas(
                u"SELECT count(*), min(CAST(Mensaje AS INTEGER)), max(CAST(Mensaje AS INTEGER)) "
                u"FROM HEnvios WHERE Registro < ?"_s,
                {dia});
            const QStringList n = quedan.value(0).split(u'|');
            QVERIFY2(n.value(0).toInt() > 0 && n.value(0).toInt() < kViejas,
                     qPrintable(quedan.value(0)));
            QCOMPARE(n.value(2).toInt(), kViejas - 1);
            QCOMPARE(n.value(2).toInt() - n.value(1).toInt() + 1, n.value(0).toInt());
            return;
        }
        const int quedan = todos ? 0 : 160000 - kViejas + 1;
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM HEnvios"_s), quedan);
        QCOMPARE(pantalla.ListView1->model()->rowCount(), quedan);
        if (!todos) {
            QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM HEnvios WHERE Registro < ?"_s, {dia}),
                     0);
            QCOMPARE(pantalla.ListView1->model()->index(quedan - 1, 0).data().toString(),
                     u"15/04/2006 00:00:00"_s);
        }
    }

    void emptyHistory() {
        ui->answers = {Msg::Yes};
        frmHEnvios pantalla;
        QCOMPARE(pantalla.ListView1->model()->rowCount(), 0);
        pantalla.txtfecha->setDate(QDate(2006, 3, 15));
        pantalla.XPButton1->click();
        QCOMPARE(ui->boxes.size(), 1);
        QCOMPARE(pantalla.ListView1->model()->rowCount(), 0);
    }
};

QUELMO_GUI_TEST_MAIN(TestHistorico)
#include "test_historico.moc"

// The compose screen on real widgets: what the add routine writes and
// leaves in the box, the counter, the outbox list and its commands, the
// accounts combo and the transmitter switch.
#include "TestSupportGui.h"
#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "composition/Envio.h"
#include "composition/PantallasEnvio.h"
#include "composition/crtAutoComplete.h"
#include "composition/frmEnvio.h"
#include "db/Conexion.h"
#include "widgets/Listado.h"
#include "widgets/ModeloListado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/PantallasHijas.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <optional>

using namespace Qt::StringLiterals;
using prueba::hijo;

namespace {
QStringList lineasLog() {
    QStringList r;
    for (const QString& l : estadoAplicacion().log.lines()) r.append(l.section(u" - "_s, 1));
    return r;
}
QStringList abonadosEnBandeja() {
    return prueba::columna(u"select abonado from envios order by Id"_s);
}
void sql(const QString& s, const QVariantList& p = {}) {
    Conexion().exec(s, p);
}
// The add routine, to its end: what it refused.
QString agregar(const QString& destinos) {
    std::optional<QString> rechazados;
    agregarMensajes(destinos, u"hola"_s, false, 1,
                    [&](const QString& r, const ErrorBD*) { rechazados = r; });
    if (!QTest::qWaitFor([&] { return rechazados.has_value(); })) return u"(sin terminar)"_s;
    return rechazados.value_or(u"(sin terminar)"_s);
}
}  // namespace

class TestEnvio : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

  private:
    static void escribir(frmEnvio& f, const QString& destinos, const QString& texto) {
        hijo<QLineEdit>(f, u"Text1"_s)->setText(destinos);
        hijo<QPlainTextEdit>(f, u"txtMensaje"_s)->setPlainText(texto);
    }
    // What the 10-second timer does.
    static void refrescar(frmEnvio& f) {
        QVERIFY(QMetaObject::invokeMethod(f.findChild<QTimer*>(u"Timer1"_s), "timeout"));
    }
    static QString lista(frmEnvio& f, int fila, int col) {
        auto* m = static_cast<ModeloListado*>(hijo<VistaLineas>(f, u"ListView1"_s)->model());
        return m->texto(fila, col);
    }

    QString m_ruta;

  private Q_SLOTS:
    void init() {
        m_ruta = world.baseNueva(u"envio.db"_s);
        sql(u"INSERT INTO Canales (Canal,Nombre,Saldo,Principal,Remitente,tini,tfin) VALUES "
            u"(1,'Cuenta_1',12,1,'Juan ',NULL,NULL),(2,'Otra',3,0,'',NULL,NULL)"_s);
        sql(u"INSERT INTO Abonados (Codigo,Alias,Canal) VALUES ('0034600000001','ana',1),"
            u"('0034600000002','pepe',1),('ABC','raro',1),('0034600000003','o''brien',1)"_s);
    }

    void addRoutine_data() {
        QTest::addColumn<QString>("destinos");
        QTest::addColumn<bool>("solo");
        QTest::addColumn<QStringList>("filas");
        QTest::addColumn<QString>("queda");
        QTest::addColumn<QStringList>("log");
        const QString ana = u"0034600000001"_s;
        const QString noEncontrado = u"Contacto no encontrado --> "_s;
        QTest::newRow("a contact named twice goes twice, case ignored")
            << u"ana;ANA"_s << false << QStringList{ana, ana} << QString() << QStringList{};
        QTest::newRow("trailing separator")
            << u"ana;"_s << false << QStringList{ana} << QString() << QStringList{noEncontrado};
        QTest::newRow("blank before an alias")
            << u"ana; pepe"_s << false << QStringList{ana} << u" pepe"_s
            << QStringList{noEncontrado + u" pepe"_s};
        QTest::newRow("apostrophe in alias")
            << u"o'brien"_s << false << QStringList{u"0034600000003"_s} << QString()
            << QStringList{};
        QTest::newRow("national and plus forms")
            << u"600123456;+34600123456"_s << false
            << QStringList{u"0034600123456"_s, u"0034600123456"_s} << QString() << QStringList{};
        QTest::newRow("country code without 00")
            << u"34600123456"_s << false << QStringList{} << u"003434600123456"_s
            << QStringList{u"Número no válido --> 003434600123456"_s};
        QTest::newRow("foreign number as it stands")
            << u"0044123"_s << false << QStringList{u"0044123"_s} << QString() << QStringList{};
        QTest::newRow("blank before a number, decimal")
            << u" 600123456;12.5"_s << false << QStringList{} << u"0034 600123456;003412.5"_s
            << QStringList{u"Número no válido --> 0034 600123456"_s,
                           u"Número no válido --> 003412.5"_s};
        QTest::newRow("grouped number is a number")
            << u"600.123.456"_s << false << QStringList{} << u"0034600.123.456"_s
            << QStringList{u"Número no válido --> 0034600.123.456"_s};
        // Thirteen characters with dots: the sender would refuse it at every
        // run, so the outbox never takes it.
        QTest::newRow("dotted number of a Spanish length")
            << u"6.290.000;0044.123"_s << false << QStringList{} << u"00346.290.000;0044.123"_s
            << QStringList{u"Número no válido --> 00346.290.000"_s,
                           u"Número no válido --> 0044.123"_s};
        QTest::newRow("code that is not a number")
            << u"raro;ana"_s << false << QStringList{ana} << u"ABC"_s
            << QStringList{noEncontrado + u"ABC"_s};
        const QString soloLinea =
            u"Número no válido. Solo se permite enviar a Contactos dados de alta --> "_s;
        QTest::newRow("only contacts refuses a number")
            << u"ana;600123456;0034600000002"_s << true << QStringList{ana}
            << u"600123456;0034600000002"_s
            << QStringList{soloLinea + u"600123456"_s, soloLinea + u"0034600000002"_s};
    }
    void addRoutine() {
        QFETCH(QString, destinos);
        QFETCH(bool, solo);
        QFETCH(QStringList, filas);
        QFETCH(QString, queda);
        InterfazGuionada ui;
        sql(u"UPDATE opciones SET solocontactos=?"_s, {solo ? 1 : 0});
        frmEnvio f;
        escribir(f, destinos, u"Hola\nqué tal"_s);
        hijo<QPushButton>(f, u"cmdAñadir"_s)->click();
        QTRY_VERIFY(!f.ocupada());

        QCOMPARE(abonadosEnBandeja(), filas);
        QCOMPARE(hijo<QLineEdit>(f, u"Text1"_s)->text(), queda);
        QTEST(lineasLog(), "log");
        QVERIFY(ui.boxes.isEmpty());
        // The text goes only when every destination went.
        QCOMPARE(hijo<QPlainTextEdit>(f, u"txtMensaje"_s)->toPlainText().isEmpty(),
                 queda.isEmpty());
        const auto enviadas = Conexion().query(
            u"select count(*) from envios where mensaje=? and intento=2 and canal=1"_s,
            {u"Hola\nqué tal"_s});
        QCOMPARE(enviadas.value(0, 0).toInt(), filas.size());
        QCOMPARE(hijo<VistaLineas>(f, u"ListView1"_s)->model()->rowCount(), filas.size());
    }

    void emptyTextOrNoDestinations() {
        InterfazGuionada ui;
        frmEnvio f;
        escribir(f, u"ana"_s, u"   "_s);
        hijo<QPushButton>(f, u"cmdAñadir"_s)->click();
        QVERIFY(ui.boxes.isEmpty());
        QCOMPARE(hijo<QLineEdit>(f, u"Text1"_s)->text(), u"ana"_s);
        escribir(f, u"  "_s, u"hola"_s);
        hijo<QPushButton>(f, u"cmdAñadir"_s)->click();
        QCOMPARE(prueba::cajas(ui),
                 QStringList{prueba::caja(Msg::Exclamation,
                                          u"No seleccionó destinatarios para este mensaje .."_s)});
        QCOMPARE(hijo<QPlainTextEdit>(f, u"txtMensaje"_s)->toPlainText(), u"hola"_s);
        QVERIFY(abonadosEnBandeja().isEmpty());
        // Only blanks count as empty: line breaks are a text.
        escribir(f, u"ana"_s, u" \n\n"_s);
        hijo<QPushButton>(f, u"cmdAñadir"_s)->click();
        QTRY_VERIFY(!f.ocupada());
        QCOMPARE(abonadosEnBandeja(), QStringList{u"0034600000001"_s});
    }

    void counter_data() {
        QTest::addColumn<QString>("tini");
        QTest::addColumn<QString>("texto");
        QTest::addColumn<QString>("etiqueta");
        QTest::addColumn<bool>("mas");
        const QString x159(159, u'x');
        QTest::newRow("160") << QString() << x159 + u'x' << u"(160)"_s << false;
        QTest::newRow("161") << QString() << x159 + u"xx"_s << u"(161)"_s << true;
        QTest::newRow("a line break counts two") << QString() << x159 + u'\n' << u"(161)"_s << true;
        QTest::newRow("150 with account texts")
            << u"12345"_s << QString(150, u'x') << u"(160) Incluye textos inicio/fin"_s << false;
        QTest::newRow("151 with account texts")
            << u"12345"_s << QString(151, u'x') << u"(161) Incluye textos inicio/fin"_s << true;
    }
    void counter() {
        QFETCH(QString, tini);
        QFETCH(QString, texto);
        InterfazGuionada ui;
        sql(u"UPDATE Canales SET tini=?, tfin=? WHERE Canal=1"_s, {tini, tini});
        frmEnvio f;
        f.show();
        Q_EMIT Avisos::instancia().textoElegido(texto);
        QTEST(hijo<QLabel>(f, u"lblCaracteres"_s)->text(), "etiqueta");
        QTEST(hijo<QLabel>(f, u"lblmas"_s)->isVisible(), "mas");
    }

    void accountsCombo() {
        InterfazGuionada ui;
        frmEnvio f;
        auto* combo = hijo<QComboBox>(f, u"ImageCombo1"_s);
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->currentText(), u"Cuenta_1   (12 Créditos)  Remitente: Juan"_s);
        QCOMPARE(combo->itemText(1), u"Otra   (3 Créditos)"_s);
        // The user's choice survives a reload that brings new balances.
        combo->setCurrentIndex(1);
        sql(u"UPDATE Canales SET Saldo=40 WHERE Canal=2"_s);
        QVERIFY(f.msCargarCanales());
        QCOMPARE(combo->currentText(), u"Otra   (40 Créditos)"_s);
        sql(u"DELETE FROM Canales"_s);
        QVERIFY(!f.msCargarCanales());
        QCOMPARE(ui.firstRunShown, 1);
    }

    void outboxListRedrawsOnCountChange() {
        InterfazGuionada ui;
        sql(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
            u"('2026-03-04 05:06:07',1,'0034600000009','uno',2),"
            u"('2026-03-04 05:06:08',9,'0034600000008','cuenta borrada',2),"
            u"('2026-03-05',2,'0034600000007','solo fecha',2)"_s);
        frmEnvio f;
        QCOMPARE(lista(f, 0, 1), u"04/03 05:06:07"_s);
        QCOMPARE(lista(f, 1, 1), u"05/03 00:00:00"_s);
        QCOMPARE(lista(f, 0, 2), u"0034600000009"_s);
        QCOMPARE(lista(f, 0, 3), u"Cuenta_1 (Juan)"_s);
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), u"2 mensajes listos para enviar"_s);
        // Same count: the refresh leaves the list as drawn.
        sql(u"UPDATE envios SET Mensaje='cambiado'"_s);
        refrescar(f);
        QCOMPARE(lista(f, 0, 4), u"uno"_s);
        // A row gone and two come (a batch left, a script queued): the list
        // is read anew, the row changed meanwhile as it is now.
        sql(u"DELETE FROM envios WHERE Registro='2026-03-04 05:06:07'"_s);
        sql(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
            u"('2026-03-04 05:06:09',2,'0044','dos',2),"
            u"('2026-03-04 05:06:10',1,'0045','tres',2)"_s);
        refrescar(f);
        auto* m = static_cast<ModeloListado*>(hijo<VistaLineas>(f, u"ListView1"_s)->model());
        QCOMPARE(prueba::textosDe(m, 4), (QStringList{u"cambiado"_s, u"dos"_s, u"tres"_s}));
        QCOMPARE(lista(f, 1, 3), u"Otra"_s);
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), u"3 mensajes listos para enviar"_s);
        // Rows back under older numbers than the list holds: read whole.
        sql(u"DELETE FROM envios"_s);
        sql(u"INSERT INTO envios (Id,Registro,Canal,Abonado,Mensaje,intento) VALUES "
            u"(1,'2026-03-04 05:06:07',1,'0034600000009','de nuevo',2)"_s);
        refrescar(f);
        QCOMPARE(prueba::textosDe(m, 4), QStringList{u"de nuevo"_s});
    }

    void modifyDeleteAndDeleteAll() {
        InterfazGuionada ui;
        sql(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
            u"('2026-03-04 05:06:07',1,'0034600000009','uno',2),"
            u"('2026-03-04 05:06:08',1,'0034600000008','dos',2),"
            u"('2026-03-04 05:06:09',1,'0034600000007','tres',2)"_s);
        frmEnvio f;
        auto* lv = hijo<VistaLineas>(f, u"ListView1"_s);
        // The Id stays out of sight, still there for the lines' order and
        // for what modify and delete act on.
        QVERIFY(lv->isColumnHidden(0));
        lv->setCurrentIndex(lv->model()->index(1, 0));
        ui.answers = {Msg::No, Msg::Yes};
        hijo<QPushButton>(f, u"cmdModificar"_s)->click();
        QCOMPARE(abonadosEnBandeja().size(), 3);
        QCOMPARE(prueba::cajas(ui), QStringList{prueba::caja(
                                        Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2,
                                        u"Desea modificar el \nMensaje: Cuenta_1 (Juan)\nTerminal: "
                                        u"0034600000008\nDe fecha : 04/03 05:06:08"_s)});
        hijo<QPushButton>(f, u"cmdModificar"_s)->click();
        QCOMPARE(abonadosEnBandeja(), (QStringList{u"0034600000009"_s, u"0034600000007"_s}));
        QCOMPARE(hijo<QLineEdit>(f, u"Text1"_s)->text(), u"0034600000008"_s);
        QCOMPARE(hijo<QPlainTextEdit>(f, u"txtMensaje"_s)->toPlainText(), u"dos"_s);

        lv->setCurrentIndex(lv->model()->index(0, 0));
        ui.answers = {Msg::Yes};
        hijo<QPushButton>(f, u"cmdEliminar"_s)->click();
        QVERIFY(ui.boxes.last().text.startsWith(u"¿Realmente desea eliminar el \nMensaje: "_s));
        QCOMPARE(abonadosEnBandeja(), QStringList{u"0034600000007"_s});
        QCOMPARE(lv->model()->rowCount(), 1);
        ui.answers = {Msg::Yes};
        hijo<QPushButton>(f, u"cmdEliminarTodos"_s)->click();
        QCOMPARE(ui.boxes.last().text,
                 u"¿Realmente desea eliminar todos los mensajes de la Bandeja de Salida?\n"_s);
        QVERIFY(abonadosEnBandeja().isEmpty());
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), QString());
    }

    void outboxRoutinesTellTheScreens_data() {
        QTest::addColumn<QString>("accion");
        QTest::addColumn<QStringList>("quedan");
        QTest::addColumn<int>("avisos");
        const QString a = u"0034600000009"_s, b = u"0034600000008"_s;
        QTest::newRow("take back") << u"retirar 2"_s << QStringList{a} << 1;
        QTest::newRow("take back a row already gone") << u"retirar 9"_s << QStringList{a, b} << 0;
        QTest::newRow("delete one") << u"borrar 1"_s << QStringList{b} << 1;
        QTest::newRow("empty") << u"vaciar"_s << QStringList() << 1;
        QTest::newRow("add") << u"agregar ana"_s << QStringList{a, b, u"0034600000001"_s} << 1;
        QTest::newRow("add, all refused") << u"agregar nadie"_s << QStringList{a, b} << 0;
    }
    void outboxRoutinesTellTheScreens() {
        QFETCH(QString, accion);
        QFETCH(int, avisos);
        InterfazGuionada ui;
        sql(u"INSERT INTO envios (Id,Registro,Canal,Abonado,Mensaje,intento) VALUES "
            u"(1,'2026-03-04 05:06:07',1,'0034600000009','uno',2),"
            u"(2,'2026-03-04 05:06:08',1,'0034600000008','dos',2)"_s);
        QSignalSpy bandeja(&Avisos::instancia(), &Avisos::bandejaCambiada);
        const QString orden = accion.section(u' ', 0, 0), arg = accion.section(u' ', 1);
        if (orden == u"retirar"_s) {
            const std::optional<MensajeRetirado> m = retirarDeBandeja(arg);
            QCOMPARE(m.has_value(), avisos == 1);
            if (m) QCOMPARE(m->destino + u' ' + m->texto, u"0034600000008 dos"_s);
        } else if (orden == u"borrar"_s) {
            borrarDeBandeja(arg);
        } else if (orden == u"vaciar"_s) {
            vaciarBandeja([](const ErrorBD* fallo) { QVERIFY(!fallo); });
        } else {
            agregar(arg);
        }
        QTEST(abonadosEnBandeja(), "quedan");
        QCOMPARE(int(bandeja.count()), avisos);
    }

    void openScreenFollowsTheOutbox() {
        InterfazGuionada ui;
        frmEnvio f;
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), QString());
        QCOMPARE(agregar(u"ana;pepe"_s), QString());
        QCOMPARE(lista(f, 1, 2), u"0034600000002"_s);
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), u"2 mensajes listos para enviar"_s);
    }

    void pickerAndPredefinedTextReachTheScreen() {
        InterfazGuionada ui;
        int abiertos = 0;
        Pantallas::registrar(u"frmSeleccion"_s, [&] {
            ++abiertos;
            estadoAplicacion().gsDestinos = u"ana;pepe"_s;
        });
        {
            frmEnvio f;
            hijo<QLineEdit>(f, u"Text1"_s)->setText(u"lo de antes"_s);
            hijo<QPushButton>(f, u"cmdAbonados"_s)->click();
            QCOMPARE(abiertos, 1);
            QCOMPARE(hijo<QLineEdit>(f, u"Text1"_s)->text(), u"ana;pepe"_s);
            Q_EMIT Avisos::instancia().textoElegido(u"predefinido"_s);
            auto* texto = hijo<QPlainTextEdit>(f, u"txtMensaje"_s);
            QCOMPARE(texto->toPlainText(), u"predefinido"_s);
            QCOMPARE(hijo<QLabel>(f, u"lblCaracteres"_s)->text(), u"(11)"_s);

            // Enter with nothing offered moves on to the text; F2 there opens
            // the predefined texts, Esc empties it.
            int predefinidos = 0;
            Pantallas::registrar(u"frmSelecMenPro"_s, [&] { ++predefinidos; });
            f.show();
            f.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&f));
            hijo<QLineEdit>(f, u"Text1"_s)->setFocus();
            QTest::keyClick(hijo<QLineEdit>(f, u"Text1"_s), Qt::Key_Return);
            QVERIFY(texto->hasFocus());
            QTest::keyClick(texto, Qt::Key_F2);
            QCOMPARE(predefinidos, 1);
            QTest::keyClick(texto, Qt::Key_Escape);
            QVERIFY(texto->toPlainText().isEmpty());
        }
        // The screen's listening goes with it: a text chosen later reaches nobody.
        Q_EMIT Avisos::instancia().textoElegido(u"x"_s);
    }

    // Every contact of a large book, chosen in the picker, goes in: the
    // box takes the whole list, and the rows go in one transaction over
    // turns of the event loop, the screen taking nothing meanwhile. Closed
    // before it is stored, nothing went in and every name stays to be sent.
    void aLongChoiceGoesInWhole_data() { prueba::filasOtroPrograma("stored"); }
    void aLongChoiceGoesInWhole() {
        QFETCH(bool, ajeno);
        QFETCH(bool, cortar);
        constexpr int kContactos = 4000;
        sql(u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO Abonados (Codigo,Alias,Canal) "
            u"SELECT '0034' || (610000000 + i), printf('contacto %04d', i), 1 FROM n"_s,
            {kContactos - 1});
        QStringList nombres;
        for (int i = 0; i < kContactos; ++i)
            nombres.append(u"contacto %1"_s.arg(i, 4, 10, QChar(u'0')));
        const QString elegidos = nombres.join(u';');
        Pantallas::registrar(u"frmSeleccion"_s, [&] { estadoAplicacion().gsDestinos = elegidos; });
        std::optional<prueba::OtroPrograma> otro = prueba::otroPrograma(ajeno, prueba::bd().path());
        InterfazGuionada ui;
        frmEnvio f;
        f.show();
        hijo<QPushButton>(f, u"cmdAbonados"_s)->click();
        auto* caja = hijo<crtAutoComplete>(f, u"crtAutoComplete1"_s);
        QCOMPARE(caja->Texto(), elegidos);
        auto* texto = hijo<QPlainTextEdit>(f, u"txtMensaje"_s);
        texto->setPlainText(u"a todos"_s);
        int giros = 0;
        QTimer reloj;
        connect(&reloj, &QTimer::timeout, [&] { ++giros; });
        reloj.start(1);
        hijo<QPushButton>(f, u"cmdAñadir"_s)->click();
        QVERIFY(f.ocupada());
        QVERIFY(!caja->isEnabled() && !texto->isEnabled() &&
                !hijo<QPushButton>(f, u"cmdEliminarTodos"_s)->isEnabled());
        prueba::dejarPasar(otro, cortar, [&] { return f.ocupada(); });
        QTRY_VERIFY_WITH_TIMEOUT(!f.ocupada(), 20000);
        QVERIFY(caja->isEnabled() && texto->isEnabled());
        if (cortar) {
            QCOMPARE(caja->Texto(), elegidos);
            QCOMPARE(texto->toPlainText(), u"a todos"_s);
            QCOMPARE(lineasLog().last(),
                     u"No se pudieron añadir los mensajes: La conexión con la base de datos se "
                     u"cerró"_s);
            TestDb::openShared(m_ruta);
            QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), 0);
            return;
        }
        QVERIFY2(giros > 2, qPrintable(QString::number(giros)));
        QCOMPARE(caja->Texto(), QString());
        QCOMPARE(texto->toPlainText(), QString());
        QCOMPARE(prueba::cuantos(u"SELECT count(DISTINCT Abonado) FROM envios WHERE Mensaje = "
                                 u"'a todos' AND Canal = 1"_s),
                 kContactos);
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), kContactos);
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), u"4000 mensajes listos para enviar"_s);
        QVERIFY(ui.boxes.isEmpty());
    }

    // The box offers every contact in the lists' order; a large book is
    // read over turns after the screen opens.
    void theBoxOffersEveryContactInOrder() {
        sql(u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 9999) "
            u"INSERT INTO Abonados (Codigo,Alias,Canal) "
            u"SELECT '0034' || (610000000 + i), CASE i % 3 WHEN 0 THEN 'Álvaro ' WHEN 1 THEN "
            u"'beatriz ' ELSE 'Ñuño ' END || ((i * 7919) % 10000), 1 FROM n"_s);
        const QString todos =
            prueba::columna(u"SELECT Alias FROM Abonados ORDER BY Alias COLLATE REGLA_LISTAS"_s)
                .join(u';');
        InterfazGuionada ui;
        frmEnvio f;
        auto* caja = hijo<crtAutoComplete>(f, u"crtAutoComplete1"_s);
        QTRY_COMPARE(caja->SearchList().size(), todos.size());
        QCOMPARE(caja->SearchList(), todos);
    }

    void opensOnceInTheFrameAt100() {
        InterfazGuionada ui;
        QMdiArea area;
        area.resize(1200, 900);
        area.show();
        PantallasHijas::setArea(&area);
        registrarPantallasEnvio();
        QVERIFY(Pantallas::abrir(u"frmEnvio"_s));
        QVERIFY(Pantallas::abrir(u"frmEnvio"_s));
        QCOMPARE(area.subWindowList().size(), 1);
        QMdiSubWindow* sub = area.subWindowList().first();
        QCOMPARE(sub->widget()->windowTitle(), u"Envío de Mensajes"_s);
        QCOMPARE(sub->pos(), QPoint(100, 100));
        // The outbox gets the height the text box doesn't need.
        QVERIFY(hijo<VistaLineas>(*sub->widget(), u"ListView1"_s)->height() >
                2 * hijo<QPlainTextEdit>(*sub->widget(), u"txtMensaje"_s)->height());
        // A resize centres it across and puts it a quarter down.
        sub->resize(600, 500);
        QCOMPARE(sub->pos(), QPoint(300, 100));
        PantallasHijas::setArea(nullptr);
    }

    // The first start's frame leaves less than the screen's usual size:
    // there it opens whole, nearer the corner, and still at 100,100 across
    // when that leaves room.
    void fitsASmallFrame_data() {
        QTest::addColumn<QSize>("marco");
        QTest::addColumn<int>("izquierda");
        QTest::newRow("default frame's area") << QSize(1000, 460) << 100;
        QTest::newRow("narrow and low") << QSize(760, 450) << 36;
    }
    void fitsASmallFrame() {
        QFETCH(QSize, marco);
        InterfazGuionada ui;
        QMdiArea area;
        area.resize(marco);
        area.show();
        PantallasHijas::setArea(&area);
        registrarPantallasEnvio();
        QVERIFY(Pantallas::abrir(u"frmEnvio"_s));
        QMdiSubWindow* sub = area.subWindowList().first();
        QVERIFY2(
            area.viewport()->rect().contains(sub->geometry()),
            qPrintable(
                u"%1,%2 %3x%4"_s.arg(sub->x()).arg(sub->y()).arg(sub->width()).arg(sub->height())));
        QTEST(sub->x(), "izquierda");
        // Down as far as 100 while it still shows whole.
        QCOMPARE(sub->y(), qMin(100, area.viewport()->height() - sub->height()));
        auto* lista = hijo<VistaLineas>(*sub->widget(), u"ListView1"_s);
        QVERIFY(lista->height() >= 4 * lista->fontMetrics().lineSpacing());
        // Nothing lies over the text box.
        QVERIFY(hijo<QPlainTextEdit>(*sub->widget(), u"txtMensaje"_s)->geometry().bottom() <
                hijo<QLabel>(*sub->widget(), u"lblCaracteres"_s)->geometry().top());
        PantallasHijas::setArea(nullptr);
    }

    void transmitterSwitch() {
        InterfazGuionada ui;
        Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, u"1"_s);
        frmEnvio f;
        f.show();
        auto* lmt = hijo<QLabel>(f, u"lmt"_s);
        QCOMPARE(lmt->text(), u"Envío de SMS Activado"_s);
        QTest::mouseDClick(hijo<QLabel>(f, u"imgmt"_s), Qt::LeftButton);
        QCOMPARE(Ajustes::getSetting(u"Tr"_s, u"Activo"_s), u"0"_s);
        QCOMPARE(lmt->text(), u"Envío de SMS Desactivado"_s);
        QCOMPARE(lmt->palette().color(QPalette::WindowText), QColor(255, 0, 0));
        QVERIFY(!hijo<QPushButton>(f, u"cmdEnviar"_s)->isEnabled());
    }

    // Each sequence of header clicks orders the outbox as the list kept in
    // memory did: by the shown text (dates and numbers too) under the lists'
    // rule, equal texts in the order they stood in.
    // With `cuentas`, accounts whose names sort otherwise than their codes,
    // empty, equal under the rule or the same, one holding most rows, over
    // several pages; `lejos` reads the last line first.
    void outboxSortsAsTheListInMemory_data() {
        QTest::addColumn<QList<int>>("clics");
        QTest::addColumn<int>("filas");
        QTest::addColumn<bool>("cuentas");
        QTest::addColumn<bool>("lejos");
        QTest::newRow("Id, as text") << QList<int>{0} << 12 << false << false;
        QTest::newRow("Fecha") << QList<int>{1} << 12 << false << false;
        QTest::newRow("Destinatario, then Cuenta") << QList<int>{2, 3} << 12 << false << false;
        QTest::newRow("Mensaje, then Fecha") << QList<int>{4, 1} << 12 << false << false;
        QTest::newRow("Cuenta, then Mensaje twice") << QList<int>{3, 4, 4} << 12 << false << false;
        QTest::newRow("accounts: Cuenta both ways") << QList<int>{3, 3} << 600 << true << false;
        QTest::newRow("accounts: Fecha, then Cuenta") << QList<int>{1, 3} << 600 << true << false;
        QTest::newRow("accounts: Mensaje, then Cuenta") << QList<int>{4, 3} << 600 << true << false;
        QTest::newRow("accounts: Destinatario, then Cuenta, from the end")
            << QList<int>{2, 3} << 1500 << true << true;
    }
    void outboxSortsAsTheListInMemory() {
        QFETCH(QList<int>, clics);
        QFETCH(int, filas);
        QFETCH(bool, cuentas);
        QFETCH(bool, lejos);
        const QList<int> otras{0, 3, 4, 5, 6, 7, 200, 2};
        if (cuentas)
            sql(u"INSERT INTO Canales (Canal,Nombre,Remitente) VALUES (0,'Zorro',NULL),"
                u"(3,'ábaco',''),(4,NULL,NULL),(5,'',' '),(6,'OTRA',NULL),(7,'Otra',''),"
                u"(200,'Beta','Rem')"_s);
        const QStringList textos{u"Ñandú"_s, u"nube"_s, u"árbol"_s, u"Zapato"_s,
                                 u"nube"_s,  u"Oca"_s,  u"ábaco"_s, u"nube"_s};
        Conexion().begin();
        for (int i = 0; i < filas; ++i)
            sql(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
                u"(?,?,?,?,2)"_s,
                {u"2026-03-%1 05:06:0%2"_s.arg(10 + i % 3).arg(i % 2),
                 // Most rows in the first account: it is read along the
                 // order's own index, the others on the account's.
                 !cuentas ? 1 + i % 2
                 : i % 4  ? 1
                          : otras.at(i / 4 % otras.size()),
                 u"00346000000%1"_s.arg(i % 5), textos.at(i % textos.size())});
        Conexion().commit();
        frmEnvio f;
        auto* l = hijo<Listado>(f, u"ListView1"_s);
        ModeloListado antes(
            {u"Id"_s, u"Fecha"_s, u"Destinatario"_s, u"Cuenta (Remitente)"_s, u"Mensaje"_s});
        QVector<QString> celdas;
        for (int r = 0; r < l->modelo()->rowCount(); ++r) celdas += l->modelo()->fila(r);
        antes.asignar(celdas);
        QCOMPARE(prueba::textosDe(&antes, 0).size(), filas);
        bool descendente = false;
        for (int c : clics) {
            l->ordenarPorColumna(c);
            descendente = !descendente;
            antes.sort(c, descendente ? Qt::DescendingOrder : Qt::AscendingOrder);
            if (lejos) QCOMPARE(l->modelo()->texto(filas - 1, 0), antes.texto(filas - 1, 0));
            for (int col = 0; col < 5; ++col)
                QCOMPARE(prueba::textosDe(l, col), prueba::textosDe(&antes, col));
        }
    }

    // "Eliminar Todos" empties the outbox in one transaction over turns,
    // waiting for a lock another program holds without holding the window:
    // meanwhile the list and the buttons that take or give messages wait.
    // Emptied, each account's kept count is zero and goes on counting, and
    // the numbers handed out are never handed out again. Closed before it
    // ends, the outbox is as it was.
    void aFullOutboxIsEmptiedWhole_data() { prueba::filasOtroPrograma("emptied"); }
    void aFullOutboxIsEmptiedWhole() {
        QFETCH(bool, ajeno);
        QFETCH(bool, cortar);
        constexpr int kFilas = 20000;
        sql(u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
            u"SELECT '2026-03-1' || (i % 10) || ' 05:06:07', 1 + i % 2, '0034600' || i, 'hola', 2 "
            u"FROM n"_s,
            {kFilas - 1});
        const auto cuentas = [] {
            return prueba::filas(u"SELECT Canal, Filas FROM EnviosPorCanal WHERE Filas <> 0"_s);
        };
        const QStringList antes = cuentas();
        const QString ruta = prueba::bd().path();
        std::optional<prueba::OtroPrograma> otro = prueba::otroPrograma(ajeno, ruta);
        InterfazGuionada ui;
        frmEnvio f;
        f.show();
        auto* l = hijo<Listado>(f, u"ListView1"_s);
        ui.answers = {Msg::Yes};
        hijo<QPushButton>(f, u"cmdEliminarTodos"_s)->click();
        if (ajeno) {
            QVERIFY(f.ocupada());
            QVERIFY(!l->isEnabled() && !hijo<QPushButton>(f, u"cmdAñadir"_s)->isEnabled());
        }
        prueba::dejarPasar(otro, cortar, [&] { return f.ocupada(); });
        QTRY_VERIFY(!f.ocupada());
        QVERIFY(l->isEnabled());
        if (cortar) {
            TestDb::openShared(ruta);
            QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), kFilas);
            QCOMPARE(cuentas(), antes);
            return;
        }
        QCOMPARE(l->modelo()->rowCount(), 0);
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), QString());
        QCOMPARE(prueba::cuantos(u"SELECT count(*) FROM envios"_s), 0);
        QCOMPARE(cuentas(), QStringList());
        QCOMPARE(agregar(u"ana;pepe"_s), QString());
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(), u"2 mensajes listos para enviar"_s);
        sql(u"DELETE FROM envios WHERE Abonado = '0034600000001'"_s);
        QCOMPARE(cuentas(), QStringList{u"1|1"_s});
        QCOMPARE(prueba::cuantos(u"SELECT min(Id) FROM envios"_s), kFilas + 2);
    }

    // A long outbox is sorted over turns of the event loop: what the lines
    // show once read, and the chosen line on its row, are those of the list
    // sorted in memory. Texts repeat (equal lines keep the order before),
    // a hundred lines come before dates that tie by the ten thousand, and
    // each account holds half the rows.
    void aLongListIsSortedOverTurns_data() {
        QTest::addColumn<QList<int>>("clics");
        QTest::newRow("Mensaje") << QList<int>{4};
        QTest::newRow("Mensaje, then Fecha") << QList<int>{4, 1};
        QTest::newRow("Mensaje, then Cuenta") << QList<int>{4, 3};
    }
    void aLongListIsSortedOverTurns() {
        QFETCH(QList<int>, clics);
        constexpr int kFilas = 100000;
        constexpr int kVistas = 600;
        sql(u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?), "
            u"t(k, texto) AS (VALUES (0,'Ñandú'),(1,'nube'),(2,'árbol'),(3,'Zapato'),(4,'nube'),"
            u"(5,'Oca'),(6,'ábaco'),(7,'NUBE')) "
            u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
            u"SELECT CASE WHEN i % 1000 THEN '2026-03-1' || (i % 3) ELSE '2026-03-09' END || "
            u"' 05:06:07', 1 + (i / 7) % 2, '0034600' || i, "
            u"texto || ' ' || (i % 50), 2 FROM n JOIN t ON k = i % 8 ORDER BY i"_s,
            {kFilas - 1});
        frmEnvio f;
        f.show();
        auto* l = hijo<Listado>(f, u"ListView1"_s);
        auto* m = qobject_cast<ModeloPaginado*>(l->modelo());
        QVERIFY(m);
        ModeloListado antes(
            {u"Id"_s, u"Fecha"_s, u"Destinatario"_s, u"Cuenta (Remitente)"_s, u"Mensaje"_s});
        QVector<QString> celdas;
        for (int r = 0; r < kFilas; ++r) celdas += m->fila(r);
        antes.asignar(celdas);
        // The lines a paint asks for, as it asks.
        const auto mostradas = [&](const QAbstractItemModel* x, int desde = 0) {
            QStringList t;
            for (int r = desde; r < desde + kVistas; ++r)
                for (int c = 0; c < 5; ++c) t.append(x->index(r, c).data().toString());
            return t;
        };
        bool descendente = false;
        for (int c : clics) {
            QStringList arriba;
            for (int r = 0; r < 250; ++r) arriba.append(m->texto(r, 0));
            descendente = !descendente;
            antes.sort(c, descendente ? Qt::DescendingOrder : Qt::AscendingOrder);
            // A line read in both orders, chosen before the click.
            int linea = 0;
            while (linea < 250 && !arriba.contains(antes.texto(linea, 0))) ++linea;
            QVERIFY(linea < 250);
            l->seleccionarFila(int(arriba.indexOf(antes.texto(linea, 0))));
            l->ordenarPorColumna(c);
            // Three pages of a hundred thousand texts take more than a
            // paint's share: the rest come over turns.
            if (c == 4) QVERIFY(mostradas(m).last().isEmpty() && m->leyendo());
            QTRY_COMPARE_WITH_TIMEOUT(mostradas(m), mostradas(&antes), 20000);
            QTRY_VERIFY(!m->leyendo());
            QCOMPARE(l->filaActual(), linea);
            // A jump far down reads the lines about where it lands: inside
            // one account, and where the first account's lines end.
            for (const int lejos : {70000, 49900})
                QTRY_COMPARE_WITH_TIMEOUT(mostradas(m, lejos), mostradas(&antes, lejos), 20000);
        }
    }

    // Rows the transmitter adds or takes show at the next refresh, and the
    // line the user chose stays chosen wherever its row went.
    void refreshKeepsTheChosenLine_data() {
        QTest::addColumn<int>("filas");
        QTest::addColumn<int>("columna");  // sorted by a header click first; -1 not
        QTest::addColumn<int>("elegida");
        QTest::addColumn<QString>("cambio");
        QTest::addColumn<int>("linea");  // where it is after the refresh; -1 gone
        const QString una =
            u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
            u"VALUES ('2026-03-04 05:06:07',1,'0034600000009','m9',2)"_s;
        QTest::newRow("a row came") << 5 << -1 << 2 << una << 2;
        QTest::newRow("a row before it went")
            << 5 << -1 << 2 << u"DELETE FROM envios WHERE Id = 1"_s << 1;
        QTest::newRow("its row went") << 5 << -1 << 2 << u"DELETE FROM envios WHERE Id = 3"_s << -1;
        QTest::newRow("sorted, a row came before it") << 5 << 4 << 2 << una << 3;
        QTest::newRow("far down, a batch before it went")
            << 2500 << -1 << 2400 << u"DELETE FROM envios WHERE Id <= 1500"_s << 900;
    }
    void refreshKeepsTheChosenLine() {
        QFETCH(int, filas);
        QFETCH(int, columna);
        QFETCH(int, elegida);
        QFETCH(QString, cambio);
        QFETCH(int, linea);
        sql(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
            u"SELECT '2026-03-04 05:06:07', 1, '0034600000001', 'm' || i, 2 FROM n"_s,
            {filas});
        InterfazGuionada ui;
        frmEnvio f;
        auto* l = hijo<Listado>(f, u"ListView1"_s);
        if (columna >= 0) l->ordenarPorColumna(columna);
        l->seleccionarFila(elegida);
        const QString id = l->modelo()->texto(elegida, 0);
        sql(cambio);
        refrescar(f);
        const int quedan = int(prueba::cuantos(u"select count(*) from envios"_s));
        QCOMPARE(l->modelo()->rowCount(), quedan);
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(),
                 u"%1 mensajes listos para enviar"_s.arg(quedan));
        QCOMPARE(l->filaActual(), linea);
        if (linea >= 0) QCOMPARE(l->modelo()->texto(linea, 0), id);
    }
    // The count the list shows is kept by the file itself: whatever another
    // SQLite client writes, in whatever account (one that no longer exists,
    // none, a code that is no number), it equals a walk of the outbox.
    void keptCountFollowsEveryWriter_data() {
        QTest::addColumn<QString>("guion");
        QTest::newRow("inserts") << u"INSERT INTO envios (Canal,Abonado) VALUES (1,'a'),(2,'b'),"
                                    u"(9,'c'),(NULL,'d'),('x','e'),('2','f');"_s;
        QTest::newRow("deletes") << u"DELETE FROM envios WHERE Id IN (1,3); DELETE FROM envios "
                                    u"WHERE Canal IS NULL;"_s;
        QTest::newRow("moves between accounts")
            << u"UPDATE envios SET Canal=2 WHERE Id=1; UPDATE envios SET Canal=NULL WHERE Id=2; "
               u"UPDATE envios SET Canal=1 WHERE Canal IS NULL; UPDATE envios SET Canal=9 "
               u"WHERE Id=4; UPDATE envios SET Mensaje='otro';"_s;
        QTest::newRow("the writer's conflict clauses")
            << u"INSERT OR IGNORE INTO envios (Id,Canal) VALUES (1,2); INSERT OR REPLACE INTO "
               u"envios (Canal) VALUES (1); INSERT OR ROLLBACK INTO envios (Canal) VALUES (2); "
               u"INSERT INTO envios (Id,Canal) VALUES (2,1) ON CONFLICT(Id) DO UPDATE SET "
               u"Canal=excluded.Canal; UPDATE OR FAIL envios SET Canal=2 WHERE Id=1;"_s;
        QTest::newRow("rolled back")
            << u"BEGIN; INSERT INTO envios (Canal) VALUES (1); DELETE FROM envios WHERE Id=1; "
               u"ROLLBACK;"_s;
        QTest::newRow("everything") << u"DELETE FROM envios;"_s;
    }
    void keptCountFollowsEveryWriter() {
        QFETCH(QString, guion);
        sql(u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
            u"('2026-03-04 05:06:07',1,'0034600000001','m',2),"
            u"('2026-03-04 05:06:07',2,'0034600000002','m',2),"
            u"('2026-03-04 05:06:07',9,'0034600000003','m',2),"
            u"('2026-03-04 05:06:07',NULL,'0034600000004','m',2)"_s);
        prueba::shell(m_ruta, guion);
        const QString porCuenta =
            u"SELECT Canal, Filas FROM EnviosPorCanal WHERE Filas <> 0 ORDER BY Canal"_s;
        QCOMPARE(prueba::filas(porCuenta),
                 prueba::filas(u"SELECT Canal, count(*) FROM envios WHERE Canal IS NOT NULL "
                               u"GROUP BY Canal ORDER BY Canal"_s));
        const long long n = prueba::cuantos(
            u"SELECT count(*) FROM envios INNER JOIN canales ON envios.canal = canales.canal"_s);
        frmEnvio f;
        QCOMPARE(hijo<QLabel>(f, u"lblcont"_s)->text(),
                 n ? u"%1 mensajes listos para enviar"_s.arg(n) : QString());
        QCOMPARE(hijo<Listado>(f, u"ListView1"_s)->modelo()->rowCount(), int(n));
    }
};

QUELMO_GUI_TEST_MAIN(TestEnvio)
#include "test_envio.moc"

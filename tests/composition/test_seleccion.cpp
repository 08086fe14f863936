// The recipient picker: how chosen contacts and lists become one
// destinations text, and the moves and search of its screen.
#include "TestSupportGui.h"
#include "base/EstadoAplicacion.h"
#include "composition/Seleccion.h"
#include "composition/frmSeleccion.h"
#include "widgets/Listado.h"
#include "widgets/ModeloListado.h"

#include <QLineEdit>
#include <QPushButton>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using prueba::textosDe;

// A chosen line, as the picker's third list holds it.
struct Linea {
    QString texto;
    QString detalle;
};
Q_DECLARE_METATYPE(QVector<Linea>)

namespace {
using prueba::bd;
Linea lista(const QString& nombre) {
    return {nombre, detalleLista(u"9"_s)};
}
Linea contacto(const QString& alias) {
    return {alias, u"0034600"_s};
}
// The chosen lines worked out, to the end.
std::pair<Hecho, QString> elegir(const QVector<Linea>& lineas) {
    QVector<QString> celdas;
    for (const Linea& l : lineas) celdas << l.texto << l.detalle;
    std::optional<std::pair<Hecho, QString>> r;
    msDestinosSeleccionados(celdas, [&](const Hecho& h, const QString& a) { r.emplace(h, a); });
    if (!QTest::qWaitFor([&] { return r.has_value(); }))
        return {Hecho::no(u"sin terminar"_s), QString()};
    return *r;
}
}  // namespace

class TestSeleccion : public Prueba {
    Q_OBJECT
    using Prueba::Prueba;

    static ModeloListado* modelo(QWidget& f, const QString& nombre) {
        return static_cast<ModeloListado*>(f.findChild<VistaLineas*>(nombre)->model());
    }

  private Q_SLOTS:
    void init() {
        world.baseNueva(u"sel.db"_s);
        bd().execScript(
            u"INSERT INTO Abonados (Codigo,Alias) VALUES ('003401','ana'),('003402','bea'),"
            u"('003403','carla'),('003404','dani'); INSERT INTO Grupos (Grupo,Nombre) VALUES "
            u"(0,'amigos'),(1,'trabajo'),(2,'vacia'); INSERT INTO AboGrup (Abonado,Grupo) "
            u"VALUES ('003402',0),('003403',0),('003403',1),('003499',1)"_s);
    }

    void expansion_data() {
        QTest::addColumn<QVector<Linea>>("elegidos");
        QTest::addColumn<QString>("destinos");
        QTest::newRow("nothing") << QVector<Linea>{} << QString();
        QTest::newRow("empty list alone") << QVector{lista(u"vacia"_s)} << QString();
        QTest::newRow("list twice expands once")
            << QVector{lista(u"amigos"_s), lista(u"AMIGOS"_s)} << u"bea;carla"_s;
        QTest::newRow("member in two lists once, unknown member empty")
            << QVector{lista(u"amigos"_s), lista(u"trabajo"_s)} << u"bea;carla;"_s;
        QTest::newRow("list members first, single contacts once")
            << QVector{contacto(u"dani"_s), contacto(u"carla"_s), lista(u"amigos"_s),
                       contacto(u"ana"_s)}
            << u"bea;carla;ana;dani"_s;
        QTest::newRow("contacts alone")
            << QVector{contacto(u"dani"_s), contacto(u"bea"_s)} << u"bea;dani"_s;
    }
    void expansion() {
        QFETCH(QVector<Linea>, elegidos);
        QFETCH(QString, destinos);
        const auto [hecho, aliases] = elegir(elegidos);
        QVERIFY(hecho.ok());
        QCOMPARE(aliases, destinos);
    }

    void failureIsRefused() {
        bd().exec(u"DROP TABLE AboGrup"_s);
        const auto [h, aliases] = elegir({lista(u"amigos"_s)});
        QVERIFY(h.motivo().startsWith(u"Error en Funcion Seleccionar Destinatarios\n"_s));
        QCOMPARE(h.estilo(), Msg::Critical);
        QCOMPARE(aliases, QString());
    }

    void search_data() {
        QTest::addColumn<QString>("buscado");
        QTest::addColumn<int>("linea");
        QTest::newRow("prefix") << u"CA"_s << 2;
        QTest::newRow("empty selects the first") << QString() << 0;
        QTest::newRow("inside a middle name finds nothing") << u"ar"_s << -1;
        QTest::newRow("inside the last name") << u"ni"_s << 3;
    }
    void search() {
        QFETCH(QString, buscado);
        QFETCH(int, linea);
        QCOMPARE(buscarContacto({u"ana"_s, u"bea"_s, u"carla"_s, u"dani"_s}, buscado), linea);
    }

    void screenMovesSearchesAndAccepts() {
        InterfazGuionada ui;
        frmSeleccion f;
        ModeloListado* contactos = modelo(f, u"lstcontactos"_s);
        ModeloListado* listas = modelo(f, u"lstlistas"_s);
        ModeloListado* destinos = modelo(f, u"lstdestinos"_s);
        QCOMPARE(textosDe(contactos, 0), (QStringList{u"ana"_s, u"bea"_s, u"carla"_s, u"dani"_s}));
        QCOMPARE(listas->fila(1), (QStringList{u"001"_s, u"trabajo"_s, u"2"_s}));

        auto* buscar = f.findChild<QLineEdit*>(u"txtBuscar"_s);
        buscar->setText(u"zz"_s);
        QCOMPARE(ui.boxes.size(), 1);
        QCOMPARE(ui.boxes[0].text, u"Usuario inexistente"_s);
        QCOMPARE(ui.boxes[0].style, Msg::Information);
        buscar->setText(u"d"_s);
        f.findChild<QPushButton*>(u"Command1"_s)->click();
        QCOMPARE(destinos->fila(0), (QStringList{u"dani"_s, u"003404"_s}));
        QCOMPARE(contactos->rowCount(), 3);

        auto* lstListas = f.findChild<VistaLineas*>(u"lstlistas"_s);
        lstListas->selectionModel()->select(
            listas->index(0, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        f.findChild<QPushButton*>(u"Command2"_s)->click();
        f.findChild<QPushButton*>(u"Command2"_s)->click();
        QCOMPARE(destinos->fila(2), (QStringList{u"amigos"_s, u"Lista (2 Contactos)"_s}));
        QCOMPARE(listas->rowCount(), 3);
        // A contact taken back goes to the end of the contacts.
        Q_EMIT f.findChild<VistaLineas*>(u"lstdestinos"_s)->doubleClicked(destinos->index(0, 0));
        QCOMPARE(textosDe(contactos, 0).last(), u"dani"_s);
        f.findChild<QPushButton*>(u"cmdTodos"_s)->click();
        QCOMPARE(contactos->rowCount(), 0);
        // From the last, as a choice of several lines goes.
        QCOMPARE(textosDe(destinos, 0), (QStringList{u"amigos"_s, u"amigos"_s, u"dani"_s,
                                                     u"carla"_s, u"bea"_s, u"ana"_s}));
        QCOMPARE(destinos->fila(2), (QStringList{u"dani"_s, u"003404"_s}));
        f.findChild<QPushButton*>(u"cmdAdd"_s)->click();
        QTRY_COMPARE(estadoAplicacion().gsDestinos, u"bea;carla;ana;dani"_s);

        // Emptying the choice brings every contact back.
        f.findChild<QPushButton*>(u"cmdVaciarLista"_s)->click();
        QCOMPARE(destinos->rowCount(), 0);
        QCOMPARE(contactos->rowCount(), 4);
    }

    // A large book is listed over turns of the event loop, "Todos" and
    // the search waiting until every contact is there; accepted, every
    // contact comes once, the list's members first, in the lists' order.
    void aLargeBookIsListedAndChosenOverTurns() {
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < "
            u"29999) INSERT INTO Abonados (Codigo,Alias) SELECT '0035' || (100000 + i), "
            u"CASE i % 2 WHEN 0 THEN 'Óscar ' ELSE 'ñu ' END || ((i * 7919) % 30000) "
            u"FROM n"_s);
        bd().exec(
            u"INSERT INTO AboGrup (Abonado,Grupo) SELECT Codigo, 2 FROM Abonados "
            u"WHERE Codigo LIKE '0035%' AND Codigo % 3 = 0"_s);
        const QStringList orden =
            prueba::columna(u"SELECT Alias FROM Abonados ORDER BY Alias COLLATE REGLA_LISTAS"_s);
        InterfazGuionada ui;
        frmSeleccion f;
        auto* todos = f.findChild<QPushButton*>(u"cmdTodos"_s);
        QVERIFY(!todos->isEnabled());
        QVERIFY(!f.findChild<QLineEdit*>(u"txtBuscar"_s)->isEnabled());
        QTRY_VERIFY(todos->isEnabled());
        ModeloListado* contactos = modelo(f, u"lstcontactos"_s);
        QCOMPARE(textosDe(contactos, 0), orden);

        auto* lstListas = f.findChild<VistaLineas*>(u"lstlistas"_s);
        lstListas->selectionModel()->select(
            modelo(f, u"lstlistas"_s)->index(2, 0),
            QItemSelectionModel::Select | QItemSelectionModel::Rows);
        f.findChild<QPushButton*>(u"Command2"_s)->click();
        todos->click();
        auto* aceptar = f.findChild<QPushButton*>(u"cmdAdd"_s);
        aceptar->click();
        QVERIFY(!aceptar->isEnabled());
        QTRY_VERIFY(!f.isVisible() && aceptar->isEnabled());
        const QStringList miembros = prueba::columna(
            u"SELECT Alias FROM AboGrup JOIN Abonados ON Codigo = Abonado WHERE Grupo = 2 "
            u"ORDER BY Abonado"_s);
        QStringList esperado = miembros;
        for (const QString& a : orden)
            if (!miembros.contains(a)) esperado << a;
        QCOMPARE(estadoAplicacion().gsDestinos.split(u';'), esperado);
        QVERIFY(ui.boxes.isEmpty());
    }

    // The search runs as the text changes; Enter there or in a list must
    // not take the picker's answer half made. In a list it does what a
    // double click on the current line does.
    void enterDoesNotAccept_data() {
        QTest::addColumn<QString>("campo");
        QTest::addColumn<int>("tecla");
        QTest::addColumn<int>("destinos");
        QTest::newRow("search, Return") << u"txtBuscar"_s << int(Qt::Key_Return) << 1;
        QTest::newRow("search, keypad Enter") << u"txtBuscar"_s << int(Qt::Key_Enter) << 1;
        QTest::newRow("contacts: one more") << u"lstcontactos"_s << int(Qt::Key_Return) << 2;
        QTest::newRow("lists: one more") << u"lstlistas"_s << int(Qt::Key_Return) << 2;
        QTest::newRow("chosen: back") << u"lstdestinos"_s << int(Qt::Key_Return) << 0;
    }
    void enterDoesNotAccept() {
        QFETCH(QString, campo);
        QFETCH(int, tecla);
        QFETCH(int, destinos);
        InterfazGuionada ui;
        estadoAplicacion().gsDestinos = u"antes"_s;
        frmSeleccion f;
        f.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f));
        f.findChild<QLineEdit*>(u"txtBuscar"_s)->setText(u"b"_s);
        f.findChild<QPushButton*>(u"Command1"_s)->click();
        QWidget* w = prueba::hijo<QWidget>(f, campo);
        w->setFocus();
        QTest::keyClick(w, Qt::Key(tecla));
        QVERIFY(f.isVisible());
        QCOMPARE(f.result(), int(QDialog::Rejected));
        QCOMPARE(estadoAplicacion().gsDestinos, u"antes"_s);
        QCOMPARE(modelo(f, u"lstdestinos"_s)->rowCount(), destinos);
        for (QPushButton* b : f.findChildren<QPushButton*>())
            QVERIFY2(!b->isDefault(), qPrintable(b->objectName()));
    }
};

QUELMO_GUI_TEST_MAIN(TestSeleccion)
#include "test_seleccion.moc"

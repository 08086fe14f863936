// Contacts: the editor's number rule and required fields, saving with the
// list memberships, the list of contacts and its deletes.
#include "TestSupportGui.h"
#include "addressbook/PantallasAgenda.h"
#include "addressbook/frmAbonados.h"
#include "addressbook/frmNewUser.h"
#include "addressbook/mdoAgenda.h"
#include "base/Avisos.h"
#include "base/Pantallas.h"
#include "widgets/Listado.h"
#include "widgets/ModeloListado.h"
#include "widgets/PantallasHijas.h"

#include <sqlite3.h>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace prueba;

namespace {

// Fills a new contact's editor as the user would and presses save.
bool guardarNuevo(frmNewUser& e, const QString& numero, const QString& alias, int cuentaIdx,
                  const QList<int>& listas = {}) {
    e.txtAbonado->setText(numero);
    e.txtAlias->setText(alias);
    e.cmbCanales->setCurrentIndex(cuentaIdx);
    for (int l : listas)
        e.lstGrupos->selectionModel()->select(e.lstGrupos->model()->index(l, 0),
                                              QItemSelectionModel::Select);
    e.cmdAnadir->click();
    return e.result() == QDialog::Accepted;
}

}  // namespace

class TestContactos : public QObject {
    Q_OBJECT
  public:
    explicit TestContactos(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/agenda.db"_s));
        cuenta(0, u"Principal"_s);
        cuenta(1, u"Segunda"_s);
        lista(0, u"Amigos"_s);
        lista(1, u"Trabajo"_s);
        lista(2, u"Familia"_s);
    }

    void editorChecksInOrder_data() {
        QTest::addColumn<QString>("numero");
        QTest::addColumn<QString>("alias");
        QTest::addColumn<int>("cuenta");
        QTest::addColumn<QString>("aviso");  // empty: stored
        auto formato = [](const QString& motivo) -> QString {
            return motivo +
                   u"\nAtención, el formato del Número de Móvil, no es correcto \nRecuerde, que "
                   u"el formato debe incluir el código internacional del Número de Móvil\n"
                   u"Ejemplo : para España (0034)629000000, el Número sería 0034629000000"_s;
        };
        const QString prefijo = formato(u"( Código internacional inexistente o mal formado )"_s);
        const QString longitud = formato(u"( La longitud del Número de Móvil no es adecuada )"_s);
        const QString letras = formato(u"El valor del número de Móvil debe ser numérico"_s);
        QTest::newRow("all empty: the number first")
            << QString() << QString() << -1 << u"El Número de Móvil debe de contener datos"_s;
        QTest::newRow("no alias before no account")
            << u"0034629000000"_s << QString() << -1
            << u"El Nombre del Contacto debe de contener datos"_s;
        QTest::newRow("no account") << u"0034629000000"_s << u"Ana"_s << -1
                                    << u"Debe seleccionar una Cuenta para este Contacto"_s;
        QTest::newRow("semicolon before the number rule")
            << u"629"_s << u"Ana;Luis"_s << 0
            << u"Atención, el formato del Nombre de Contacto, contiene el caracter [;] y no esta "
               u"permitido"_s;
        QTest::newRow("no prefix") << u"629000000"_s << u"Ana"_s << 0 << prefijo;
        QTest::newRow("plus passes the numeric test, not the prefix")
            << u"+34629000000"_s << u"Ana"_s << 0 << prefijo;
        QTest::newRow("10 characters") << u"0034629000"_s << u"Ana"_s << 0 << longitud;
        QTest::newRow("letters") << u"00346290000A"_s << u"Ana"_s << 0 << letras;
        QTest::newRow("short and not numeric tells the first reason")
            << u"6x"_s << u"Ana"_s << 0 << letras;
        QTest::newRow("11 characters") << u"00346290000"_s << u"Ana"_s << 0 << QString();
        QTest::newRow("full Spanish number") << u"0034629000000"_s << u"Ana"_s << 0 << QString();
        QTest::newRow("other country, 15 characters")
            << u"004915112345678"_s << u"Ana"_s << 0 << QString();
    }
    void editorChecksInOrder() {
        QFETCH(QString, numero);
        QFETCH(QString, alias);
        QFETCH(int, cuenta);
        QFETCH(QString, aviso);
        InterfazGuionada ui;
        frmNewUser e;
        QVERIFY(e.msLoad());
        QCOMPARE(guardarNuevo(e, numero, alias, cuenta), aviso.isEmpty());
        QCOMPARE(cajas(ui),
                 aviso.isEmpty() ? QStringList() : QStringList{caja(Msg::Critical, aviso)});
        // Stored as typed, with no normalisation.
        QCOMPARE(columna(u"select Codigo || '/' || Alias from Abonados"_s),
                 aviso.isEmpty() ? QStringList{numero + u"/Ana"_s} : QStringList());
    }

    void newContactStoresListsAndTheNumberStaysUnique() {
        const QString num = u"0034629000001"_s;
        auto guardado = [] {
            return columna(u"select Alias || '/' || Comentario || '/' || Canal from Abonados"_s) +
                   columna(u"select Grupo from AboGrup order by 1"_s);
        };
        InterfazGuionada ui;
        frmNewUser e;
        QVERIFY(e.msLoad());
        // Nothing is preselected for a new contact.
        QCOMPARE(e.cmbCanales->currentIndex(), -1);
        QVERIFY(e.lstGrupos->selectionModel()->selectedIndexes().isEmpty());
        QCOMPARE(e.lstGrupos->model()->index(2, 0).data().toString(), u"002 - Familia"_s);
        e.txtComentario->setText(u"primera"_s);
        QVERIFY(guardarNuevo(e, num, u"Luis"_s, 1, {0, 2}));
        const QStringList luis{u"Luis/primera/1"_s, u"0"_s, u"2"_s};
        QCOMPARE(guardado(), luis);

        frmNewUser otro;
        QVERIFY(otro.msLoad());
        QVERIFY(!guardarNuevo(otro, num, u"Otra"_s, 0, {1}));
        QCOMPARE(cajas(ui), QStringList{caja(Msg::Critical,
                                             u"Error Añadiendo datos, el Contacto ya existe"_s)});
        QCOMPARE(guardado(), luis);
        QCOMPARE(otro.txtAlias->text(), u"Otra"_s);
        // No transaction left open.
        contacto(u"0034600000009"_s, u"Nueva"_s, 0);
        QVERIFY(sqlite3_get_autocommit(bd().handle()));
    }

    void editRewritesMembershipsAndFindsApostrophe() {
        contacto(u"0034629000000"_s, u"O'Brien"_s, 1, u"it's"_s);
        miembro(u"0034629000000"_s, 0);
        miembro(u"0034629000000"_s, 1);
        InterfazGuionada ui;
        frmAbonados lista;
        QCOMPARE(textosDe(lista.ListView1, 0), QStringList{u"O'Brien"_s});
        lista.ListView1->seleccionarFila(0);
        bool visto = false;
        alAbrirModal([&](QDialog* d) {
            auto* e = qobject_cast<frmNewUser*>(d);
            QVERIFY(e);
            visto = true;
            QCOMPARE(e->windowTitle(), u"Modificar Usuario"_s);
            QCOMPARE(e->cmdAnadir->text(), u"&Modificar Usuario"_s);
            QVERIFY(!e->txtAbonado->isEnabled());
            QCOMPARE(e->txtAbonado->text(), u"0034629000000"_s);
            QCOMPARE(e->txtComentario->text(), u"it's"_s);
            QCOMPARE(e->cmbCanales->currentText(), u"Segunda"_s);
            auto* sel = e->lstGrupos->selectionModel();
            QVERIFY(sel->isSelected(e->lstGrupos->model()->index(0, 0)));
            QVERIFY(sel->isSelected(e->lstGrupos->model()->index(1, 0)));
            sel->clearSelection();
            sel->select(e->lstGrupos->model()->index(2, 0), QItemSelectionModel::Select);
            e->txtAlias->setText(u"O'Brien Jr"_s);
            e->cmdAnadir->click();
            if (e->isVisible()) e->reject();
        });
        lista.cmdEdit->click();
        QVERIFY(visto);
        QVERIFY(ui.boxes.isEmpty());
        QCOMPARE(columna(u"select Grupo from AboGrup where Abonado = '0034629000000'"_s),
                 QStringList{u"2"_s});
        // The list was read again.
        QCOMPARE(textosDe(lista.ListView1, 0), QStringList{u"O'Brien Jr"_s});
    }

    void deletesKeepOutboxHistoryAndHiddenContacts() {
        const QString num = u"0034629000000"_s;
        contacto(num, u"Ana"_s, 0, u"c1"_s);
        contacto(u"0034600000002"_s, u"Álvaro"_s, 1);
        contacto(u"0034600000003"_s, u"Sin cuenta"_s, 7);
        miembro(num, 0);
        miembro(num, 2);
        miembro(u"0034600000002"_s, 0);
        bd().exec(u"INSERT INTO Automaticos (Codigo,Nombre) VALUES (1,'Semanal')"_s);
        bd().exec(u"INSERT INTO AboAuto (Automatico,Abonado,Mensaje) VALUES (1,?,'hola')"_s, {num});
        bd().exec(
            u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
            u"('2026-01-01 10:00:00',0,?,'pendiente',2)"_s,
            {num});
        bd().exec(
            u"INSERT INTO HEnvios (Abonado,Registro,Mensaje,Resultado,Canal) VALUES "
            u"(?,'2026-01-01 09:00:00','enviado','OK',0)"_s,
            {num});
        InterfazGuionada ui;
        frmAbonados pantalla;
        // A contact whose account is gone is not listed.
        QCOMPARE(pantalla.lblcont->text(), u"2 Contactos"_s);
        const int fila = int(textosDe(pantalla.ListView1, 0).indexOf(u"Ana"_s));
        QCOMPARE(pantalla.ListView1->modelo()->fila(fila),
                 (QStringList{u"Ana"_s, num, u"c1"_s, u"Principal"_s}));

        ui.answers = {Msg::Yes};
        pantalla.ListView1->seleccionarFila(fila);
        pantalla.cmdDelete->click();
        QCOMPARE(ui.boxes.size(), 2);
        QCOMPARE(ui.boxes.at(0).text,
                 u"Esta a punto de eliminar los Contactos Seleccionados, ¿esta seguro?"_s);
        QCOMPARE(ui.boxes.at(1).text, u"Se han borrado 1 Contactos con éxito.\n"_s);
        // Memberships and schedules go with the contact; its outbox and history stay.
        QCOMPARE(columna(u"select Abonado from AboGrup union all select Abonado from AboAuto"_s),
                 QStringList{u"0034600000002"_s});
        QCOMPARE(cuantos(u"select count(*) from Abonados where Codigo = ?"_s, {num}), 0);
        QCOMPARE(cuantos(u"select (select count(*) from envios where Abonado = ?1) + "
                         u"(select count(*) from HEnvios where Abonado = ?1)"_s,
                         {num}),
                 2);
        QCOMPARE(pantalla.lblcont->text(), u"1 Contactos"_s);

        // Deleting all leaves the hidden one.
        ui.boxes.clear();
        ui.answers = {Msg::Yes};
        pantalla.cmdDeletetodos->click();
        QCOMPARE(
            cajas(ui),
            (QStringList{caja(Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2,
                              u"¿Quiere eliminar TODOS sus Contactos?"_s),
                         caja(Msg::Information, u"Se han borrado 1 Contactos con éxito.\n"_s)}));
        QCOMPARE(columna(u"select Alias from Abonados"_s), QStringList{u"Sin cuenta"_s});
        QCOMPARE(pantalla.lblcont->text(), u"0 Contactos"_s);
    }

    void contactSavedElsewhereShowsInTheList() {
        InterfazGuionada ui;
        frmAbonados pantalla;
        QCOMPARE(pantalla.lblcont->text(), u"0 Contactos"_s);
        FichaContacto ficha;
        ficha.codigo = u"0034600000001"_s;
        ficha.alias = u"Ana"_s;
        ficha.cuenta = u"Principal"_s;
        QVERIFY(mbGuardarContacto(ficha));
        QCOMPARE(textosDe(pantalla.ListView1, 0), QStringList{u"Ana"_s});
        QCOMPARE(pantalla.lblcont->text(), u"1 Contactos"_s);
    }

    // The count the list shows is that of the contacts of an account that
    // exists, whatever another client left in a contact's account.
    void countIsThatOfTheContactsShown_data() {
        QTest::addColumn<QString>("canal");
        for (const char* c : {"0", "1", "4", "NULL", "-3", "2", "3", "9", "'x'", "1.5"})
            QTest::newRow(c) << QString::fromLatin1(c);
    }
    void countIsThatOfTheContactsShown() {
        QFETCH(QString, canal);
        cuenta(4, u"Cuarta"_s);
        contacto(u"0034600000001"_s, u"Ana"_s, 1);
        bd().exec(u"INSERT INTO Abonados (Codigo, Alias, Canal) VALUES ('0034600000002', 'B', "_s +
                  canal + u')');
        const long long mostrados =
            cuantos(u"SELECT count(*) FROM Abonados JOIN Canales USING (Canal)"_s);
        QCOMPARE(ListaPaginada(definicionContactos()).contar(), int(mostrados));
        bd().exec(u"DELETE FROM Canales"_s);
        QCOMPARE(ListaPaginada(definicionContactos()).contar(), 0);
    }

    void addWithoutAccountsShowsTheMessage() {
        bd().exec(u"DELETE FROM Canales"_s);
        InterfazGuionada ui;
        registrarPantallasAgenda();
        QVERIFY(Pantallas::abrir(u"frmAbonados"_s));
        frmAbonados* pantalla = PantallasHijas::instance<frmAbonados>();
        pantalla->cmdAdd->click();  // an editor would block here
        QCOMPARE(cajas(ui), QStringList{caja(Msg::Critical,
                                             u"Atención, primero debe crear una Cuenta, desea "
                                             u"hacerlo en este momento ?"_s)});
    }

    // Opened beside the compose screen in the default frame's area, the
    // list shows whole, each column as wide as what it holds.
    void opensWholeBesideTheComposeScreen() {
        contacto(u"003462900000000"_s, u"Nombre de un contacto"_s, 0);
        InterfazGuionada ui;
        QMdiArea area;
        area.resize(1000, 460);
        area.show();
        PantallasHijas::setArea(&area);
        auto* envio = new QWidget;
        envio->resize(820, 600);
        area.addSubWindow(envio)->show();
        envio->parentWidget()->move(100, 0);
        registrarPantallasAgenda();
        QVERIFY(Pantallas::abrir(u"frmAbonados"_s));
        frmAbonados* pantalla = PantallasHijas::instance<frmAbonados>();
        const QRect donde = PantallasHijas::subWindowOf(pantalla)->geometry();
        QVERIFY2(area.viewport()->rect().contains(donde), qPrintable(u"%1,%2 %3x%4"_s.arg(donde.x())
                                                                         .arg(donde.y())
                                                                         .arg(donde.width())
                                                                         .arg(donde.height())));
        Listado* l = pantalla->ListView1;
        const QAbstractItemView* vista = l;
        for (int c = 0; c < 4; ++c)
            QVERIFY2(l->columnWidth(c) >= vista->sizeHintForColumn(c),
                     qPrintable(QString::number(c)));
        QVERIFY(l->header()->sectionViewportPosition(3) + l->columnWidth(3) <=
                l->viewport()->width());
        PantallasHijas::setArea(nullptr);
    }

    void headerClickSortsByShownText() {
        contacto(u"0034600000001"_s, u"beatriz"_s, 0);
        contacto(u"0034600000002"_s, u"Álvaro"_s, 1);
        contacto(u"0034600000003"_s, u"Nuria"_s, 0);
        contacto(u"0034600000004"_s, u"Ñoño"_s, 1);
        contacto(u"0034600000005"_s, u"Oscar"_s, 0);
        contacto(u"0034600000006"_s, u"andrés"_s, 0);
        InterfazGuionada ui;
        frmAbonados pantalla;
        Listado* l = pantalla.ListView1;
        QHeaderView* h = l->header();
        QCOMPARE(h->sortIndicatorSection(), 0);
        QCOMPARE(h->sortIndicatorOrder(), Qt::AscendingOrder);
        // The direction flips at every click, whichever column.
        l->ordenarPorColumna(0);
        QCOMPARE(textosDe(l, 0), (QStringList{u"Oscar"_s, u"Ñoño"_s, u"Nuria"_s, u"beatriz"_s,
                                              u"andrés"_s, u"Álvaro"_s}));
        QCOMPARE(h->sortIndicatorOrder(), Qt::DescendingOrder);
        l->seleccionarFila(1);  // Ñoño stays selected through a sort
        l->ordenarPorColumna(3);
        QCOMPARE(h->sortIndicatorSection(), 3);
        QCOMPARE(h->sortIndicatorOrder(), Qt::AscendingOrder);
        // Equal accounts keep the order they stood in.
        QCOMPARE(textosDe(l, 0), (QStringList{u"Oscar"_s, u"Nuria"_s, u"beatriz"_s, u"andrés"_s,
                                              u"Ñoño"_s, u"Álvaro"_s}));
        QCOMPARE(l->modelo()->texto(l->filaActual(), 0), u"Ñoño"_s);
        l->ordenarPorColumna(0);
        l->ordenarPorColumna(0);
        QCOMPARE(textosDe(l, 0), (QStringList{u"Álvaro"_s, u"andrés"_s, u"beatriz"_s, u"Nuria"_s,
                                              u"Ñoño"_s, u"Oscar"_s}));
        // With nothing selected a delete removes nothing and says 0; the
        // list read again keeps its sort.
        contacto(u"0034600000007"_s, u"Carla"_s, 0);
        l->clearSelection();
        ui.answers = {Msg::Yes};
        pantalla.cmdDelete->click();
        QCOMPARE(ui.boxes.last().text, u"Se han borrado 0 Contactos con éxito.\n"_s);
        QCOMPARE(textosDe(l, 0), (QStringList{u"Álvaro"_s, u"andrés"_s, u"beatriz"_s, u"Carla"_s,
                                              u"Nuria"_s, u"Ñoño"_s, u"Oscar"_s}));
    }

    // Each sequence of header clicks orders the lines as the list kept in
    // memory did: by the shown text under the lists' rule, equal texts in
    // the order they stood in.
    // Contacts written and changed by another SQLite client sort alike.
    // With `cuentas`, 600 contacts in accounts whose names sort otherwise
    // than their codes, empty, equal under the rule or the same, one
    // holding most of them.
    void sortsAsTheListInMemory_data() {
        QTest::addColumn<QList<int>>("clics");
        QTest::addColumn<bool>("fuera");
        QTest::addColumn<bool>("cuentas");
        QTest::newRow("Nombre") << QList<int>{0} << false << false;
        QTest::newRow("Número") << QList<int>{1} << false << false;
        QTest::newRow("Comentario, then Cuenta") << QList<int>{2, 3} << false << false;
        QTest::newRow("Cuenta, then Nombre twice") << QList<int>{3, 0, 0} << false << false;
        QTest::newRow("Nombre, then Comentario") << QList<int>{0, 2} << false << false;
        QTest::newRow("elsewhere: Comentario, then Número") << QList<int>{2, 1} << true << false;
        QTest::newRow("elsewhere: Nombre, then Comentario") << QList<int>{0, 2} << true << false;
        QTest::newRow("accounts: Cuenta both ways") << QList<int>{3, 3} << false << true;
        QTest::newRow("accounts: Comentario, then Cuenta") << QList<int>{2, 3} << false << true;
        QTest::newRow("accounts: Número, then Cuenta") << QList<int>{1, 3} << false << true;
    }
    void sortsAsTheListInMemory() {
        QFETCH(QList<int>, clics);
        QFETCH(bool, fuera);
        QFETCH(bool, cuentas);
        const QStringList nombres{u"beatriz"_s, u"Álvaro"_s, u"Nuria"_s, u"Ñoño"_s,
                                  u"Oscar"_s,   u"andrés"_s, u"Émile"_s, u"zoe"_s};
        const QStringList comentarios{u"b"_s, QString(), u"B"_s,    u"a"_s,
                                      u"á"_s, u"b"_s,    QString(), u"c"_s};
        QString otro;
        for (int i = 0; i < nombres.size() && !cuentas; ++i) {
            const QString numero = u"00346000000%1"_s.arg(9 - i, 2, 10, QChar(u'0'));
            if (!fuera)
                contacto(numero, nombres[i], i % 2, comentarios[i]);
            else
                otro +=
                    u"INSERT INTO Abonados (Codigo, Alias, Comentario, Canal) VALUES "
                    u"('%1', '%2', 'x', %3); UPDATE Abonados SET Comentario = %4 WHERE "
                    u"Codigo = '%1';"_s.arg(numero, nombres[i])
                        .arg(i % 2)
                        .arg(comentarios[i].isNull() ? u"NULL"_s
                                                     : u"'"_s + comentarios[i] + u"'"_s);
        }
        if (cuentas) {
            bd().exec(
                u"INSERT INTO Canales (Canal,Nombre) VALUES (2,NULL),(3,''),(4,'ábside'),"
                u"(5,'SEGUNDA'),(6,'Segunda'),(7,'zeta')"_s);
            bd().begin();
            // Most contacts in the first account: it is read along the
            // order's own index, the others on the account's.
            for (int i = 0; i < 600; ++i)
                contacto(u"0034%1"_s.arg(600000000 + (i * 7919) % 600),
                         nombres[i % nombres.size()] + u' ' + QString::number(i),
                         i % 4 ? 0 : i / 4 % 8, comentarios[i % comentarios.size()]);
            bd().commit();
        }
        if (fuera) {
            const QString ruta = bd().path();
            shell(ruta, otro);
            TestDb::openShared(ruta);
        }
        InterfazGuionada ui;
        frmAbonados pantalla;
        Listado* l = pantalla.ListView1;
        ModeloListado antes({u"Nombre"_s, u"Número"_s, u"Comentario"_s, u"Cuenta"_s});
        QVector<QString> celdas;
        for (int f = 0; f < l->modelo()->rowCount(); ++f) celdas += l->modelo()->fila(f);
        antes.asignar(celdas);
        if (!cuentas)
            QCOMPARE(textosDe(&antes, 0),
                     (QStringList{u"Álvaro"_s, u"andrés"_s, u"beatriz"_s, u"Émile"_s, u"Nuria"_s,
                                  u"Ñoño"_s, u"Oscar"_s, u"zoe"_s}));
        bool descendente = false;
        for (int c : clics) {
            l->ordenarPorColumna(c);
            descendente = !descendente;
            antes.sort(c, descendente ? Qt::DescendingOrder : Qt::AscendingOrder);
            for (int col = 0; col < 4; ++col) QCOMPARE(textosDe(l, col), textosDe(&antes, col));
        }
    }

    // Deleting every contact leaves no row of theirs, leaves what isn't
    // theirs, tells the screens and says how many went, also when it goes
    // in several blocks or a block has to go contact by contact.
    void deleteAllLeavesNothingAndTellsTheScreens_data() {
        QTest::addColumn<int>("contactos");
        QTest::addColumn<bool>("oculto");     // a contact of a missing account
        QTest::addColumn<bool>("bloqueado");  // a contact the engine refuses to delete
        QTest::addColumn<bool>("ajenas");     // rows of a number that is no contact
        QTest::newRow("every contact shown") << 3 << false << false << false;
        QTest::newRow("a hidden contact stays") << 3 << true << false << false;
        QTest::newRow("rows of no contact stay") << 3 << false << false << true;
        QTest::newRow("12,000 contacts") << 12000 << true << false << true;
        QTest::newRow("a refused contact stays") << 3 << false << true << true;
    }
    void deleteAllLeavesNothingAndTellsTheScreens() {
        QFETCH(int, contactos);
        QFETCH(bool, oculto);
        QFETCH(bool, bloqueado);
        QFETCH(bool, ajenas);
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO Abonados (Codigo,Alias,Canal) SELECT '0034' || (600000000 + i), "
            u"'Contacto ' || i, i % 2 FROM n"_s,
            {contactos});
        bd().exec(u"INSERT INTO AboGrup (Abonado,Grupo) SELECT Codigo, 1 FROM Abonados"_s);
        bd().exec(u"INSERT INTO AboAuto (Abonado,Automatico) VALUES ('0034600000001',1)"_s);
        if (ajenas) {
            miembro(u"0034699999999"_s, 0);
            bd().exec(u"INSERT INTO AboAuto (Abonado,Automatico) VALUES ('0034699999999',1)"_s);
        }
        if (oculto) {
            // One of an account that no longer exists, one of none; their
            // memberships and multi-send rows stay with them.
            contacto(u"0034611111111"_s, u"Sin cuenta"_s, 7);
            bd().exec(u"INSERT INTO Abonados (Codigo,Alias) VALUES ('0034611111112','Nula')"_s);
            miembro(u"0034611111111"_s, 0);
            bd().exec(u"INSERT INTO AboAuto (Abonado,Automatico) VALUES ('0034611111112',1)"_s);
        }
        if (bloqueado)
            bd().exec(
                u"CREATE TRIGGER no_borrar BEFORE DELETE ON Abonados WHEN old.Codigo = "
                u"'0034600000002' BEGIN SELECT RAISE(ABORT, 'bloqueado'); END"_s);
        // Emptied whole, the tables get their indexes back as they were.
        const QString indices =
            u"select name || sql from sqlite_master where type = 'index' and tbl_name in "
            u"('Abonados', 'AboGrup', 'AboAuto') order by 1"_s;
        const QStringList antes = columna(indices);
        InterfazGuionada ui;
        frmAbonados pantalla;
        QSignalSpy avisos(&Avisos::instancia(), &Avisos::contactosCambiados);
        ui.answers = {Msg::Yes};
        pantalla.cmdDeletetodos->click();
        QTRY_VERIFY(ui.boxes.size() >= 2);
        const int quedan = bloqueado ? 1 : 0;
        QCOMPARE(ui.boxes.last().text,
                 u"Se han borrado %1 Contactos con éxito.\n"_s.arg(contactos - quedan));
        // The refused contact had its own box, in the engine's words, and the
        // others went on.
        QCOMPARE(ui.boxes.size(), bloqueado ? 3 : 2);
        if (bloqueado) QVERIFY(ui.boxes.at(1).text.contains(u"bloqueado"_s));
        QStringList siguen;
        if (bloqueado) siguen << u"0034600000002"_s;
        if (oculto) siguen << u"0034611111111"_s << u"0034611111112"_s;
        QCOMPARE(columna(u"select Codigo from Abonados order by Codigo"_s), siguen);
        QStringList grupos = bloqueado ? QStringList{u"0034600000002"_s} : QStringList();
        QStringList multi;
        if (oculto) {
            grupos << u"0034611111111"_s;
            multi << u"0034611111112"_s;
        }
        if (ajenas) {
            grupos << u"0034699999999"_s;
            multi << u"0034699999999"_s;
        }
        QCOMPARE(columna(u"select Abonado from AboGrup order by Abonado"_s), grupos);
        QCOMPARE(columna(u"select Abonado from AboAuto order by Abonado"_s), multi);
        QVERIFY(avisos.size() >= 1);
        QCOMPARE(columna(indices), antes);
        QCOMPARE(pantalla.lblcont->text(), u"%1 Contactos"_s.arg(quedan));
        QCOMPARE(pantalla.cmdDeletetodos->isEnabled(), true);
    }
};

QUELMO_GUI_TEST_MAIN(TestContactos)
#include "test_contactos.moc"

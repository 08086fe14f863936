// Lists: numbering and its limits, names, delete with members, and the
// membership screen with its moves and its store.
#include "TestSupportGui.h"
#include "addressbook/PantallasAgenda.h"
#include "addressbook/frmGrupos.h"
#include "addressbook/frmUserGroup.h"
#include "base/Pantallas.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/PantallasHijas.h"

#include <sqlite3.h>
#include <QLabel>
#include <QPushButton>
#include <optional>

using namespace Qt::StringLiterals;
using namespace prueba;

namespace {

// Selects the line of `l` whose column 0 is `texto`.
void elegir(Listado* l, const QString& texto) {
    const int f = int(textosDe(l, 0).indexOf(texto));
    QVERIFY2(f >= 0, qPrintable(texto));
    l->seleccionarFila(f);
}

}  // namespace

class TestListas : public QObject {
    Q_OBJECT
  public:
    explicit TestListas(TestWorld& w) : world(w) {}

  private:
    TestWorld& world;

  private Q_SLOTS:
    void init() {
        world.reset();
        TestDb::openShared(TestDb::createCurrent(world.root() + u"/listas.db"_s));
        cuenta(0, u"Principal"_s);
    }

    void numbersOfNewLists_data() {
        QTest::addColumn<QList<int>>("existentes");
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<int>("nuevo");  // -1: refused
        QTest::addColumn<QString>("mensaje");
        QTest::newRow("first list is 000") << QList<int>{} << u"Amigos"_s << 0 << QString();
        QTest::newRow("highest plus one, holes stay")
            << QList<int>{0, 7} << u"Otra"_s << 8 << QString();
        QTest::newRow("249 gives 250") << QList<int>{249} << u"Última"_s << 250 << QString();
        QTest::newRow("250 taken, lower numbers free")
            << QList<int>{3, 250} << u"Más"_s << -1
            << u"Debe especificar un numero de Lista inferior"_s;
        QTest::newRow("above 250 (an import's 251)")
            << QList<int>{251} << u"Más"_s << -1 << u"No es posible añadir mas Listas"_s;
        QTest::newRow("50 characters") << QList<int>{} << QString(50, u'x') << 0 << QString();
        QTest::newRow("51 characters") << QList<int>{} << QString(51, u'x') << -1
                                       << u"El nombre introducido es demasiado grande"_s;
        QTest::newRow("apostrophe in the name")
            << QList<int>{} << u"Club d'Amics"_s << 0 << QString();
    }
    void numbersOfNewLists() {
        QFETCH(QList<int>, existentes);
        QFETCH(QString, nombre);
        QFETCH(int, nuevo);
        QFETCH(QString, mensaje);
        for (int g : existentes) lista(g, u"L%1"_s.arg(g));
        InterfazGuionada ui;
        ui.inputs = {nombre};
        frmGrupos pantalla;
        QString titulo;
        if (nuevo >= 0)
            alAbrirModal([&](QDialog* d) {
                titulo = d->windowTitle();
                d->findChild<QPushButton*>(u"cmdClose"_s)->click();
            });
        pantalla.cmdAdd->click();
        QCOMPARE(ui.inputPrompts.at(0).text, u"Inserte un nombre para la nueva Lista"_s);
        QCOMPARE(ui.inputPrompts.at(0).title, u"Alta de Listas"_s);
        QCOMPARE(cuantos(u"select count(*) from Grupos"_s), existentes.size() + (nuevo >= 0));
        QCOMPARE(cajas(ui), nuevo < 0 ? QStringList{caja(Msg::Critical, mensaje)} : QStringList());
        if (nuevo < 0) return;
        // The membership screen opened at once for the new list; cancelled,
        // the list stands empty.
        QCOMPARE(titulo, u"Contactos de la Lista: "_s + nombre.toUpper());
        QCOMPARE(columna(u"select Nombre from Grupos where Grupo = ?"_s, {nuevo}),
                 QStringList{nombre});
        const int f = int(textosDe(pantalla.ListView1, 1).indexOf(nombre));
        QCOMPARE(pantalla.ListView1->modelo()->fila(f),
                 (QStringList{u"%1"_s.arg(nuevo, 3, 10, QChar(u'0')), nombre, u"0"_s}));
    }

    void renameKeepsMembers_data() {
        QTest::addColumn<QString>("respuesta");
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<QString>("mensaje");
        QTest::newRow("50 characters") << QString(50, u'n') << QString(50, u'n') << QString();
        QTest::newRow("51 characters")
            << QString(51, u'n') << u"Amigos"_s << u"El nombre introducido es demasiado grande"_s;
        QTest::newRow("cancelled") << QString() << u"Amigos"_s << QString();
    }
    void renameKeepsMembers() {
        QFETCH(QString, respuesta);
        QFETCH(QString, nombre);
        QFETCH(QString, mensaje);
        lista(4, u"Amigos"_s);
        contacto(u"0034600000001"_s, u"Ana"_s, 0);
        miembro(u"0034600000001"_s, 4);
        InterfazGuionada ui;
        ui.inputs = {respuesta};
        frmGrupos pantalla;
        pantalla.ListView1->seleccionarFila(0);
        pantalla.cmdEdit->click();
        QCOMPARE(ui.inputPrompts.at(0).title, u"Edicion de Lista"_s);
        QCOMPARE(columna(u"select Nombre from Grupos where Grupo = 4"_s), QStringList{nombre});
        QCOMPARE(cajas(ui),
                 mensaje.isEmpty() ? QStringList() : QStringList{caja(Msg::Critical, mensaje)});
        QCOMPARE(columna(u"select Abonado from AboGrup where Grupo = 4"_s),
                 QStringList{u"0034600000001"_s});
        QCOMPARE(pantalla.ListView1->modelo()->texto(0, 1), nombre);
    }

    void deleteAsksAndRemovesMemberships_data() {
        QTest::addColumn<bool>("conMiembros");
        QTest::addColumn<int>("respuesta");
        QTest::newRow("members, yes") << true << Msg::Yes;
        QTest::newRow("members, no") << true << Msg::No;
        QTest::newRow("empty, yes") << false << Msg::Yes;
        QTest::newRow("empty, no") << false << Msg::No;
    }
    void deleteAsksAndRemovesMemberships() {
        QFETCH(bool, conMiembros);
        QFETCH(int, respuesta);
        lista(1, u"Trabajo"_s);
        lista(2, u"Vecinos"_s);
        contacto(u"0034600000001"_s, u"Ana"_s, 0);
        miembro(u"0034600000001"_s, 2);
        if (conMiembros) miembro(u"0034600000001"_s, 1);
        InterfazGuionada ui;
        ui.answers = {respuesta};
        frmGrupos pantalla;
        elegir(pantalla.ListView1, u"001"_s);
        pantalla.cmdDelete->click();
        QCOMPARE(cajas(ui),
                 QStringList{caja(
                     Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2,
                     conMiembros
                         ? u"La Lista   'Trabajo'   tiene Contactos asignados. ¿Quiere eliminar "
                           u"la Lista ?"_s
                         : u"Esta a punto de eliminar la Lista   'Trabajo'   , ¿esta seguro ?"_s)});
        const bool borrada = respuesta == Msg::Yes;
        QTRY_VERIFY(!pantalla.ocupada());
        QCOMPARE(columna(u"select Grupo from Grupos order by 1"_s),
                 borrada ? QStringList{u"2"_s} : (QStringList{u"1"_s, u"2"_s}));
        // The contact and its other list stay.
        QCOMPARE(columna(u"select Grupo from AboGrup order by 1"_s),
                 conMiembros && !borrada ? (QStringList{u"1"_s, u"2"_s}) : QStringList{u"2"_s});
        QCOMPARE(cuantos(u"select count(*) from Abonados"_s), 1);
        QCOMPARE(pantalla.ListView1->modelo()->rowCount(), borrada ? 1 : 2);
    }

    // A large list is deleted over turns, whole or not at all, waiting for
    // a lock another program holds without holding the window; meanwhile
    // the screen takes nothing. Its contacts and the other lists stay.
    void aLargeListGoesWhole_data() { prueba::filasOtroPrograma("deleted"); }
    void aLargeListGoesWhole() {
        QFETCH(bool, ajeno);
        QFETCH(bool, cortar);
        constexpr int kMiembros = 30000;
        lista(1, u"Grande"_s);
        lista(2, u"Otra"_s);
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
            u"INSERT INTO Abonados (Codigo, Alias, Canal) SELECT '0034600' || i, 'c' || i, 0 "
            u"FROM n"_s,
            {kMiembros - 1});
        bd().exec(u"INSERT INTO AboGrup (Abonado, Grupo) SELECT Codigo, 1 FROM Abonados"_s);
        bd().exec(
            u"INSERT INTO AboGrup (Abonado, Grupo) SELECT Codigo, 2 FROM Abonados WHERE "
            u"rowid % 3 = 0"_s);
        const QString ruta = bd().path();
        std::optional<prueba::OtroPrograma> otro = prueba::otroPrograma(ajeno, ruta);
        InterfazGuionada ui;
        ui.answers = {Msg::Yes};
        frmGrupos pantalla;
        elegir(pantalla.ListView1, u"001"_s);
        pantalla.cmdDelete->click();
        if (ajeno) {
            QVERIFY(pantalla.ocupada());
            QVERIFY(!pantalla.ListView1->isEnabled() && !pantalla.cmdDelete->isEnabled());
        }
        prueba::dejarPasar(otro, cortar, [&] { return pantalla.ocupada(); });
        QTRY_VERIFY(!pantalla.ocupada());
        QVERIFY(pantalla.ListView1->isEnabled() && pantalla.cmdDelete->isEnabled());
        if (cortar) TestDb::openShared(ruta);
        QCOMPARE(filas(u"select Grupo, count(*) from AboGrup group by Grupo"_s),
                 cortar ? (QStringList{u"1|30000"_s, u"2|10000"_s}) : QStringList{u"2|10000"_s});
        QCOMPARE(columna(u"select Grupo from Grupos order by 1"_s),
                 cortar ? (QStringList{u"1"_s, u"2"_s}) : QStringList{u"2"_s});
        QCOMPARE(cuantos(u"select count(*) from Abonados"_s), kMiembros);
        if (!cortar) QCOMPARE(pantalla.ListView1->modelo()->rowCount(), 1);
    }

    void membershipStoreRewritesAllRows() {
        lista(3, u"Club"_s);
        contacto(u"0034600000001"_s, u"ana"_s, 0);
        contacto(u"0034600000002"_s, u"Berta"_s, 0);
        contacto(u"0034600000003"_s, u"Carlos"_s, 0);
        contacto(u"0034600000004"_s, u"Dora"_s, 0);
        miembro(u"0034600000001"_s, 3);
        miembro(u"0034600000002"_s, 3);
        miembro(u"0034699999999"_s, 3);  // its contact is gone
        InterfazGuionada ui;
        frmGrupos pantalla;
        QCOMPARE(pantalla.ListView1->modelo()->fila(0), (QStringList{u"003"_s, u"Club"_s, u"3"_s}));
        pantalla.ListView1->seleccionarFila(0);
        // Closed without storing, the moves are lost.
        int abiertas = 0;
        alAbrirModal([&](QDialog* d) {
            auto* m = qobject_cast<frmUserGroup*>(d);
            QVERIFY(m);
            QTRY_VERIFY(!m->ocupada());
            m->cmdTodos->click();
            QCOMPARE(m->lstLista->modelo()->rowCount(), 4);
            m->cmdClose->click();
            QCOMPARE(m->nCodGrupo, int16_t(-1));
            ++abiertas;
        });
        pantalla.cmdUsuarios->click();
        QCOMPARE(cuantos(u"select count(*) from AboGrup"_s), 3);
        pantalla.ListView1->seleccionarFila(0);
        alAbrirModal([&](QDialog* d) {
            auto* m = qobject_cast<frmUserGroup*>(d);
            QVERIFY(m);
            QTRY_VERIFY(!m->ocupada());
            QCOMPARE(m->lblcont->text(), u"2 Contactos en la lista"_s);
            QCOMPARE(textosDe(m->lstLista, 0), (QStringList{u"ANA"_s, u"BERTA"_s}));
            QCOMPARE(textosDe(m->lstcontactos, 0), (QStringList{u"CARLOS"_s, u"DORA"_s}));
            // Out with Ana, all in again (taken from the last line up), Ana
            // out again with a double click.
            elegir(m->lstLista, u"ANA"_s);
            m->cmdQuitar->click();
            QCOMPARE(textosDe(m->lstcontactos, 0), (QStringList{u"CARLOS"_s, u"DORA"_s, u"ANA"_s}));
            m->cmdTodos->click();
            QCOMPARE(textosDe(m->lstLista, 0),
                     (QStringList{u"BERTA"_s, u"ANA"_s, u"DORA"_s, u"CARLOS"_s}));
            QVERIFY(textosDe(m->lstcontactos, 0).isEmpty());
            Q_EMIT m->lstLista->dobleClicFila(1);
            QCOMPARE(textosDe(m->lstcontactos, 0), QStringList{u"ANA"_s});
            QCOMPARE(m->lblcont->text(), u"2 Contactos en la lista"_s);
            m->cmdAdd->click();
            QTRY_VERIFY(!m->ocupada());
            QCOMPARE(m->nCodGrupo, int16_t(-1));
            QVERIFY(m->sNombreGrupo.isEmpty());
            ++abiertas;
        });
        pantalla.cmdUsuarios->click();
        QCOMPARE(abiertas, 2);
        QCOMPARE(columna(u"select Abonado from AboGrup where Grupo = 3 order by 1"_s),
                 (QStringList{u"0034600000002"_s, u"0034600000003"_s, u"0034600000004"_s}));
        QCOMPARE(pantalla.ListView1->modelo()->texto(0, 2), u"3"_s);
    }

    // Moves stay on screen: a sort keeps them, Cancelar drops them, Guardar
    // writes them and touches no other list. While another write of ours
    // holds the connection, a move and the store wait for it, the screen
    // closed to clicks, and a sort leaves the lines moved after the others.
    // Steps: "+A,B" selects lines outside and adds them, "-A" removes,
    // "++" / "--" move a whole side, "^" clicks the first header of both,
    // "*" starts a write that holds the connection, or ends it.
    void movesReachTheListOnlyWhenStored_data() {
        QTest::addColumn<QStringList>("pasos");
        QTest::addColumn<bool>("guardar");
        QTest::addColumn<QStringList>("dentro");
        QTest::addColumn<QStringList>("fuera");
        QTest::addColumn<QStringList>("guardados");  // numbers' last digits
        QTest::newRow("moves then sort")
            << QStringList{u"-ANA"_s, u"+DORA"_s, u"^"_s} << true
            << QStringList{u"DORA"_s, u"BERTA"_s} << QStringList{u"CARLOS"_s, u"ANA"_s}
            << QStringList{u"2"_s, u"4"_s};
        QTest::newRow("moves then cancel")
            << QStringList{u"++"_s, u"-BERTA"_s} << false
            << QStringList{u"ANA"_s, u"DORA"_s, u"CARLOS"_s} << QStringList{u"BERTA"_s}
            << QStringList{u"1"_s, u"2"_s, u"9"_s};
        QTest::newRow("out and in again, one more, from the last up")
            << QStringList{u"-ANA"_s, u"+ANA"_s, u"+CARLOS,DORA"_s} << true
            << QStringList{u"BERTA"_s, u"ANA"_s, u"DORA"_s, u"CARLOS"_s} << QStringList{}
            << QStringList{u"1"_s, u"2"_s, u"3"_s, u"4"_s};
        QTest::newRow("a line moved back with one that stayed")
            << QStringList{u"-ANA"_s, u"+ANA,CARLOS"_s} << true
            << QStringList{u"BERTA"_s, u"ANA"_s, u"CARLOS"_s} << QStringList{u"DORA"_s}
            << QStringList{u"1"_s, u"2"_s, u"3"_s};
        QTest::newRow("all in, sorted, one out")
            << QStringList{u"++"_s, u"^"_s, u"-CARLOS"_s} << true
            << QStringList{u"DORA"_s, u"BERTA"_s, u"ANA"_s} << QStringList{u"CARLOS"_s}
            << QStringList{u"1"_s, u"2"_s, u"4"_s};
        QTest::newRow("all out") << QStringList{u"--"_s} << true << QStringList{}
                                 << QStringList{u"CARLOS"_s, u"DORA"_s, u"BERTA"_s, u"ANA"_s}
                                 << QStringList{};
        QTest::newRow("all in, all out again")
            << QStringList{u"++"_s, u"--"_s} << true << QStringList{}
            << QStringList{u"CARLOS"_s, u"DORA"_s, u"BERTA"_s, u"ANA"_s} << QStringList{};
        QTest::newRow("all in, one out, all out, all in")
            << QStringList{u"++"_s, u"-ANA"_s, u"--"_s, u"++"_s} << true
            << QStringList{u"BERTA"_s, u"DORA"_s, u"CARLOS"_s, u"ANA"_s} << QStringList{}
            << QStringList{u"1"_s, u"2"_s, u"3"_s, u"4"_s};
        QTest::newRow("all out, one back, all in")
            << QStringList{u"--"_s, u"+BERTA"_s, u"++"_s} << true
            << QStringList{u"BERTA"_s, u"ANA"_s, u"DORA"_s, u"CARLOS"_s} << QStringList{}
            << QStringList{u"1"_s, u"2"_s, u"3"_s, u"4"_s};
        QTest::newRow("held: a move waits, so does the store")
            << QStringList{u"*"_s, u"-ANA"_s, u"*"_s, u"*"_s} << true << QStringList{u"BERTA"_s}
            << QStringList{u"CARLOS"_s, u"DORA"_s, u"ANA"_s} << QStringList{u"2"_s};
        QTest::newRow("held: a sort leaves the lines moved after")
            << QStringList{u"-ANA"_s, u"+DORA"_s, u"*"_s, u"^"_s, u"*"_s} << true
            << QStringList{u"BERTA"_s, u"DORA"_s} << QStringList{u"CARLOS"_s, u"ANA"_s}
            << QStringList{u"2"_s, u"4"_s};
    }

    void movesReachTheListOnlyWhenStored() {
        QFETCH(QStringList, pasos);
        QFETCH(bool, guardar);
        const QStringList nombres{u"ana"_s, u"Berta"_s, u"Carlos"_s, u"Dora"_s};
        for (int i = 0; i < nombres.size(); ++i)
            contacto(u"003460000000"_s + QString::number(i + 1), nombres[i], 0);
        miembro(u"0034600000001"_s, 3);
        miembro(u"0034600000002"_s, 3);
        miembro(u"0034600000009"_s, 3);  // no contact: goes at the store
        miembro(u"0034600000003"_s, 7);  // another list's, never touched
        frmUserGroup m;
        m.sNombreGrupo = u"Club"_s;
        m.nCodGrupo = 3;
        m.msCargarUsuariosParaGrupo();
        QTRY_VERIFY(!m.ocupada());
        QCOMPARE(m.lblcont->text(), u"2 Contactos en la lista"_s);
        bool retenida = false, soltar = false;
        const auto retener = [&] {
            retenida = !retenida;
            if (!retenida) {
                soltar = true;
                QTRY_VERIFY(!Conexion().retenida());
                return;
            }
            soltar = false;
            EscrituraPorTurnos::escribir(Conexion(), {[&] { return !soltar; }},
                                         [](const ErrorBD*) {});
            QVERIFY(Conexion().retenida());
        };
        for (const QString& p : pasos) {
            const QStringList antes = textosDe(m.lstLista, 0);
            if (p == u"*"_s) {
                retener();
                // What waited is done.
                QTRY_VERIFY(!m.ocupada() || retenida);
                continue;
            }
            if (p == u"++"_s) {
                m.cmdTodos->click();
            } else if (p == u"--"_s) {
                m.cmdquitarTodos->click();
            } else if (p == u"^"_s) {
                m.lstLista->ordenarPorColumna(0);
                m.lstcontactos->ordenarPorColumna(0);
            } else {
                Listado* l = p.startsWith(u'+') ? m.lstcontactos : m.lstLista;
                l->clearSelection();
                for (const QString& n : p.mid(1).split(u','))
                    l->seleccionarFila(int(textosDe(l, 0).indexOf(n)), true);
                (p.startsWith(u'+') ? m.Command1 : m.cmdQuitar)->click();
            }
            // A move waits; a sort doesn't.
            if (retenida && p != u"^"_s) {
                QVERIFY(m.ocupada());
                QCOMPARE(textosDe(m.lstLista, 0), antes);
            }
        }
        QTEST(textosDe(m.lstLista, 0), "dentro");
        QTEST(textosDe(m.lstcontactos, 0), "fuera");
        // The counts carried through the moves are those the tables give.
        for (Listado* l : {m.lstLista, m.lstcontactos}) {
            const QStringList vistas = textosDe(l, 0);
            qobject_cast<ModeloPaginado*>(l->modelo())->cargar();
            QCOMPARE(textosDe(l, 0), vistas);
        }
        QCOMPARE(m.lblcont->text(), u"2 Contactos en la lista"_s);
        (guardar ? m.cmdAdd : m.cmdClose)->click();
        if (retenida) {
            QVERIFY(m.ocupada());
            QCOMPARE(m.nCodGrupo, int16_t(3));
            QCOMPARE(cuantos(u"select count(*) from AboGrup where Grupo = 3"_s), 3);
            retener();
        }
        QTRY_VERIFY(!m.ocupada());
        QStringList guardados;
        for (const QString& c :
             columna(u"select Abonado from AboGrup where Grupo = 3 order by 1"_s))
            guardados.append(c.right(1));
        QTEST(guardados, "guardados");
        QCOMPARE(columna(u"select Abonado from AboGrup where Grupo = 7"_s),
                 QStringList{u"0034600000003"_s});
        // The moves went with the screen.
        QCOMPARE(columna(u"select name from temp.sqlite_master where type IN ('table', 'view')"_s),
                 QStringList{});
    }

    // Lines moved all at once follow the others in the order of the side
    // they left turned round, down to the last of tens of thousands: as a
    // paint shows them after a jump to the end, and as a click reads them.
    // A second move sends them back, turned round again, after the other
    // side's own. Hundreds of lines then go back by choice (and, with all
    // out, out again with the rest), and the list is stored over several
    // turns: the screen stays open until it is, and every move lands, each
    // member once.
    void manyLinesMovedKeepTheirOrder_data() {
        QTest::addColumn<int>("orden");         // the outer side's column, going down
        QTest::addColumn<QList<bool>>("idas");  // each "all moved": inwards?
        QTest::newRow("by name, all in") << 0 << QList<bool>{true};
        QTest::newRow("by number, all in, all out") << 1 << QList<bool>{true, false};
    }
    void manyLinesMovedKeepTheirOrder() {
        QFETCH(int, orden);
        QFETCH(QList<bool>, idas);
        bd().exec(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 45000) "
            u"INSERT INTO Abonados (Codigo,Alias,Canal) SELECT '0034' || (600000000 + (i * "
            u"7919) % 45000), 'C' || (i % 5000), 0 FROM n"_s);
        bd().exec(
            u"INSERT INTO AboGrup (Abonado,Grupo) SELECT Codigo, 3 FROM Abonados WHERE "
            u"rowid % 3 = 0"_s);
        miembro(u"0034699999999"_s, 3);  // no contact: goes at the store
        miembro(u"0034600000003"_s, 7);
        frmUserGroup m;
        m.nCodGrupo = 3;
        m.msCargarUsuariosParaGrupo();
        QTRY_VERIFY(!m.ocupada());
        m.show();
        qobject_cast<ModeloPaginado*>(m.lstcontactos->modelo())->ordenar(orden, true);
        QStringList fuera = textosDe(m.lstcontactos, 1);
        QStringList dentro = textosDe(m.lstLista, 1);
        for (const bool haciaDentro : idas) {
            Listado* destino = haciaDentro ? m.lstLista : m.lstcontactos;
            QStringList& esperadas = haciaDentro ? dentro : fuera;
            QStringList& origen = haciaDentro ? fuera : dentro;
            for (auto it = origen.crbegin(); it != origen.crend(); ++it) esperadas.append(*it);
            const int movidas = int(origen.size());
            origen.clear();
            (haciaDentro ? m.cmdTodos : m.cmdquitarTodos)->click();
            QCOMPARE(textosDe(haciaDentro ? m.lstcontactos : m.lstLista, 1), origen);
            // The last line as the paint reads it, then one halfway down
            // as a click does, then every one.
            const QAbstractItemModel* modelo = destino->model();
            QCOMPARE(modelo->rowCount(), esperadas.size());
            destino->scrollToBottom();
            QTRY_COMPARE(modelo->data(modelo->index(int(esperadas.size()) - 1, 1)).toString(),
                         esperadas.last());
            const int mitad = int(esperadas.size()) - movidas / 2;
            QCOMPARE(destino->modelo()->texto(mitad, 1), esperadas.at(mitad));
            QCOMPARE(textosDe(destino, 1), esperadas);
        }
        const bool todosDentro = idas.last();
        // Some hundreds go back by choice: they follow the other side's
        // lines from the last up, a far page of them read from the end.
        Listado* l = todosDentro ? m.lstLista : m.lstcontactos;
        Listado* otra = todosDentro ? m.lstcontactos : m.lstLista;
        QStringList vueltas;
        for (int f = 0; f < 600; ++f) {
            l->seleccionarFila(f, f > 0);
            vueltas.append(l->modelo()->texto(f, 1));
        }
        QStringList esperadas = textosDe(otra, 1);
        for (auto it = vueltas.crbegin(); it != vueltas.crend(); ++it) esperadas.append(*it);
        (todosDentro ? m.cmdQuitar : m.Command1)->click();
        const int lejos = int(esperadas.size()) - 50;
        QCOMPARE(otra->modelo()->texto(lejos, 1), esperadas.at(lejos));
        QCOMPARE(textosDe(otra, 1), esperadas);
        QStringList guardados = vueltas;
        if (!todosDentro) {
            // They go out again with the rest: their run comes first, turned
            // round, a far page of it read first.
            QStringList todas = textosDe(l, 1);
            const int lejana = int(todas.size()) + 550;
            for (auto it = esperadas.crbegin(); it != esperadas.crend(); ++it) todas.append(*it);
            m.cmdquitarTodos->click();
            QCOMPARE(l->modelo()->texto(lejana, 1), todas.at(lejana));
            QCOMPARE(textosDe(l, 1), todas);
            guardados.clear();
        }
        m.cmdAdd->click();
        // Thirty thousand new members take more than the click's turn.
        QVERIFY((m.ocupada() && !m.cmdTodos->isEnabled() && !m.lstLista->isEnabled()) ||
                !todosDentro);
        m.reject();  // closing waits for the store
        QVERIFY(m.isVisible() || !todosDentro);
        QTRY_VERIFY(!m.isVisible());
        if (todosDentro) {
            guardados = columna(u"select Codigo from Abonados"_s);
            for (const QString& c : vueltas) guardados.removeOne(c);
        }
        guardados.sort();
        QCOMPARE(columna(u"select Abonado from AboGrup where Grupo = 3 order by 1"_s), guardados);
        QCOMPARE(columna(u"select Abonado from AboGrup where Grupo = 7"_s),
                 QStringList{u"0034600000003"_s});
    }

    // Another program, which can't work out the names' order, writes and
    // renames contacts; the screen still shows them in the lists' order
    // (accents and case don't count, "ñ" after "n").
    void namesWrittenElsewhereKeepTheListsOrder() {
        sqlite3* otro = nullptr;
        QCOMPARE(sqlite3_open((world.root() + u"/listas.db"_s).toUtf8().constData(), &otro),
                 SQLITE_OK);
        const char* sql =
            "INSERT INTO Abonados (Codigo, Alias, Canal) VALUES ('1', 'Óscar', 0), ('2', 'ñu', 0), "
            "('3', 'Nz', 0), ('4', 'zeta', 0), ('5', 'oa', 0); "
            "UPDATE Abonados SET Alias = 'Álvaro' WHERE Codigo = '4';";
        QCOMPARE(sqlite3_exec(otro, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(otro);
        frmUserGroup m;
        m.nCodGrupo = 3;
        m.msCargarUsuariosParaGrupo();
        QTRY_VERIFY(!m.ocupada());
        QCOMPARE(textosDe(m.lstcontactos, 0),
                 (QStringList{u"ÁLVARO"_s, u"NZ"_s, u"ÑU"_s, u"OA"_s, u"ÓSCAR"_s}));
    }

    void publicationGoesToItsScreen() {
        lista(5, u"Web"_s);
        InterfazGuionada ui;
        registrarPantallasAgenda();
        int abierta = 0;
        Pantallas::registrar(u"frmSubirListaWeb"_s, [&] { ++abierta; });
        QVERIFY(Pantallas::abrir(u"frmGrupos"_s));
        // Opened again, the one screen still asks for one publication a click.
        QVERIFY(Pantallas::abrir(u"frmGrupos"_s));
        frmGrupos* pantalla = PantallasHijas::instance<frmGrupos>();
        QList<frmGrupos::ListaElegida> pedidas;
        connect(pantalla, &frmGrupos::publicacionPedida, this,
                [&](const frmGrupos::ListaElegida& l) { pedidas.append(l); });
        pantalla->cmdPublicar->click();  // nothing selected
        QCOMPARE(abierta, 0);
        pantalla->ListView1->seleccionarFila(0);
        pantalla->cmdPublicar->click();
        QCOMPARE(abierta, 1);
        QCOMPARE(pedidas.size(), 1);
        QCOMPARE(pedidas[0].nombre, u"Web"_s);
        QCOMPARE(pedidas[0].grupo, int16_t(5));
        QCOMPARE(pantalla->listaAPublicar().nombre, u"Web"_s);
        Pantallas::registrar(u"frmSubirListaWeb"_s, {});
        delete pantalla;
    }
};

QUELMO_GUI_TEST_MAIN(TestListas)
#include "test_listas.moc"

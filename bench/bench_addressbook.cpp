// Figures for the address book's lists at 5,000, 50,000 and 500,000
// contacts: opening the contacts, sorting them by a header click, the
// membership screen of a list that holds half of them, and deleting them
// all. Beside each figure, the largest stall of the window's event loop.
#include "Libreta.h"
#include "TestSupportGui.h"
#include "addressbook/frmAbonados.h"
#include "addressbook/frmGrupos.h"
#include "addressbook/frmUserGroup.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "widgets/Listado.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    BancoPantallas banco(argc, argv);
    BaseDatos& bd = Conexion();
    for (int c = 0; c < 3; ++c)
        bd.exec(
            u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,"
            u"Principal) VALUES (?,?,160,80,'h','u','c',0,0)"_s,
            {c, u"Cuenta_%1"_s.arg(c)});
    bd.exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (0,'Todos')"_s);
    std::printf(
        "bench_addressbook: contacts at a tenth, once and ten times 50,000, half of them "
        "in one list\n");

    // Sizes may be given on the command line to look at one of them.
    QList<int> tamanos;
    for (const QString& a : QCoreApplication::arguments().mid(1))
        if (a.toInt() > 0) tamanos.append(a.toInt());
    if (tamanos.isEmpty()) tamanos = {5000, 50000, 500000};
    for (int contactos : tamanos) {
        llenarLibreta(bd, contactos);
        const QString n = QLocale(QLocale::English).toString(contactos);
        const QString mitad = QLocale(QLocale::English).toString(contactos / 2);
        Medida t;
        t.empezar();
        auto* pantalla = new frmAbonados;
        pantalla->show();
        QCoreApplication::processEvents();
        cifra(u"frmAbonados open, "_s + n, t, 50);

        Listado* l = pantalla->ListView1;
        const struct {
            int columna;
            const char* que;
        } clics[] = {{0, "header click Nombre (descending)"},
                     {0, "header click Nombre (ascending)"},
                     {1, "header click Número"},
                     {2, "header click Comentario"},
                     {3, "header click Cuenta"}};
        for (const auto& c : clics) {
            t.empezar();
            Q_EMIT l->header()->sectionClicked(c.columna);
            QCoreApplication::processEvents();
            cifra(QString::fromUtf8(c.que) + u", "_s + n, t, 50);
        }
        // Far down the lists' order on an index: the rows before are
        // skipped, not read.
        const struct {
            int columna;
            double donde;
            const char* que;
        } saltos[] = {{2, 0.9, "jump to 90% by Comentario"},
                      {2, 0.5, "then back to 50%"},
                      {0, 0.95, "jump to 95% by Nombre"}};
        int ordenada = clics[std::size(clics) - 1].columna;
        for (const auto& s : saltos) {
            if (ordenada != s.columna) {
                Q_EMIT l->header()->sectionClicked(s.columna);
                esperarLineas(l->model());
                ordenada = s.columna;
            }
            t.empezar();
            l->scrollTo(l->model()->index(int(contactos * s.donde), 0),
                        QAbstractItemView::PositionAtTop);
            esperarLineas(l->model());
            cifra(QString::fromUtf8(s.que) + u", "_s + n, t, 50);
        }
        l->seleccionarFila(3);
        t.empezar();
        pantalla->msPintarContactos();
        QCoreApplication::processEvents();
        cifra(u"frmAbonados read again, sorted, a line selected, "_s + n, t, 50);
        delete pantalla;

        t.empezar();
        auto* miembros = new frmUserGroup;
        miembros->sNombreGrupo = u"Todos"_s;
        miembros->nCodGrupo = 0;
        miembros->msCargarUsuariosParaGrupo();
        miembros->show();
        while (miembros->ocupada()) QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        cifra(u"frmUserGroup open ("_s + mitad + u" in, "_s + mitad + u" out)"_s, t, 50);
        t.empezar();
        Q_EMIT miembros->lstcontactos->header()->sectionClicked(0);
        QCoreApplication::processEvents();
        cifra(u"frmUserGroup header click Nombre, "_s + mitad + u" out"_s, t, 50);
        miembros->lstLista->seleccionarFila(10);
        t.empezar();
        miembros->cmdQuitar->click();
        QCoreApplication::processEvents();
        cifra(u"frmUserGroup move one line out, "_s + n, t, 50);
        t.empezar();
        miembros->cmdTodos->click();
        QCoreApplication::processEvents();
        cifra(u"frmUserGroup move all in, "_s + n, t, 50);
        // The lines moved in stand after the others until a sort.
        t.empezar();
        miembros->lstLista->scrollToBottom();
        esperarLineas(miembros->lstLista->model());
        cifra(u"frmUserGroup list, to its last line, "_s + n, t, 50);
        miembros->lstLista->scrollToTop();
        esperarLineas(miembros->lstLista->model());
        t.empezar();
        miembros->cmdAdd->click();
        // Stored over several turns: the loop turns until it is.
        while (miembros->ocupada()) QCoreApplication::processEvents();
        cifra(u"frmUserGroup store "_s + n + u" memberships"_s, t, 300);
        delete miembros;

        // All of them out and back in: the lines of the first "all moved"
        // go back one by one, in their order.
        miembros = new frmUserGroup;
        miembros->nCodGrupo = 0;
        miembros->msCargarUsuariosParaGrupo();
        miembros->show();
        while (miembros->ocupada()) QCoreApplication::processEvents();
        const struct {
            QPushButton* boton;
            Listado* lista;
            const char* que;
        } idas[] = {{miembros->cmdquitarTodos, miembros->lstcontactos, "all out"},
                    {miembros->cmdTodos, miembros->lstLista, "all in again"}};
        for (const auto& ida : idas) {
            t.empezar();
            ida.boton->click();
            QCoreApplication::processEvents();
            cifra(u"frmUserGroup move "_s + QString::fromUtf8(ida.que) + u", "_s + n, t, 50);
            t.empezar();
            ida.lista->scrollToBottom();
            esperarLineas(ida.lista->model());
            cifra(u"frmUserGroup, "_s + QString::fromUtf8(ida.que) + u", to the last line, "_s + n,
                  t, 50);
        }
        // A sort takes the lines moved in among the others.
        t.empezar();
        Q_EMIT miembros->lstLista->header()->sectionClicked(0);
        QCoreApplication::processEvents();
        cifra(u"frmUserGroup header click after all in again, "_s + n, t, 50);
        miembros->cmdClose->click();
        delete miembros;

        // That list deleted, its memberships with it.
        auto* listas = new frmGrupos;
        listas->show();
        QCoreApplication::processEvents();
        listas->ListView1->seleccionarFila(0);
        banco.ui.answers = {Msg::Yes};
        t.empezar();
        listas->cmdDelete->click();
        while (listas->ocupada()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        cifra(u"frmGrupos delete the list of "_s + n + u" members"_s, t, 50);
        delete listas;
        bd.exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (0,'Todos')"_s);

        // The loop turns until the summary box has been answered.
        pantalla = new frmAbonados;
        pantalla->show();
        QCoreApplication::processEvents();
        banco.ui.answers = {Msg::Yes};
        const qsizetype cajas = banco.ui.boxes.size();
        t.empezar();
        pantalla->cmdDeletetodos->click();
        while (banco.ui.boxes.size() < cajas + 2) QCoreApplication::processEvents();
        cifra(u"frmAbonados delete all "_s + n, t, 300);
        std::printf("  %s; the list shows %s\n", qPrintable(banco.ui.boxes.last().text.trimmed()),
                    qPrintable(pantalla->lblcont->text()));
        delete pantalla;

        // With a contact of a missing account, which stays: what stays is
        // set aside and put back.
        llenarLibreta(bd, contactos);
        bd.exec(u"UPDATE Abonados SET Canal = 9 WHERE rowid = 1"_s);
        pantalla = new frmAbonados;
        pantalla->show();
        QCoreApplication::processEvents();
        banco.ui.answers = {Msg::Yes};
        const qsizetype antes = banco.ui.boxes.size();
        t.empezar();
        pantalla->cmdDeletetodos->click();
        while (banco.ui.boxes.size() < antes + 2) QCoreApplication::processEvents();
        cifra(u"frmAbonados delete all "_s + n + u", one hidden stays"_s, t, 300);
        std::printf("  %s\n", qPrintable(banco.ui.boxes.last().text.trimmed()));
        delete pantalla;
    }
    return 0;
}

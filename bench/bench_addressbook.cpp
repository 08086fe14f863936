// Figures for the address book's lists: opening the contacts with 50,000
// rows, sorting them by a header click, and the membership screen.
#include "TestSupportGui.h"
#include "addressbook/frmAbonados.h"
#include "addressbook/frmUserGroup.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "widgets/Listado.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QPushButton>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int kContactos = 50000;

const char16_t* const kNombres[] = {u"Álvaro", u"beatriz", u"Carmen", u"David",  u"Elena",
                                    u"Ñuño",   u"óscar",   u"Pilar",  u"Quique", u"Rosa"};

void llenar() {
    BaseDatos& bd = Conexion();
    bd.begin();
    for (int c = 0; c < 3; ++c)
        bd.exec(
            u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,"
            u"Principal) VALUES (?,?,160,80,'h','u','c',0,0)"_s,
            {c, u"Cuenta_%1"_s.arg(c)});
    bd.exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (0,'Todos')"_s);
    // Names in a scrambled order, so the sort has real work to do.
    for (int i = 0; i < kContactos; ++i) {
        const int k = int((i * 7919LL) % kContactos);
        bd.exec(
            u"INSERT INTO Abonados (Codigo,Alias,Comentario,Canal) VALUES (?,?,?,?)"_s,
            {u"0034%1"_s.arg(600000000 + k),
             QString(QString::fromUtf16(kNombres[k % 10]) + u" %1"_s.arg(k, 5, 10, QChar(u'0'))),
             u"comentario %1"_s.arg(k % 977), k % 3});
        if (k % 2)
            bd.exec(u"INSERT INTO AboGrup (Abonado,Grupo) VALUES (?,0)"_s,
                    {u"0034%1"_s.arg(600000000 + k)});
    }
    bd.commit();
}

void cifra(const char* que, qint64 ms) {
    std::printf("%-58s %6lld ms\n", que, static_cast<long long>(ms));
}

}  // namespace

int main(int argc, char** argv) {
    BancoPantallas banco(argc, argv);
    llenar();
    std::printf("bench_addressbook: %d contacts, half of them in one list\n", kContactos);

    QElapsedTimer t;
    t.start();
    auto* pantalla = new frmAbonados;
    pantalla->show();
    QCoreApplication::processEvents();
    cifra("frmAbonados open (query, fill, show)", t.elapsed());

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
        t.restart();
        Q_EMIT l->header()->sectionClicked(c.columna);
        QCoreApplication::processEvents();
        cifra(c.que, t.elapsed());
    }

    l->selectAll();
    t.restart();
    pantalla->msPintarContactos();
    QCoreApplication::processEvents();
    cifra("frmAbonados redraw after a requery, sorted", t.elapsed());
    delete pantalla;

    t.restart();
    frmUserGroup miembros;
    miembros.sNombreGrupo = u"Todos"_s;
    miembros.nCodGrupo = 0;
    miembros.msCargarUsuariosParaGrupo();
    miembros.show();
    QCoreApplication::processEvents();
    cifra("frmUserGroup open (25,000 in, 25,000 out)", t.elapsed());
    t.restart();
    miembros.cmdTodos->click();
    QCoreApplication::processEvents();
    cifra("frmUserGroup move all in", t.elapsed());
    t.restart();
    miembros.cmdAdd->click();
    cifra("frmUserGroup store 50,000 memberships", t.elapsed());

    pantalla = new frmAbonados;
    banco.ui.answers = {Msg::Yes};
    t.restart();
    pantalla->cmdDeletetodos->click();
    cifra("frmAbonados delete all 50,000", t.elapsed());
    delete pantalla;
    return 0;
}

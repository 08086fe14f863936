// Figures for choosing many recipients and writing to them, at 5,000,
// 50,000 and 500,000 contacts, half of them in one list: the compose
// screen and the picker opening, "Todos >>" and "Aceptar" in the picker,
// "Añadir" in the compose screen with every contact and with the list, a
// multi-send given the list's members, and the tick that fires it. Beside
// each figure, the largest stall of the window's event loop.
#include "Libreta.h"
#include "TestSupportGui.h"
#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "composition/crtAutoComplete.h"
#include "composition/frmEnvio.h"
#include "composition/frmSeleccion.h"
#include "db/Conexion.h"
#include "scheduling/ProximasTareas.h"
#include "scheduling/clsTareasPendientes.h"
#include "scheduling/frmNewMenAuto2.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

// The book, with no outbox and no multi-send.
void llenar(BaseDatos& bd, int contactos) {
    bd.exec(u"DELETE FROM envios"_s);
    bd.exec(u"DELETE FROM AboAuto"_s);
    bd.exec(u"DELETE FROM Automaticos"_s);
    llenarLibreta(bd, contactos);
}

// The picker's answer, worked out over turns.
QString elegidos(frmSeleccion* picker) {
    std::optional<QString> r;
    picker->elegirDestinos([&](const QString& aliases) { r = aliases; });
    while (!r) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return *r;
}

template <class T>
T* hijo(QObject* padre, const QString& nombre) {
    return prueba::hijo<T>(padre, nombre);
}

}  // namespace

int main(int argc, char** argv) {
    BancoPantallas banco(argc, argv);
    BaseDatos& bd = Conexion();
    for (int c = 0; c < 3; ++c)
        bd.exec(
            u"INSERT INTO Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,"
            u"Principal) VALUES (?,?,160,80,'h','u','c',0,?)"_s,
            {c, u"Cuenta_%1"_s.arg(c), c == 0 ? 1 : 0});
    bd.exec(u"INSERT INTO Grupos (Grupo,Nombre) VALUES (0,'Todos')"_s);
    std::printf(
        "bench_recipients: contacts at a tenth, once and ten times 50,000, half of them "
        "in one list\n");
    QList<int> tamanos;
    for (const QString& a : QCoreApplication::arguments().mid(1))
        if (a.toInt() > 0) tamanos.append(a.toInt());
    if (tamanos.isEmpty()) tamanos = {5000, 50000, 500000};
    for (const int contactos : tamanos) {
        llenar(bd, contactos);
        const QString n = QLocale(QLocale::English).toString(contactos);
        const QString mitad = QLocale(QLocale::English).toString(contactos / 2);
        Medida t;

        t.empezar();
        auto* envio = new frmEnvio;
        envio->show();
        QCoreApplication::processEvents();
        cifra(u"compose screen open, "_s + n, t, 50);
        auto* caja = hijo<crtAutoComplete>(envio, u"crtAutoComplete1"_s);
        t.empezar();
        while (caja->SearchList().count(u';') + 1 < contactos)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        cifra(u"compose box has every contact to offer, "_s + n, t, 50);
        // A key typed in the box: the names with that start offered.
        QLineEdit* linea = caja->Text1();
        linea->setFocus();
        QTest::keyClicks(linea, u"Ca"_s);
        t.empezar();
        QTest::keyClick(linea, Qt::Key_R);
        QCoreApplication::processEvents();
        cifra(u"a key in the box (\"Car\", a tenth offered), "_s + n, t, 50);
        t.empezar();
        QTest::keyClick(linea, Qt::Key_X);
        QCoreApplication::processEvents();
        cifra(u"a key in the box (\"Carx\", none offered), "_s + n, t, 50);
        caja->setTexto({});

        t.empezar();
        auto* picker = new frmSeleccion;
        picker->show();
        QCoreApplication::processEvents();
        cifra(u"picker open, "_s + n, t, 50);
        t.empezar();
        while (!hijo<QPushButton>(picker, u"cmdTodos"_s)->isEnabled())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        cifra(u"picker has every contact listed, "_s + n, t, 50);
        t.empezar();
        hijo<QPushButton>(picker, u"cmdTodos"_s)->click();
        QCoreApplication::processEvents();
        cifra(u"picker \"Todos >>\" contacts, "_s + n, t, 50);
        t.empezar();
        const QString todos = elegidos(picker);
        cifra(u"picker \"Aceptar\", every contact, "_s + n, t, 50);
        t.empezar();
        delete picker;
        cifra(u"picker closed, every contact chosen, "_s + n, t, 50);

        auto* texto = hijo<QPlainTextEdit>(envio, u"txtMensaje"_s);
        {
            t.empezar();
            caja->setTexto(todos);
            QCoreApplication::processEvents();
            cifra(u"compose box given every contact, "_s + n, t, 50);
            texto->setPlainText(u"Hola a todos"_s);
            t.empezar();
            hijo<QPushButton>(envio, u"cmdAñadir"_s)->click();
            while (envio->ocupada()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            cifra(u"compose \"Enviar Mensaje\", every contact, "_s + n, t, 50);
            std::printf("  outbox rows %lld\n",
                        numeroDe(bd.query(u"SELECT count(*) FROM envios"_s).value(0, 0)));
        }
        delete envio;

        picker = new frmSeleccion;
        picker->show();
        QCoreApplication::processEvents();
        hijo<Listado>(picker, u"lstlistas"_s)->seleccionarFila(0);
        hijo<QPushButton>(picker, u"Command2"_s)->click();
        t.empezar();
        const QString lista = elegidos(picker);
        cifra(u"picker \"Aceptar\", a list of "_s + mitad, t, 50);
        delete picker;

        const QStringList aliases = lista.split(u';');
        {
            t.empezar();
            std::optional<Resultado<int>> r;
            anadirDestinatarios(7, u"Grande"_s, aliases, u"Hola"_s, true,
                                [&](const Resultado<int>& x) { r.emplace(x); });
            while (!r) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            cifra(u"multi-send given a list of "_s + mitad, t, 50);
            std::printf("  recipients %d\n", *r ? **r : -1);
        }
        t.empezar();
        auto* editor = new frmNewMenAuto2;
        editor->setCodigo(7);
        editor->show();
        editor->tabs->setCurrentIndex(1);
        // Until its lines are counted and the first page painted.
        const auto* lineas = qobject_cast<const ModeloPaginado*>(editor->ListView1->modelo());
        const auto pintado = [&] {
            do {
                while (editor->ocupada() || lineas->leyendo())
                    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
                QCoreApplication::processEvents();
            } while (editor->ocupada() || lineas->leyendo());
        };
        pintado();
        cifra(u"the multi-send's editor open, "_s + mitad + u" recipients"_s, t, 50);
        t.empezar();
        editor->ListView1->sortByColumn(1, Qt::AscendingOrder);
        pintado();
        cifra(u"the editor's lines by message"_s, t, 50);
        delete editor;
        // Due now, every day at this minute.
        const QDateTime ahora = Reloj::now();
        bd.exec(
            u"UPDATE Automaticos SET TareaProgramada = 1, Periodicidad = 1, Cada = 1, "
            u"Hora = ?, FechaIni = ?, FechaFin = ?, UltimaTarea = NULL WHERE Codigo = 7"_s,
            {QDateTime(QDate(2006, 1, 2), QTime(ahora.time().hour(), ahora.time().minute())),
             QDate(2006, 1, 1), QDate(9999, 12, 31)});
        ProximasTareas::guardar(7);
        bd.exec(u"DELETE FROM envios"_s);
        int disparadas = 0;
        t.empezar();
        disparadas = prueba::esperar(clsTareasPendientes::ReLoad());
        cifra(u"tick firing a multi-send of "_s + mitad, t, 50);
        std::printf("  fired %d, outbox rows %lld\n", disparadas,
                    numeroDe(bd.query(u"SELECT count(*) FROM envios"_s).value(0, 0)));
    }
    return 0;
}

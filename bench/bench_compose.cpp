// Figures of the compose screen: opening it over an outbox of 10,000,
// 100,000 and 1,000,000 rows, its refresh with and without a change in
// the row count, and a key typed in the recipient box over a large address
// book. Beside each figure, the largest stall of the window's event loop
// while it ran.
#include "SondaBucle.h"
#include "TestSupportGui.h"
#include "base/EstadoAplicacion.h"
#include "composition/crtAutoComplete.h"
#include "composition/frmEnvio.h"
#include "db/Conexion.h"
#include "widgets/Listado.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <cstdio>
#include <ctime>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kContactos = 20000;

void llenarBandeja(BaseDatos& db, int filas) {
    db.exec(u"DELETE FROM envios"_s);
    db.exec(
        u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
        u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) "
        u"SELECT printf('2026-11-23 10:%02d:%02d', i / 60 % 60, i % 60), 1 + i % 2, "
        u"'0034' || (600000000 + i), "
        u"'Mensaje número ' || i || ' de la prueba de la bandeja de salida', 2 FROM n"_s,
        {filas - 1});
}

QString libreta() {
    static const char16_t* nombres[] = {u"Ana",        u"Andrés", u"Beatriz", u"Carlos", u"Marta",
                                        u"María José", u"Pedro",  u"Lucía",   u"Jorge",  u"Elena"};
    QStringList alias;
    for (int i = 0; i < kContactos; ++i)
        alias.append(QString::fromUtf16(nombres[i % 10]) + u' ' + QString::number(i));
    alias.sort(Qt::CaseInsensitive);
    return alias.join(u';');
}

void refrescar(frmEnvio& f) {
    QMetaObject::invokeMethod(f.findChild<QTimer*>(u"Timer1"_s), "timeout");
}

// Wall time, the processor time of this process (the machine is shared,
// so the second tells what the work itself costs) and the largest stall.
struct Medida {
    QElapsedTimer reloj;
    std::clock_t cpu = 0;
    Sonda sonda;
    void restart() {
        sonda.empezar();
        reloj.restart();
        cpu = std::clock();
    }
};

void cifra(const QString& que, Medida& m, double limite, int vueltas = 1) {
    const double pared = m.reloj.nsecsElapsed() / 1e6 / vueltas;
    const double cpu = double(std::clock() - m.cpu) * 1000.0 / CLOCKS_PER_SEC / vueltas;
    QCoreApplication::processEvents();
    const qint64 parada = m.sonda.terminar();
    std::printf("%-58s %8.1f ms wall %8.1f ms cpu %6lld ms stall  (target < %.0f ms)\n",
                qPrintable(que), pared, cpu, static_cast<long long>(parada), limite);
}

void medirBandeja(BaseDatos& db, InterfazGuionada& ui, int filas) {
    llenarBandeja(db, filas);
    const QString n = QLocale(QLocale::English).toString(filas);
    Medida t;
    t.restart();
    auto* f = new frmEnvio();
    f->show();
    QCoreApplication::processEvents();
    cifra(u"open the screen, "_s + n + u" outbox rows"_s, t, 50);
    VistaLineas* lista = f->findChild<VistaLineas*>(u"ListView1"_s);
    const int mostradas = lista->model()->rowCount();
    // A line chosen in the middle of the view, as a user would have it.
    lista->setCurrentIndex(lista->model()->index(5, 0));

    constexpr int kVueltas = 20;
    t.restart();
    for (int i = 0; i < kVueltas; ++i) {
        refrescar(*f);
        QCoreApplication::processEvents();
    }
    cifra(u"refresh, row count unchanged (mean of 20), "_s + n, t, 16, kVueltas);

    db.exec(
        u"INSERT INTO envios (Registro,Canal,Abonado,Mensaje,intento) VALUES "
        u"('2026-11-23 11:00:00',1,'0034699999999','una más',2)"_s);
    t.restart();
    refrescar(*f);
    QCoreApplication::processEvents();
    cifra(u"refresh after one row came, "_s + n, t, 16);

    // What a drain does every few seconds: a batch of 500 leaves.
    db.exec(u"DELETE FROM envios WHERE Id IN (SELECT Id FROM envios ORDER BY Id LIMIT 500)"_s);
    t.restart();
    refrescar(*f);
    QCoreApplication::processEvents();
    cifra(u"refresh after a batch of 500 left, "_s + n, t, 16);

    // Fecha, Destinatario and Cuenta sort on indexes; Mensaje, and the
    // lines of one account in the order of Mensaje, are sorted over turns.
    QHeaderView* cabecera = lista->header();
    for (const auto& [columna, nombre] : {std::pair{4, u"Mensaje"_s},
                                          {1, u"Fecha"_s},
                                          {2, u"Destinatario"_s},
                                          {3, u"Cuenta"_s},
                                          {4, u"Mensaje again"_s},
                                          {3, u"Cuenta after Mensaje"_s}}) {
        t.restart();
        Q_EMIT cabecera->sectionClicked(columna);
        esperarLineas(lista->model());
        cifra(u"header click "_s + nombre + u", "_s + n, t, 50);
    }
    // A jump into that order reads the lines about it alone: a quarter
    // down lies inside one account; the middle, where the first ends.
    for (const auto& [parte, nombre] :
         {std::pair{4, u"a quarter down"_s}, {2, u"to the middle"_s}}) {
        t.restart();
        lista->scrollTo(lista->model()->index(lista->model()->rowCount() / parte, 0),
                        QAbstractItemView::PositionAtTop);
        esperarLineas(lista->model());
        cifra(u"jump "_s + nombre + u" (Cuenta after Mensaje), "_s + n, t, 50);
    }
    std::printf("  rows shown %d, after insert and batch %d\n", mostradas,
                lista->model()->rowCount());

    // "Eliminar Todos", with what it leaves for the turns after (the log's
    // copy into the file).
    ui.answers = {Msg::Yes};
    t.restart();
    f->findChild<QPushButton*>(u"cmdEliminarTodos"_s)->click();
    while (f->ocupada()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    for (QDeadlineTimer resto(50); !resto.hasExpired();)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, resto.remainingTime());
    cifra(u"delete all, "_s + n, t, 50);
    delete f;
}

}  // namespace

int main(int argc, char** argv) {
    BancoPantallas banco(argc, argv);
    BaseDatos& db = Conexion();
    db.exec(
        u"INSERT INTO Canales (Canal,Nombre,Saldo,Principal,Remitente) VALUES "
        u"(1,'Cuenta_1',500,1,'Juan'),(2,'Cuenta_2',20,0,'')"_s);
    std::printf("bench_compose: the outbox list at a tenth, once and ten times 100,000 rows\n");
    for (int filas : {10000, 100000, 1000000}) medirBandeja(db, banco.ui, filas);

    Medida t;
    crtAutoComplete caja;
    caja.setSearchList(libreta());
    caja.show();
    QLineEdit* texto = caja.Text1();
    texto->setFocus();
    QTest::keyClicks(texto, u"Ma"_s);
    t.restart();
    QTest::keyClick(texto, Qt::Key_R);
    QCoreApplication::processEvents();
    cifra(u"key in the recipient box, 20,000 contacts (\"Mar\")"_s, t, 50);
    const qsizetype ofrecidosMar = caja.ofrecidos().size();
    texto->clear();
    t.restart();
    QTest::keyClick(texto, Qt::Key_A);
    QCoreApplication::processEvents();
    cifra(u"key in the recipient box, 20,000 contacts (\"a\")"_s, t, 50);
    std::printf("names offered for \"Mar\" %lld, for \"a\" %lld\n", qlonglong(ofrecidosMar),
                qlonglong(caja.ofrecidos().size()));
    return 0;
}

// Figures of the scheduler: its share of a tick (ReLoad over 10,000 active
// scheduled rows of every kind, none of them due, with the real clock), the
// list of those 10,000 multi-sends with their next runs, and the editor on
// a multi-send of 5,000 recipients.
#include "TestSupportGui.h"
#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "scheduling/clsTareasPendientes.h"
#include "scheduling/ctrScheduledTask.h"
#include "scheduling/frmMenAuto.h"
#include "scheduling/frmNewMenAuto2.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Listado.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>
#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFilas = 10000;
constexpr int kDestinatarios = 5000;
constexpr int kEditado = kFilas;  // the code of the large multi-send

// Runs three hours ahead, on days other than today: nothing falls due.
void llenarProgramas(BaseDatos& db) {
    const QDateTime ahora = Reloj::now();
    const QDate hoy = ahora.date();
    const QDateTime hora(QDate(2006, 1, 2), ahora.time().addSecs(3 * 3600));
    const int otrosDias = 127 & ~(1 << (hoy.dayOfWeek() - 1));
    const QDate anual = hoy.addDays(40).day() == 29 ? hoy.addDays(41) : hoy.addDays(40);
    db.begin();
    for (int i = 0; i < kFilas; ++i)
        db.exec(
            u"INSERT INTO Automaticos (Codigo, Nombre, TareaProgramada, Hora, Periodicidad, "
            u"FechaIni, FechaFin, Cada, DiasSemana, MensualEsDia, MensualDiaMes, "
            u"MensualNumSemana, MensualDiaSemana, AnualDia, AnualMes) "
            u"VALUES (?,?,1,?,?,?,?,2,?,?,?,2,2,?,?)"_s,
            {i, u"Programa %1"_s.arg(i), hora, i % 5,
             i % 5 == 0 ? hoy.addDays(1) : hoy.addYears(-1), QDate(9999, 12, 31), otrosDias,
             i % 10 == 3, hoy.addDays(-1).day(), anual.day(), anual.month()});
    db.commit();
}

// Three recipients for each multi-send, and one more multi-send whose
// 5,000 contacts are added through the editor's routine.
void llenarDestinatarios(BaseDatos& db) {
    db.begin();
    for (int i = 0; i < kDestinatarios; ++i)
        db.exec(u"INSERT INTO Abonados (Codigo, Alias, Canal) VALUES (?, ?, 0)"_s,
                {u"0034%1"_s.arg(600000000 + i), u"Contacto %1"_s.arg(i, 5, 10, QChar(u'0'))});
    for (int i = 0; i < kFilas; ++i)
        for (int k = 0; k < 3; ++k)
            db.exec(u"INSERT INTO AboAuto (Automatico, Abonado, Mensaje) VALUES (?, ?, ?)"_s,
                    {i, u"0034%1"_s.arg(600000000 + (i * 3 + k) % kDestinatarios),
                     u"Mensaje programado %1"_s.arg(i)});
    db.commit();
}

// Processor time of this process, so that a figure taken on a busy machine
// can be told apart from the work itself.
double msProceso() {
    return double(std::clock()) * 1000.0 / CLOCKS_PER_SEC;
}

void cifra(const char* que, double ms, double cpu, const char* objetivo) {
    std::printf("%-56s %7.1f ms wall %7.1f ms cpu  (%s)\n", que, ms, cpu, objetivo);
}

}  // namespace

int main(int argc, char** argv) {
    BancoPantallas banco(argc, argv);
    llenarProgramas(Conexion());

    QList<double> tiempos;
    int disparadas = 0;
    for (int vuelta = 0; vuelta < 5; ++vuelta) {
        QElapsedTimer t;
        t.start();
        disparadas += clsTareasPendientes().ReLoad();
        tiempos.append(double(t.nsecsElapsed()) / 1e6);
    }
    std::sort(tiempos.begin(), tiempos.end());
    std::printf(
        "ReLoad, %d active scheduled rows, none due: %.1f ms median of 5 ticks "
        "(min %.1f, max %.1f; target < 200 ms); rows fired: %d\n",
        kFilas, tiempos[2], tiempos.first(), tiempos.last(), disparadas);

    llenarDestinatarios(Conexion());
    QElapsedTimer t;
    t.start();
    double cpu = msProceso();
    const LineasMenAuto leidas = leerMensajesProgramados();
    cifra("the list's rows with their next runs (no screen)", double(t.nsecsElapsed()) / 1e6,
          msProceso() - cpu, "part of the next figure");
    t.restart();
    cpu = msProceso();
    auto* lista = new frmMenAuto;
    lista->show();
    QCoreApplication::processEvents();
    cifra("frmMenAuto open, 10,000 multi-sends with next runs", double(t.nsecsElapsed()) / 1e6,
          msProceso() - cpu, "target < 1000 ms");
    const int lineas = lista->ListView1->modelo()->rowCount();
    delete lista;

    QStringList aliases;
    for (int i = 0; i < kDestinatarios; ++i) aliases << u"Contacto %1"_s.arg(i, 5, 10, QChar(u'0'));
    t.restart();
    cpu = msProceso();
    const int anadidos = anadirDestinatarios(kEditado, u"Grande"_s, aliases, u"Hola"_s, true);
    cifra("add 5,000 recipients (one transaction)", double(t.nsecsElapsed()) / 1e6,
          msProceso() - cpu, "no target");

    t.restart();
    cpu = msProceso();
    auto* editor = new frmNewMenAuto2;
    editor->setCodigo(kEditado);
    editor->show();
    QCoreApplication::processEvents();
    cifra("frmNewMenAuto2 open, 5,000 recipients", double(t.nsecsElapsed()) / 1e6,
          msProceso() - cpu, "target < 500 ms");
    const int enLista = editor->ListView1->modelo()->rowCount();
    editor->optTask[1]->click();
    editor->ctrScheduledTask1->cmbTipoTask->setCurrentIndex(2);
    t.restart();
    cpu = msProceso();
    editor->XPButton2->click();
    QCoreApplication::processEvents();
    cifra("frmNewMenAuto2 close (save), 5,000 recipients", double(t.nsecsElapsed()) / 1e6,
          msProceso() - cpu, "target < 1000 ms");
    delete editor;
    std::printf("lines listed: %d; recipients added: %d, shown: %d\n", lineas, anadidos, enLista);
    return disparadas == 0 && lineas == kFilas && leidas.codigos.size() == kFilas &&
                   enLista == kDestinatarios
               ? 0
               : 1;
}

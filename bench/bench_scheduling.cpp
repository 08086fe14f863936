// Figure of the scheduler's share of a tick: ReLoad over 10,000 active
// scheduled rows of every kind, none of them due, with the real clock.
#include "TestSupport.h"
#include "base/AppState.h"
#include "base/Clock.h"
#include "db/Conexion.h"
#include "scheduling/clsTareasPendientes.h"

#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFilas = 10000;

// Runs three hours ahead, on days other than today: nothing falls due.
void llenarProgramas(Database& db) {
    const QDateTime ahora = Clock::now();
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

}  // namespace

int main(int argc, char** argv) {
    TestWorld world;
    QCoreApplication app(argc, argv);
    prepareTestApplication();
    TestDb::openShared(TestDb::createCurrent(world.root() + u"/bench.db"_s));
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
    return disparadas == 0 ? 0 : 1;
}

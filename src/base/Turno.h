#pragma once

#include <QCoro/QCoroTask>
#include <QSet>
#include <QString>
#include <QVector>

// A pause of a coroutine that gives the event loop its turn: work of ours
// too long for one turn (an import of a large file) awaits it between its
// pieces, so the window is never held for all of it. Without an
// application (a test of the routines alone) it goes on at once.
QCoro::Task<> turnoSiguiente(int ms = 1);

// A large container freed a piece at a time over turns of the event loop:
// half a million strings freed in one call hold the window a fifth of a
// second. Without an application it goes at once.
void liberarPorTurnos(QSet<QString> conjunto);
void liberarPorTurnos(QVector<QString> celdas);

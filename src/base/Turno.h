#pragma once

#include <QCoro/QCoroTask>

// A pause of a coroutine that gives the event loop its turn: work of ours
// too long for one turn (an import of a large file) awaits it between its
// pieces, so the window is never held for all of it. Without an
// application (a test of the routines alone) it goes on at once.
QCoro::Task<> turnoSiguiente(int ms = 1);

#pragma once

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QList>
#include <QSet>
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <memory>

// A pause of a coroutine that gives the event loop its turn: work of ours
// too long for one turn (an import of a large file) awaits it between its
// pieces, so the window is never held for all of it. Without an
// application (a test of the routines alone) it goes on at once.
QCoro::Task<> turnoSiguiente(int ms = 1);

namespace turno_detalle {
// Elements freed between two looks at the clock, and what a turn gives
// them: a map's element is three blocks, a list's string one.
constexpr qsizetype kPieza = 2000;
constexpr qint64 kTurnoMs = 6;
// Fewer than this go at once.
constexpr qsizetype kDeUnaVez = 10000;
template <class T>
void quitarTramo(QSet<T>& c) {
    auto it = c.begin();
    for (qsizetype k = 0; k < kPieza && it != c.end(); ++k) it = c.erase(it);
}
template <class T>
void quitarTramo(QList<T>& c) {
    c.resize(std::max<qsizetype>(0, c.size() - kPieza));
}
template <class K, class V>
void quitarTramo(std::map<K, V>& c) {
    auto hasta = c.begin();
    std::advance(hasta, std::min<qsizetype>(kPieza, qsizetype(c.size())));
    c.erase(c.begin(), hasta);
}
// The allocator keeps small freed blocks aside and merges all of them at
// the next large request, in whatever turn that comes: a large request
// here pays for this piece's alone.
inline void fundirLibres() {
    void* volatile bloque = std::malloc(64 * 1024);
    std::free(bloque);
}
// A piece of a container's freeing; true once it is all freed.
using Pieza = std::function<bool()>;
// The one queue of what is being freed: one timer takes the pieces of all
// the containers in order, a turn at a time. A timer for each would fire
// together in one pass of the loop, their turns end to end.
void encolar(Pieza pieza);
}  // namespace turno_detalle

// A large container freed a piece at a time over turns of the event loop:
// half a million strings freed in one call hold the window a fifth of a
// second. A small one, or one without an application, goes at once.
template <class C>
void liberarPorTurnos(C contenedor) {
    if (!QCoreApplication::instance() || qsizetype(contenedor.size()) < turno_detalle::kDeUnaVez)
        return;
    auto resto = std::make_shared<C>(std::move(contenedor));
    turno_detalle::encolar([resto] {
        turno_detalle::quitarTramo(*resto);
        turno_detalle::fundirLibres();
        return resto->empty();
    });
}

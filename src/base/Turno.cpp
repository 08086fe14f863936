#include "base/Turno.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <coroutine>
#include <deque>

namespace {
struct Pausa {
    int ms;
    bool await_ready() const { return QCoreApplication::instance() == nullptr; }
    void await_suspend(std::coroutine_handle<> continuar) const {
        // A timer, not a posted event: a chain of those keeps the
        // program's timers waiting.
        QTimer::singleShot(ms, QCoreApplication::instance(), [continuar] { continuar.resume(); });
    }
    void await_resume() const noexcept {}
};
}  // namespace

QCoro::Task<> turnoSiguiente(int ms) {
    // Named, never a temporary of the co_await: g++ 12 destroys such a
    // temporary twice.
    Pausa pausa{ms};
    co_await pausa;
}

namespace turno_detalle {
namespace {
std::deque<Pieza>& cola() {
    static std::deque<Pieza> c;
    return c;
}

void liberarTurno() {
    auto& c = cola();
    QElapsedTimer reloj;
    reloj.start();
    while (!c.empty() && reloj.elapsed() < kTurnoMs)
        if (c.front()()) c.pop_front();
    if (!c.empty()) QTimer::singleShot(1, QCoreApplication::instance(), liberarTurno);
}
}  // namespace

void encolar(Pieza pieza) {
    auto& c = cola();
    c.push_back(std::move(pieza));
    if (c.size() == 1) QTimer::singleShot(1, QCoreApplication::instance(), liberarTurno);
}
}  // namespace turno_detalle

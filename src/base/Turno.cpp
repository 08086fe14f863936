#include "base/Turno.h"

#include <QCoreApplication>
#include <QTimer>
#include <coroutine>

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

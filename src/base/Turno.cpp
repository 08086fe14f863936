#include "base/Turno.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <coroutine>
#include <memory>

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

namespace {
// Strings freed in one turn.
constexpr qsizetype kPorTurno = 50000;

template <class C, class Quitar>
void seguirLiberando(std::shared_ptr<C> resto, Quitar quitar) {
    quitar(*resto);
    if (resto->isEmpty()) return;
    QTimer::singleShot(1, QCoreApplication::instance(),
                       [resto, quitar] { seguirLiberando(resto, quitar); });
}

template <class C, class Quitar>
void liberar(C contenedor, Quitar quitar) {
    if (!QCoreApplication::instance() || contenedor.size() <= kPorTurno) return;
    auto resto = std::make_shared<C>(std::move(contenedor));
    QTimer::singleShot(1, QCoreApplication::instance(),
                       [resto, quitar] { seguirLiberando(resto, quitar); });
}
}  // namespace

void liberarPorTurnos(QSet<QString> conjunto) {
    liberar(std::move(conjunto), [](QSet<QString>& c) {
        auto it = c.begin();
        for (qsizetype k = 0; k < kPorTurno && it != c.end(); ++k) it = c.erase(it);
    });
}

void liberarPorTurnos(QVector<QString> celdas) {
    liberar(std::move(celdas),
            [](QVector<QString>& c) { c.resize(std::max<qsizetype>(0, c.size() - kPorTurno)); });
}

#pragma once

#include "delivery/Transporte.h"

#include <QCoro/QCoroTask>
#include <QPointer>
#include <functional>

class QObject;

// How a routine waits for the platform without anyone waiting on the
// window's stack: the transfer runs on a thread of its own, and the routine,
// a coroutine, is resumed by the window's event loop when the transfer has
// ended. Nothing is nested: a modal screen or a box opened meanwhile delays
// no answer, and several exchanges (one per account, a screen's balance
// query) are in flight side by side. No screen and no database statement
// ever runs on the other thread.
namespace Intercambio {

// What an exchange is for, so that stopping the transmitter gives up its
// batches and leaves a screen's balance query alone.
enum class Clase { Envio, Consulta };

// Runs `trabajo` off this thread and resumes the caller on this thread's
// event loop once it has ended; an exception thrown by `trabajo` is thrown
// again here. While it runs, abandonar() of its class cancels
// `cancelacion`.
QCoro::Task<> enHilo(Clase clase, Transporte::Cancelacion cancelacion,
                     std::function<void()> trabajo);

// Resumes the caller after `ms` milliseconds (a timer, not a wait); false
// when the pause was given up by abandonar() of its class or by
// `cancelacion`.
QCoro::Task<bool> pausa(Clase clase, int ms,
                        Transporte::Cancelacion cancelacion = Transporte::Cancelacion());

// Gives up the exchanges and pauses of a class in flight (the transmitter
// switched off), or all of them (the program stops). Their rows stay where
// they were and go again under the same references.
void abandonar(Clase clase);
void abandonarTodo();

// Exchanges and pauses in flight, for the screens that say so and for tests.
int enCurso();

// The screen an action's exchanges answer to. Closing the screen (a child
// window deleted, a modal one hidden) gives them up: the action, resumed,
// sees abandonada() and drops the late answer instead of showing it on a
// screen that is gone. Keep it in the action's coroutine and hand its
// cancelacion() to the routine that asks the platform.
class Encargo {
  public:
    explicit Encargo(QObject* pantalla);
    ~Encargo();
    Encargo(const Encargo&) = delete;
    Encargo& operator=(const Encargo&) = delete;

    const Transporte::Cancelacion& cancelacion() const { return m_cancelacion; }
    bool abandonada() const { return m_cancelacion.cancelada(); }

  private:
    Transporte::Cancelacion m_cancelacion;
    QPointer<QObject> m_vigia;
};

}  // namespace Intercambio

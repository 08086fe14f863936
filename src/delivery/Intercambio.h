#pragma once

#include "delivery/Transporte.h"

#include <QList>
#include <QPointer>
#include <functional>

class QObject;

// How an exchange with the platform waits without stopping the window: the
// transfer runs on a thread of its own while the calling thread's event
// loop keeps turning, so the window repaints, menus open and other screens
// work. The routine that asked reads on as if the call had blocked, as the
// rest of the program expects; only the transfer moves (no screen and no
// database statement ever runs on the other thread).
namespace Intercambio {

// What an exchange is for, so that stopping the transmitter gives up its
// batch and leaves a screen's balance query alone.
enum class Clase { Envio, Consulta };

// Runs `trabajo` off this thread and waits for it with the event loop
// turning; an exception thrown by `trabajo` is thrown again here. While it
// runs, abandonar() of its class cancels `cancelacion`.
void esperar(Clase clase, const Transporte::Cancelacion& cancelacion,
             const std::function<void()>& trabajo);

// Waits `ms` milliseconds with the event loop turning; false when the wait
// was given up by abandonar() of the class.
bool pausa(Clase clase, int ms);

// Gives up the exchanges of a class in flight (the transmitter switched
// off), or all of them (the program stops). Their rows stay where they
// were and go again under the same references.
void abandonar(Clase clase);
void abandonarTodo();

// Exchanges in flight, for the screens that say so and for tests.
int enCurso();

// The exchange just made answered a screen that has closed meanwhile: the
// routine drops the answer (no box for a screen that is gone).
bool respuestaDescartada();

// The screen an exchange answers to. A screen's action makes one on its
// stack before it calls a routine that talks to the platform. While it
// lives, closing the screen gives up the exchanges the action started, and
// the screen's deletion waits until the action has returned: the action
// then sees abandonada() and drops the late answer instead of showing it
// on a screen that is gone.
class Encargo {
  public:
    explicit Encargo(QObject* pantalla);
    ~Encargo();
    Encargo(const Encargo&) = delete;
    Encargo& operator=(const Encargo&) = delete;

    bool abandonada() const { return m_abandonada; }
    // The screen was closed: its exchanges are given up.
    void abandonar();
    // Deleting `objeto` (the screen or a window that holds it) waits.
    void retener(QObject* objeto);
    // The exchanges of this depth of waiting belong to this screen.
    int nivel() const { return m_nivel; }

  private:
    QObject* m_pantalla;
    QObject* m_vigia;
    int m_nivel;
    bool m_abandonada = false;
    QList<QPointer<QObject>> m_retenidos;
};

}  // namespace Intercambio

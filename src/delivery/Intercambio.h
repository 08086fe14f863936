#pragma once

#include "delivery/Transporte.h"

#include <functional>

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

}  // namespace Intercambio

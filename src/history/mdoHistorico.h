#pragma once

#include "base/Hecho.h"
#include "db/ListaPaginada.h"

#include <QDate>
#include <QString>
#include <QVariant>
#include <cstdint>
#include <functional>
#include <optional>

// The sent history (HEnvios) as the history screen lists it, and what the
// user can do from there: queue a past message again, delete history. The
// screen asks before each of these and shows what they refused.

// The rows of HEnvios as the history screen lists them. A heavy user's
// history holds a million rows: the list reads them a page at a time, in
// the order of the date's index, or of a bounded sort for the other
// columns. "Enviado" and "id" both sort by the date; the others by their
// text with the lists' rule. Rows that compare equal go by their age, in
// the same direction.
namespace Historico {
enum Columna { Enviado = 0, Numero, Cuenta, Mensaje, Resultado, Id, kColumnas };
ListaPaginada::Definicion definicion();
// The rows there are now, counted over turns of the event loop a stretch
// of the date's index at a time; nullopt when they can't be read.
void contar(std::function<void(std::optional<int> filas)> alTerminar);
}  // namespace Historico

// The sort key of the date column: "yyyymmddhhnnss".
QString idDeFecha(int64_t fecha);

// Queues a history row's message once more through today's principal
// account (0 when there is none); the caller asked first. Refused when
// the row names no number the sender takes (a simulated send) or the
// outbox can't be written.
Hecho msReenviarMensaje(const QString& numero, const QString& mensaje);

// The day that "delete what is older than" means, from the picker's text
// ("dd/MM/yyyy"); refused when it is no date.
Resultado<QDate> diaParaBorrar(const QString& fecha);
// Deletes what is older than `dia`: messages of that day itself stay. The
// caller asked first. It goes on over turns of the event loop, oldest
// first, committed as it goes: stopped by a failure or a kill, it has
// deleted what an earlier day would have. `alTerminar` comes once it
// ended, and the list is to be read again either way (a database failure
// is logged).
void msBorrarAnteriores(const QDate& dia, std::function<void()> alTerminar);
// Deletes the whole history, over turns too but whole or not at all.
void msBorrarTodos(std::function<void()> alTerminar);

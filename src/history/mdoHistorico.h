#pragma once

#include "db/ListaPaginada.h"

#include <QString>
#include <QVariant>
#include <cstdint>

// The sent history (HEnvios) as the history screen lists it, and what the
// user can do from there: queue a past message again, delete history.

// The rows of HEnvios as the history screen lists them. A heavy user's
// history holds a million rows: the list reads them a page at a time, in
// the order of the date's index, or of a bounded sort for the other
// columns. "Enviado" and "id" both sort by the date; the others by their
// text with the lists' rule. Rows that compare equal go by their age, in
// the same direction.
namespace Historico {
enum Columna { Enviado = 0, Numero, Cuenta, Mensaje, Resultado, Id, kColumnas };
ListaPaginada::Definicion definicion();
}  // namespace Historico

// The sort key of the date column: "yyyymmddhhnnss".
QString idDeFecha(int64_t fecha);

// Queues the row's message once more, after asking, through today's
// principal account (0 when there is none); tells the user how it went.
// True when a row went into the outbox.
bool msReenviarMensaje(const QString& numero, const QString& mensaje, const QString& fecha);

// Deletes what is older than the day `fecha` ("dd/MM/yyyy"), after asking:
// messages of that day itself stay. True when the delete was reached (the
// list is to be read again), false when the date isn't valid or the user
// said no.
bool msBorrarAnteriores(const QString& fecha);
// Deletes the whole history after asking; true when the delete was reached.
bool msBorrarTodos();

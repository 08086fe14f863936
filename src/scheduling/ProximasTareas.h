#pragma once

#include "db/BaseDatos.h"

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>

class clsNextTarea;

// What Automaticos keeps of each row's next run, so that neither the tick
// nor the list works every schedule out again:
//
// - ProximaTarea: the next run as clsNextTarea gives it now, null when it
//   gives none (ended), empty when it fails (a day its month lacks).
// - RevisarTarea: the first instant at which that answer may change, null
//   when it never will (switched off, or ended for good). The tick reads
//   only the rows whose instant has come, through an index.
//
// The answer changes at the run itself (which stays the next run for its
// minute) and, for a few schedules, when the day changes: a daily one of
// every few days comes up again every day, a day its month lacks fails in
// some months only, an ended daily one can come back the next morning.
// Both instants are asked of the calculation itself. The values hold for
// a clock that runs forward; a jump of the clock, a change of time zone or
// another open of the database has them worked out again for every row,
// a slice at a time in the order of the codes (see clsTareasPendientes):
// until a row's turn comes, what it holds is not to be trusted.
struct ProximaGuardada {
    QString proxima;  // stored form; null for a null column
    QString revisar;
    bool operator==(const ProximaGuardada&) const = default;
};

namespace ProximasTareas {

// "SELECT ... FROM Automaticos ": the columns of clsNextTarea::columnasFila(),
// then ProximaTarea, RevisarTarea and, last, Codigo; the caller adds its
// condition.
QString seleccion();
int32_t codigoDe(const ResultadoConsulta& filas, int fila);
// What row `fila` of such a result holds.
ProximaGuardada guardadaEn(const ResultadoConsulta& filas, int fila);

// Row `fila` of `filas`, which holds the columns of clsNextTarea::columnasFila()
// first, at `ahora`. `calculo` is left with the calculation at `ahora`;
// `fallo` tells that it failed (its results are then not the row's).
ProximaGuardada calcular(clsNextTarea& calculo, int32_t codigo, const ResultadoConsulta& filas,
                         int fila, const QDateTime& ahora, bool* fallo = nullptr);
// Stores it; in the caller's transaction when there is one.
void escribir(int32_t codigo, const ProximaGuardada& p);
// Works one row out again from what it holds now (after it was saved or
// fired). Throws when the database fails.
void guardar(int32_t codigo);
// Starts working every row out again when the database was opened since
// the last look, the wall clock moved otherwise than the monotonic clock,
// or the time zone or its offset changed (a re-work under way starts
// over). True when it did.
bool ponerAlDia();
// While a re-work is under way, the highest code worked out again so far
// (-1: none yet); nullopt when none is under way. Rows above it are left
// to the re-work.
std::optional<int64_t> repasadoHasta();
// The re-work has reached `codigo`; `fin`: every row.
void repasado(int64_t codigo, bool fin);

// Tests: the monotonic clock, in milliseconds; an empty function restores
// the system's.
void setMonotono(std::function<qint64()> fuente);

}  // namespace ProximasTareas

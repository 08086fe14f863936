#pragma once

#include "db/BaseDatos.h"

#include <QCoro/QCoroTask>
#include <functional>
#include <optional>
#include <vector>

// A write too large for one turn of the event loop (emptying a table of
// half a million rows, storing a list of as many members), done over
// several turns in one transaction of the shared connection, so the window
// keeps turning. Nobody is left with half of it: other programs read the
// file as it was until the commit, a kill undoes it all, and meanwhile this
// program's other writers find the database busy (BaseDatos::retenida), as
// when another program holds it, and try again later as they do then.
namespace EscrituraPorTurnos {

// A piece of the write: returns true while it has more to do (it is run
// again), false once done; throws ErrorBD.
using Paso = std::function<bool()>;
// Null when the write was committed; else why it failed, all of it undone.
using Final = std::function<void(const ErrorBD* fallo)>;

// Runs the steps in order, as many in a turn as fit in a few milliseconds,
// the first turn at once: a small write is committed before this returns,
// and `alTerminar` called. A write that takes several turns calls it in a
// turn of its own after the last.
// A lock another program holds is waited for between turns, as long as the
// connection's wait, not on the caller's stack; another write of this
// kind, until it ends.
void escribir(BaseDatos& db, std::vector<Paso> pasos, Final alTerminar);
// The same for a coroutine: empty once committed, else why it failed. Its
// first turn is as short as the others: no click waits for it to end.
QCoro::Task<std::optional<ErrorBD>> escrito(BaseDatos& db, std::vector<Paso> pasos);

// The same steps without a transaction of its own: each statement, or a
// step's own transaction, stands alone (the connection's temporary tables,
// which nobody else sees; blocks of contacts, each whole in itself).
// Other writers go on meanwhile; its steps wait while a write of
// `escribir` holds the connection.
void porTurnos(BaseDatos& db, std::vector<Paso> pasos, Final alTerminar);

// For a step that is one call of tens of milliseconds: true when it is
// the first thing of its turn; otherwise the turn ends here, and the step,
// returning true, is run again first thing in the next. Two such calls in
// one turn would hold the window for both.
bool alEmpezarTurno();

// One statement.
Paso sentencia(BaseDatos& db, QString sql, QVariantList params = {});
// What a stretch walks: the values of `columna` in `tabla`, in their
// order on an index (or the row numbers), of the rows that meet `donde`
// (binding `params`; empty: every row).
struct Recorrido {
    QString tabla;
    QString columna;
    QString donde = {};
    QVariantList params = {};
};
// What is done with one stretch of a walk, its first and last value.
using Tramo = std::function<void(const QVariant& desde, const QVariant& hasta)>;
// `tramo` run over stretches of a walk, each as long as takes a few
// milliseconds.
Paso porTramos(BaseDatos& db, const Recorrido& recorrido, Tramo tramo);
// `sql` run over stretches of a walk: its last two parameters, after
// `params`, are a stretch's first and last value. Rows written in the
// order of an index's own column go into that index one after the other,
// where the order of the row numbers would scatter them. `filas`, when
// given, adds up the rows changed.
Paso porTramos(BaseDatos& db, QString sql, QVariantList params, const Recorrido& recorrido,
               int* filas = nullptr);
// `sql`, a count, run over stretches of a walk as above, its counts
// added up into `filas`: a count of a million rows in one statement holds
// the window 60 ms.
Paso contar(BaseDatos& db, QString sql, QVariantList params, const Recorrido& recorrido,
            int* filas);
// Empties `tabla` (its rows changed into `filas`), its indexes dropped one
// at a time first and made again empty: emptied whole, a table's pages are
// freed without rewriting them, but all of them in one statement.
Paso vaciar(BaseDatos& db, QString tabla, int* filas = nullptr);

}  // namespace EscrituraPorTurnos

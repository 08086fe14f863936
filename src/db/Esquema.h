#pragma once

#include <QString>
#include <QStringList>

class BaseDatos;

// The two generations of the message database. The current one is what the
// program works on; the baseline is what files of older releases hold, and
// what the upgrade (mdoDB) takes as its input.
namespace Esquema {
void crearActual(BaseDatos& db);
void crearBase(BaseDatos& db);
// The file's triggers that keep the lists' stored keys and counts: a key
// emptied when its column changes, a multi-send's count of recipients.
void crearDisparadoresListas(BaseDatos& db);
// Makes this connection work out the keys of each row it writes, and
// fills the keys left empty; throws ErrorBD when the file has none of
// those columns.
void prepararClavesNombre(BaseDatos& db);
// Works out the keys left empty (rows written by another client). Throws
// ErrorBD.
void completarClavesNombre(BaseDatos& db);
// The outbox's kept count per account (table EnviosPorCanal and the
// triggers on envios that keep it) and the indexes of the outbox list's
// date and destination; whatever of them is missing. Counts the rows there are when it creates
// the table; run it inside a transaction. True when it created the table.
// Throws ErrorBD.
bool crearCuentaBandeja(BaseDatos& db);
// The outbox list's destination as its index orders it, as SQL over
// `tabla`'s Abonado (none: unqualified).
QString destinoBandeja(const QString& tabla);
// The outbox list's date as shown, as SQL over `tabla`'s Registro: the
// expression of its index.
QString fechaBandeja(const QString& tabla);
// The "CREATE INDEX" statements of a new file, which the upgrade adds.
QStringList indicesActuales();
// What the list of multi-sends shows of a row's next and last run, as SQL
// over Automaticos (the next run's order is an index's), the last run's
// stored key and the count of recipients kept for the list's order.
QString textoProximaTarea();
QString textoUltimaTarea();
QString ordenUltimaTarea();
QString ordenDestinatarios();
}  // namespace Esquema

#pragma once

#include <QStringList>

class BaseDatos;

// The two generations of the message database. The current one is what the
// program works on; the baseline is what files of older releases hold, and
// what the upgrade (mdoDB) takes as its input.
namespace Esquema {
void crearActual(BaseDatos& db);
void crearBase(BaseDatos& db);
// The trigger that empties a contact's name key when its name changes.
void crearDisparadorNombre(BaseDatos& db);
// Makes this connection work out the name key of each contact it writes,
// and fills the keys left empty; throws ErrorBD when the file has no such
// column.
void prepararClavesNombre(BaseDatos& db);
// Works out the name keys left empty (rows written by another client).
// Throws ErrorBD.
void completarClavesNombre(BaseDatos& db);
// The "CREATE INDEX" statements of a new file, which the upgrade adds.
QStringList indicesActuales();
}  // namespace Esquema

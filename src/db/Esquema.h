#pragma once

#include <QStringList>

class BaseDatos;

// The two generations of the message database. The current one is what the
// program works on; the baseline is what files of older releases hold, and
// what the upgrade (mdoDB) takes as its input.
namespace Esquema {
void crearActual(BaseDatos& db);
void crearBase(BaseDatos& db);
// The "CREATE INDEX" statements of a new file, which the upgrade adds.
QStringList indicesActuales();
}  // namespace Esquema

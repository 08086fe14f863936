#pragma once

class BaseDatos;

// The two generations of the message database. The current one is what the
// program works on; the baseline is what files of older releases hold, and
// what the upgrade (mdoDB) takes as its input.
namespace Esquema {
void crearActual(BaseDatos& db);
void crearBase(BaseDatos& db);
}  // namespace Esquema

#pragma once

#include <QString>

class BaseDatos;

// Brings a database file of an older release to the current schema. Every
// step is tried on its own and a step that fails (because its result is
// already there) is passed over, so it can run on a baseline, a half-upgraded
// or a current file any number of times. It reports nothing; the caller runs
// msValidarBD again if it wants to know.
void msActualizarBD(const QString& path);

// The statement routines: each runs one statement on the upgrade's own
// connection and tells whether it changed the file; a step whose result is
// already there (or that can't run) changes nothing and fails no one.
bool msAddColumn(BaseDatos& con, const QString& table, const QString& column, const QString& type,
                 const QString& def);
bool msCreateTable(BaseDatos& con, const QString& table, const QString& firstColumn);
bool msCreatePrimaryKey(BaseDatos& con, const QString& table, const QString& column);
// A file of an earlier release names collations that only this program
// registers (SINCASO), and another SQLite client can't then write a name or
// even compare one. Its tables are rebuilt without them and their indexes
// take the engine's NOCASE, all in one transaction; a file that is busy or
// read-only stays as it is until a later open. False when nothing changed.
// Runs at every open: such a file passes msValidarBD and never reaches the
// upgrade.
bool msQuitarIntercalaciones(BaseDatos& con);
// The engine can't drop a primary key or add an identity column in place, so
// AboAuto gains `id_AboAuto` by a rebuild that keeps every row.
bool msRebuildAboAuto(BaseDatos& con);
// The outbox's kept count per account, its triggers and the list's date
// index, in one transaction: the count of the rows already there and the
// triggers that keep it from then on go in together. False when the file
// had them or could not take them.
bool msCrearCuentaBandeja(BaseDatos& con);

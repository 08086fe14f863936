#pragma once

#include <QString>
#include <QStringList>

// When two names are the same name: aliases, list names, account names and
// the names of multi-sends. Case doesn't count, for accented letters too
// ("Á" is "á"), but an accent does ("Angel" is not "Ángel"). Written once
// here; the connection registers it as the collation SINCASO, which only
// the program's queries name: the schema names none of ours, so any SQLite
// client can read and write the file.
//
// Letters outside ASCII that fold to an ASCII letter (the Kelvin sign,
// the long s) stand for themselves: an index under the engine's NOCASE,
// which folds ASCII alone, then finds every spelling the rule holds equal
// by probing the few that differ outside ASCII (`variantes`).
namespace ReglaNombres {

// Equal keys, and only those, are the same name.
QString clave(const QString& nombre);
bool iguales(const QString& a, const QString& b);
// Compares two UTF-8 texts under the rule: <0, 0 or >0.
int comparar(const char* a, int na, const char* b, int nb);
// Every spelling of `nombre` that the rule holds equal to it, up to the
// case of its ASCII letters; empty when there would be more than `maximo`.
QStringList variantes(const QString& nombre, int maximo);

}  // namespace ReglaNombres

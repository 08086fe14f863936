#pragma once

#include <QString>

#include <cstdint>

// The order of every list the user sees: case and accents don't count, "ñ"
// comes just after "n" and before "o". Written once here; the in-memory
// lists sort by its key and the database sorts by its collation
// (REGLA_LISTAS, registered on every connection).
namespace ReglaListas {

// A text whose plain order (operator<) is the rule's order.
QString clave(const QString& texto);
// Compares two UTF-8 texts under the rule: <0, 0 or >0.
int comparar(const char* a, int na, const char* b, int nb);

// Compares two UTF-8 texts by a weight for each UTF-16 unit (never 0): the
// walk that this rule and the names' rule (ReglaNombres) share.
int compararPorPesos(const uint32_t* pesos, const char* a, int na, const char* b, int nb);

}  // namespace ReglaListas

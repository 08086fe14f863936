#pragma once

#include <QString>
#include <QVariantList>

// The condition of a query that finds a name under the program's rule
// (base/ReglaNombres): "Alias" equal to "ángel" finds "Ángel" and "ÁNGEL",
// whoever wrote them. It goes through an index on `columna COLLATE NOCASE`
// when the table has one, by probing each spelling that differs outside
// ASCII; a name with too many of them is compared row by row. The values
// are appended to `valores`, in the order of the "?" of the text.
QString condicionNombre(const QString& columna, const QString& nombre, QVariantList& valores);

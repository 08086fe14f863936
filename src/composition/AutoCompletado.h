#pragma once

#include <QString>
#include <QStringList>

// The text rules of the recipient box: which name stands under the caret,
// which names are offered for it, and what the box holds once one is
// taken. Positions count from 1; the caret position counts the characters
// before the caret. The separator of names in the box is always ";".
namespace AutoCompletado {

// The edge of the name around `posicion`: forward, the position of the
// next ";" or one past the end; backward, the position just behind the
// previous ";", or `posicion` itself when there is none.
int findLimit(const QString& texto, int posicion, bool adelante);

struct NombreActual {
    QString nombre;
    int inicio = 0;  // both 0 while the caret stands in the first name
    int fin = 0;
};
NombreActual nombreActual(const QString& texto, int cursor);

// The candidates of `searchList` (split at `delimitador`, trimmed) with the
// same first letter as `nombre` and containing it, ignoring case.
QStringList sugerencias(const QString& searchList, const QString& delimitador,
                        const QString& nombre);

// The box with `elegido` in place of the current name; `cursor` gets the
// position just behind it.
QString aceptar(const QString& texto, const NombreActual& actual, const QString& elegido,
                int* cursor);

}  // namespace AutoCompletado

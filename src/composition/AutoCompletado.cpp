#include "composition/AutoCompletado.h"

namespace AutoCompletado {

namespace {
// The character at 1-based `posicion`; a null character outside the text.
QChar en(const QString& texto, int posicion) {
    return posicion >= 1 && posicion <= texto.size() ? texto.at(posicion - 1) : QChar();
}
}  // namespace

int findLimit(const QString& texto, int posicion, bool adelante) {
    if (adelante) {
        for (int p = posicion; p <= texto.size(); ++p) {
            if (en(texto, p) == u';') return p;
            if (p == texto.size()) return p + 1;
        }
        return posicion;
    }
    // Running off the front gives back the starting position.
    for (int p = posicion; p - 1 >= 1; --p)
        if (en(texto, p - 1) == u';') return p;
    return posicion;
}

NombreActual nombreActual(const QString& texto, int cursor) {
    NombreActual r;
    if (!texto.left(cursor).contains(u';')) {
        r.nombre = texto.section(u';', 0, 0).trimmed();
        return r;
    }
    r.fin = findLimit(texto, cursor, true);
    r.inicio = findLimit(texto, cursor, false);
    QString nombre = texto.mid(r.inicio - 1, qMax(0, r.fin - r.inicio));
    qsizetype blancos = 0;
    while (blancos < nombre.size() && nombre.at(blancos).isSpace()) ++blancos;
    r.nombre = nombre.mid(blancos);
    return r;
}

QStringList sugerencias(const QString& searchList, const QString& delimitador,
                        const QString& nombre) {
    QStringList r;
    // The split is skipped when the name occurs nowhere: most keys of a
    // long address book end here.
    if (nombre.isEmpty() || delimitador.isEmpty() ||
        !searchList.contains(nombre, Qt::CaseInsensitive))
        return r;
    const QChar primera = nombre.at(0).toLower();
    for (QStringView candidato : QStringView(searchList).split(delimitador)) {
        candidato = candidato.trimmed();
        if (candidato.isEmpty() || candidato.at(0).toLower() != primera) continue;
        if (candidato.contains(nombre, Qt::CaseInsensitive)) r.append(candidato.toString());
    }
    return r;
}

QString aceptar(const QString& texto, const NombreActual& actual, const QString& elegido,
                int* cursor) {
    QString antes;
    QString despues;
    if (actual.inicio > 0 || actual.fin > 0) {
        antes = texto.left(actual.inicio - 1);
        despues = texto.mid(actual.fin - 1);
    }
    if (cursor) *cursor = int(antes.size() + elegido.size());
    return antes + elegido + despues;
}

}  // namespace AutoCompletado

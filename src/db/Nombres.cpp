#include "db/Nombres.h"

#include "base/ReglaNombres.h"

using namespace Qt::StringLiterals;

namespace {
// Enough for a name with five accented capitals; more is compared row by row.
constexpr int kMaximoVariantes = 32;
}  // namespace

QString condicionNombre(const QString& columna, const QString& nombre, QVariantList& valores) {
    const QStringList variantes = ReglaNombres::variantes(nombre, kMaximoVariantes);
    QString sql;
    if (!variantes.isEmpty()) {
        QStringList marcas;
        for (const QString& v : variantes) {
            marcas.append(u"?"_s);
            valores.append(v);
        }
        sql = u'(' + columna + u" COLLATE NOCASE IN (" + marcas.join(u',') + u") AND ";
    }
    valores.append(nombre);
    sql += columna + u" = ? COLLATE SINCASO";
    if (!variantes.isEmpty()) sql += u')';
    return sql;
}

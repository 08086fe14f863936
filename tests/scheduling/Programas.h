// Rows of Automaticos for the scheduling tests.
#pragma once

#include "base/AppState.h"
#include "db/Conexion.h"

#include <QDateTime>
#include <QMap>
#include <QStringList>

// Writes row `codigo`: a schedule that is on, at 09:00, started long ago
// and without an end, changed by the "Column=value" pairs of `columnas`
// (dates yyyy-MM-dd, Hora HH:mm). Hora is stored as the editor stores it,
// a full date and time.
inline void programa(int codigo, const QString& columnas) {
    QMap<QString, QVariant> v{{QStringLiteral("TareaProgramada"), 1},
                              {QStringLiteral("Hora"), QStringLiteral("09:00")},
                              {QStringLiteral("FechaIni"), QStringLiteral("2006-01-01")},
                              {QStringLiteral("FechaFin"), QStringLiteral("9999-12-31")},
                              {QStringLiteral("Cada"), 1}};
    for (const QString& par : columnas.split(u' ', Qt::SkipEmptyParts))
        v[par.section(u'=', 0, 0)] = par.section(u'=', 1);
    v[QStringLiteral("Hora")] =
        QString(u"2006-01-02 " + v[QStringLiteral("Hora")].toString() + u":00");
    for (const QString& c : {QStringLiteral("FechaIni"), QStringLiteral("FechaFin")})
        v[c] = QString(v[c].toString() + u" 00:00:00");
    QVariantList valores{codigo};
    valores.append(v.values());
    Conexion().exec(QStringLiteral("INSERT INTO Automaticos (Codigo,%1) VALUES (?%2)")
                        .arg(v.keys().join(u','), QStringLiteral(",?").repeated(v.size())),
                    valores);
}

// "dd/MM/yyyy HH:mm" or with seconds: a local date and time.
inline QDateTime en(const QString& texto) {
    const QDateTime d = QDateTime::fromString(texto, QStringLiteral("dd/MM/yyyy HH:mm:ss"));
    return d.isValid() ? d : QDateTime::fromString(texto, QStringLiteral("dd/MM/yyyy HH:mm"));
}

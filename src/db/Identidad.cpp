#include "db/Identidad.h"

#include "db/Transaccion.h"

#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

QString leer(BaseDatos& db) {
    if (!db.hasTable(u"Identidad"_s)) return QString();
    const ResultadoConsulta r = db.query(u"SELECT uuid FROM Identidad LIMIT 1"_s);
    return r.isEmpty() ? QString() : r.value(0, 0).toString();
}

}  // namespace

QString identidadBase(BaseDatos& db) {
    if (const QString guardada = leer(db); !guardada.isEmpty()) return guardada;
    // Under the write lock: two processes never give one database two names.
    Transaccion t(db);
    db.exec(u"CREATE TABLE IF NOT EXISTS Identidad (uuid TEXT NOT NULL)"_s);
    QString identidad = leer(db);
    if (identidad.isEmpty()) {
        identidad = QUuid::createUuid().toString(QUuid::WithoutBraces);
        db.exec(u"INSERT INTO Identidad (uuid) VALUES (?)"_s, {identidad});
    }
    t.commit();
    return identidad;
}

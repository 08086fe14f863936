#include "db/mdoDB.h"

#include "db/BaseDatos.h"

using namespace Qt::StringLiterals;

namespace {
int ejecutar(BaseDatos& con, const QString& sql) {
    try {
        con.exec(sql);
        return 0;
    } catch (const ErrorBD&) {
        return -1;
    }
}
}  // namespace

int msAddColumn(BaseDatos& con, const QString& table, const QString& column, const QString& type,
                const QString& def) {
    // An empty default makes a column without a default.
    QString sql = u"ALTER TABLE "_s + table + u" ADD COLUMN " + column + u' ' + type;
    if (!def.isEmpty()) sql += u" DEFAULT "_s + def;
    return ejecutar(con, sql);
}

int msCreateTable(BaseDatos& con, const QString& table, const QString& firstColumn) {
    return ejecutar(con, u"CREATE TABLE "_s + table + u" (" + firstColumn + u')');
}

int msCreatePrimaryKey(BaseDatos& con, const QString& table, const QString& column) {
    // A key that is already there makes the step fail harmlessly.
    try {
        const ResultadoConsulta r =
            con.query(u"SELECT pk FROM pragma_table_info(?) WHERE name=?"_s, {table, column});
        if (r.isEmpty() || r.value(0, 0).toInt() != 0) return -1;
    } catch (const ErrorBD&) {
        return -1;
    }
    return ejecutar(con, u"CREATE UNIQUE INDEX primaryKey_"_s + table + u" ON " + table + u" (" +
                             column + u')');
}

int msRebuildAboAuto(BaseDatos& con) {
    try {
        if (!con.hasTable(u"AboAuto"_s) || con.hasColumn(u"AboAuto"_s, u"id_AboAuto"_s)) return -1;
        con.begin();
        try {
            con.execScript(
                uR"SQL(
CREATE TABLE AboAuto_nueva (
    id_AboAuto INTEGER PRIMARY KEY AUTOINCREMENT,
    Automatico INTEGER,
    Abonado TEXT(50),
    Mensaje TEXT
);
INSERT INTO AboAuto_nueva (Automatico, Abonado, Mensaje)
    SELECT Automatico, Abonado, Mensaje FROM AboAuto ORDER BY rowid;
DROP TABLE AboAuto;
ALTER TABLE AboAuto_nueva RENAME TO AboAuto;
CREATE INDEX IF NOT EXISTS AboAuto_Automatico ON AboAuto (Automatico);
)SQL"_s);
            con.commit();
        } catch (const ErrorBD&) {
            con.rollback();
            return -1;
        }
        return 0;
    } catch (const ErrorBD&) {
        return -1;
    }
}

void msActualizarBD(const QString& path) {
    // The upgrade's own connection; the shared one stays open on the
    // same file. If it does not open, nothing is upgraded.
    BaseDatos ConexionUpgrade;
    if (!ConexionUpgrade.open(path)) return;
    BaseDatos& c = ConexionUpgrade;

    // Every step on its own; a failure is passed over.
    msAddColumn(c, u"Canales"_s, u"Remitente"_s, u"Text(16)"_s, QString());
    msAddColumn(c, u"Canales"_s, u"remopc"_s, u"byte"_s, u"0"_s);
    msAddColumn(c, u"Canales"_s, u"tini"_s, u"Text(50)"_s, QString());
    msAddColumn(c, u"Canales"_s, u"tfin"_s, u"Text(50)"_s, QString());
    msAddColumn(c, u"Canales"_s, u"imptextos"_s, u"byte"_s, u"0"_s);
    msAddColumn(c, u"Canales"_s, u"movil"_s, u"Text(16)"_s, QString());

    // A table needs a column to exist; its key column comes with it.
    msCreateTable(c, u"opciones"_s, u"id INTEGER NOT NULL PRIMARY KEY DEFAULT 1"_s);
    msAddColumn(c, u"opciones"_s, u"id"_s, u"long"_s, u"1"_s);
    msAddColumn(c, u"opciones"_s, u"maxlote"_s, u"integer"_s, u"50"_s);
    msAddColumn(c, u"opciones"_s, u"solocontactos"_s, u"byte"_s, u"0"_s);
    msAddColumn(c, u"opciones"_s, u"imgfondo"_s, u"text(255)"_s, u"''"_s);
    msCreatePrimaryKey(c, u"opciones"_s, u"id"_s);

    // The key keeps this at one row on a second run.
    ejecutar(c, u"INSERT INTO opciones (id,maxlote,solocontactos,imgfondo) VALUES(1,50,0,'')"_s);

    msAddColumn(c, u"Automaticos"_s, u"TareaProgramada"_s, u"bit"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"Hora"_s, u"DateTime"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"Periodicidad"_s, u"smallint"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"FechaIni"_s, u"DateTime"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"FechaFin"_s, u"DateTime"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"Cada"_s, u"smallint"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"DiasSemana"_s, u"Byte"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"MensualEsDia"_s, u"bit"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"MensualDiaMes"_s, u"Byte"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"MensualNumSemana"_s, u"Byte"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"MensualDiaSemana"_s, u"Byte"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"AnualDia"_s, u"Byte"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"AnualMes"_s, u"Byte"_s, QString());
    msAddColumn(c, u"Automaticos"_s, u"UltimaTarea"_s, u"DateTime"_s, QString());

    // Drop the old key, add the identity, make it the key: one rebuild.
    msRebuildAboAuto(c);

    msAddColumn(c, u"HEnvios"_s, u"crem"_s, u"text(50)"_s, QString());
    // Alias and Comentario grow to 100 characters: the engine does not
    // limit text lengths, so there is nothing to alter.
}

#include "db/mdoDB.h"

#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "db/Esquema.h"
#include "db/Transaccion.h"

#include <sqlite3.h>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {
bool ejecutar(BaseDatos& con, const QString& sql) {
    try {
        con.exec(sql);
        return true;
    } catch (const ErrorBD&) {
        return false;
    }
}

QString citar(QString nombre) {
    return u'"' + nombre.replace(u'"', u"\"\""_s) + u'"';
}

// A "COLLATE name" clause, the name bare or quoted.
const QRegularExpression& clausulaIntercalacion() {
    static const QRegularExpression re(
        uR"(\s+COLLATE\s+("(?:[^"]|"")+"|'(?:[^']|'')+'|`[^`]+`|\[[^\]]+\]|\w+))"_s,
        QRegularExpression::CaseInsensitiveOption);
    return re;
}

// The collations that every SQLite client knows.
bool delMotor(QString nombre) {
    if (nombre.size() >= 2 && u"\"'`["_s.contains(nombre.front()))
        nombre = nombre.mid(1, nombre.size() - 2);
    return QStringList{u"BINARY"_s, u"NOCASE"_s, u"RTRIM"_s}.contains(nombre, Qt::CaseInsensitive);
}

// `sql` with each collation unknown to the engine replaced by `por`.
QString cambiarIntercalaciones(const QString& sql, const QString& por, bool* cambio = nullptr) {
    QString out;
    qsizetype desde = 0;
    auto it = clausulaIntercalacion().globalMatch(sql);
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        if (delMotor(m.captured(1))) continue;
        out += sql.mid(desde, m.capturedStart() - desde) + por;
        desde = m.capturedEnd();
        if (cambio) *cambio = true;
    }
    return out + sql.mid(desde);
}

// Indexes keep comparing names without case: under the engine's NOCASE,
// which the program's name look-ups probe (db/Nombres).
const QString kPorIndice = u" COLLATE NOCASE"_s;

// The engine's way to change a column's definition: a new table, the rows
// copied in their order, the old one dropped, the new one renamed, then its
// indexes and triggers again; the autoincrement counter stays where it was.
void reconstruir(BaseDatos& con, const QString& tabla) {
    const QString sql =
        con.query(u"SELECT sql FROM sqlite_master WHERE type='table' AND name=?"_s, {tabla})
            .value(0, 0)
            .toString();
    const ResultadoConsulta anexos = con.query(
        u"SELECT type, sql FROM sqlite_master WHERE tbl_name=? AND type IN ('index','trigger') "
        u"AND sql IS NOT NULL ORDER BY rowid"_s,
        {tabla});
    QVariant secuencia;
    if (con.hasTable(u"sqlite_sequence"_s)) {
        const ResultadoConsulta r =
            con.query(u"SELECT seq FROM sqlite_sequence WHERE name=?"_s, {tabla});
        if (!r.isEmpty()) secuencia = r.value(0, 0);
    }
    static const QRegularExpression cabecera(
        uR"(^\s*CREATE\s+TABLE\s+("(?:[^"]|"")+"|\[[^\]]+\]|`[^`]+`|[^\s(]+))"_s,
        QRegularExpression::CaseInsensitiveOption);
    QString crear = cambiarIntercalaciones(sql, QString());
    const QRegularExpressionMatch m = cabecera.match(crear);
    if (!m.hasMatch()) throw ErrorBD(u"Definición de tabla no reconocida: "_s + tabla);
    const QString nueva = tabla + u"_sin_intercalar"_s;
    crear.replace(m.capturedStart(1), m.capturedLength(1), citar(nueva));
    con.exec(crear);
    con.exec(u"INSERT INTO "_s + citar(nueva) + u" SELECT * FROM " + citar(tabla) +
             u" ORDER BY rowid");
    con.exec(u"DROP TABLE "_s + citar(tabla));
    con.exec(u"ALTER TABLE "_s + citar(nueva) + u" RENAME TO " + citar(tabla));
    for (int i = 0; i < anexos.recordCount(); ++i) {
        const bool indice = anexos.value(i, 0).toString() == u"index"_s;
        con.exec(
            cambiarIntercalaciones(anexos.value(i, 1).toString(), indice ? kPorIndice : QString()));
    }
    if (!secuencia.isNull() &&
        con.exec(u"UPDATE sqlite_sequence SET seq=? WHERE name=?"_s, {secuencia, tabla}) == 0)
        con.exec(u"INSERT INTO sqlite_sequence (name, seq) VALUES (?, ?)"_s, {tabla, secuencia});
}

}  // namespace

bool msQuitarIntercalaciones(BaseDatos& con) {
    QStringList tablas;
    QVector<QStringList> otros;  // type, name, sql of an index, trigger or view
    try {
        const ResultadoConsulta r = con.query(
            u"SELECT type, name, tbl_name, sql FROM sqlite_master WHERE sql LIKE '%COLLATE%'"_s);
        for (int i = 0; i < r.recordCount(); ++i) {
            bool cambia = false;
            cambiarIntercalaciones(r.value(i, 3).toString(), QString(), &cambia);
            if (!cambia) continue;
            const QString tipo = r.value(i, 0).toString();
            if (tipo == u"table"_s)
                tablas.append(r.value(i, 1).toString());
            else
                otros.append({tipo, r.value(i, 1).toString(), r.value(i, 2).toString(),
                              r.value(i, 3).toString()});
        }
    } catch (const ErrorBD&) {
        return false;
    }
    if ((tablas.isEmpty() && otros.isEmpty()) || sqlite3_db_readonly(con.handle(), "main") == 1)
        return false;
    // Another process that holds the file makes this wait for a later open.
    const int espera = con.espera();
    con.establecerEspera(0);
    bool resultado = false;
    try {
        Transaccion t(con);
        for (const QString& tabla : std::as_const(tablas)) reconstruir(con, tabla);
        for (const QStringList& o : std::as_const(otros)) {
            if (tablas.contains(o.at(2))) continue;  // made again with its table
            const QString tipo = o.at(0) == u"index"_s     ? u"INDEX"_s
                                 : o.at(0) == u"trigger"_s ? u"TRIGGER"_s
                                                           : u"VIEW"_s;
            con.exec(u"DROP "_s + tipo + u' ' + citar(o.at(1)));
            con.exec(cambiarIntercalaciones(o.at(3), tipo == u"INDEX"_s ? kPorIndice : QString()));
        }
        t.commit();
        resultado = true;
    } catch (const ErrorBD&) {
        // Left as it was; the program registers the old collations too.
    }
    con.establecerEspera(espera);
    return resultado;
}

bool msAddColumn(BaseDatos& con, const QString& table, const QString& column, const QString& type,
                 const QString& def) {
    // An empty default makes a column without a default.
    QString sql = u"ALTER TABLE "_s + table + u" ADD COLUMN " + column + u' ' + type;
    if (!def.isEmpty()) sql += u" DEFAULT "_s + def;
    return ejecutar(con, sql);
}

bool msCreateTable(BaseDatos& con, const QString& table, const QString& firstColumn) {
    return ejecutar(con, u"CREATE TABLE "_s + table + u" (" + firstColumn + u')');
}

bool msCreatePrimaryKey(BaseDatos& con, const QString& table, const QString& column) {
    // A key that is already there makes the step fail harmlessly.
    try {
        const ResultadoConsulta r =
            con.query(u"SELECT pk FROM pragma_table_info(?) WHERE name=?"_s, {table, column});
        if (r.isEmpty() || r.value(0, 0).toInt() != 0) return false;
    } catch (const ErrorBD&) {
        return false;
    }
    return ejecutar(con, u"CREATE UNIQUE INDEX primaryKey_"_s + table + u" ON " + table + u" (" +
                             column + u')');
}

bool msRebuildAboAuto(BaseDatos& con) {
    try {
        if (!con.hasTable(u"AboAuto"_s) || con.hasColumn(u"AboAuto"_s, u"id_AboAuto"_s))
            return false;
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
            return false;
        }
        return true;
    } catch (const ErrorBD&) {
        return false;
    }
}

bool msCrearCuentaBandeja(BaseDatos& con) {
    try {
        if (!con.hasTable(u"envios"_s)) return false;
        Transaccion t(con);
        const bool creada = Esquema::crearCuentaBandeja(con);
        t.commit();
        return creada;
    } catch (const ErrorBD&) {
        return false;
    }
}

namespace {
struct ColumnaNueva {
    QString nombre, tipo, defecto;
};
void anadirColumnas(BaseDatos& c, const QString& tabla,
                    std::initializer_list<ColumnaNueva> columnas) {
    for (const ColumnaNueva& col : columnas)
        msAddColumn(c, tabla, col.nombre, col.tipo, col.defecto);
}
}  // namespace

void msActualizarBD(const QString& path) {
    // The upgrade's own connection; the shared one stays open on the
    // same file. If it does not open, nothing is upgraded.
    BaseDatos ConexionUpgrade;
    if (!ConexionUpgrade.open(path)) return;
    BaseDatos& c = ConexionUpgrade;

    // Every step on its own; one whose result is already there changes
    // nothing and is passed over.
    anadirColumnas(c, u"Canales"_s,
                   {{u"Remitente"_s, u"Text(16)"_s, {}},
                    {u"remopc"_s, u"byte"_s, u"0"_s},
                    {u"tini"_s, u"Text(50)"_s, {}},
                    {u"tfin"_s, u"Text(50)"_s, {}},
                    {u"imptextos"_s, u"byte"_s, u"0"_s},
                    {u"movil"_s, u"Text(16)"_s, {}}});

    // A table needs a column to exist; its key column comes with it.
    msCreateTable(c, u"opciones"_s, u"id INTEGER NOT NULL PRIMARY KEY DEFAULT 1"_s);
    anadirColumnas(c, u"opciones"_s,
                   {{u"id"_s, u"long"_s, u"1"_s},
                    {u"maxlote"_s, u"integer"_s, u"50"_s},
                    {u"solocontactos"_s, u"byte"_s, u"0"_s},
                    {u"imgfondo"_s, u"text(255)"_s, {}}});
    msCreatePrimaryKey(c, u"opciones"_s, u"id"_s);

    // The key keeps this at one row on a second run.
    ejecutar(c, u"INSERT INTO opciones (id,maxlote,solocontactos,imgfondo) VALUES(1,50,0,'')"_s);

    // The next run the list shows and the instant the tick looks at a row
    // again are worked out by the scheduler; until it has, every row is
    // one to look at.
    anadirColumnas(c, u"Automaticos"_s,
                   {{u"TareaProgramada"_s, u"bit"_s, {}},
                    {u"Hora"_s, u"DateTime"_s, {}},
                    {u"Periodicidad"_s, u"smallint"_s, {}},
                    {u"FechaIni"_s, u"DateTime"_s, {}},
                    {u"FechaFin"_s, u"DateTime"_s, {}},
                    {u"Cada"_s, u"smallint"_s, {}},
                    {u"DiasSemana"_s, u"Byte"_s, {}},
                    {u"MensualEsDia"_s, u"bit"_s, {}},
                    {u"MensualDiaMes"_s, u"Byte"_s, {}},
                    {u"MensualNumSemana"_s, u"Byte"_s, {}},
                    {u"MensualDiaSemana"_s, u"Byte"_s, {}},
                    {u"AnualDia"_s, u"Byte"_s, {}},
                    {u"AnualMes"_s, u"Byte"_s, {}},
                    {u"UltimaTarea"_s, u"DateTime"_s, {}},
                    {u"ProximaTarea"_s, u"DateTime"_s, {}}});
    if (msAddColumn(c, u"Automaticos"_s, u"RevisarTarea"_s, u"DateTime"_s, QString()))
        ejecutar(c, u"UPDATE Automaticos SET RevisarTarea = '0001-01-01 00:00:00'"_s);

    // Drop the old key, add the identity, make it the key: one rebuild.
    msRebuildAboAuto(c);

    msAddColumn(c, u"HEnvios"_s, u"crem"_s, u"text(50)"_s, QString());
    // The history screen reads its pages in date order through this index;
    // without it each page would sort the whole table.
    ejecutar(c, u"CREATE INDEX IF NOT EXISTS HEnvios_Registro ON HEnvios (Registro)"_s);
    // Alias and Comentario grow to 100 characters: the engine does not
    // limit text lengths, so there is nothing to alter.

    // The lists of contacts and multi-sends sort every column on an index:
    // stored keys of texts and each multi-send's count of recipients.
    anadirColumnas(c, u"Abonados"_s,
                   {{u"ClaveNombre"_s, u"Text"_s, {}}, {u"ClaveComentario"_s, u"Text"_s, {}}});
    anadirColumnas(c, u"Automaticos"_s,
                   {{u"ClaveNombre"_s, u"Text"_s, {}}, {u"ClaveUltima"_s, u"Text"_s, {}}});
    const bool sinCuenta =
        msAddColumn(c, u"Automaticos"_s, u"Destinatarios"_s, u"Integer"_s, u"0"_s);
    try {
        Transaccion t(c);
        Esquema::crearDisparadoresListas(c);
        if (sinCuenta)
            c.exec(
                u"UPDATE Automaticos SET Destinatarios = (SELECT count(Automatico) FROM "
                u"AboAuto WHERE Automatico = Automaticos.Codigo)"_s);
        Esquema::completarClavesNombre(c);
        t.commit();
    } catch (const ErrorBD&) {
        // Passed over like every step; the program fills the keys it meets
        // empty when it opens the file.
    }

    msCrearCuentaBandeja(c);

    // The look-ups by alias and by date want the indexes a new file has.
    for (QString indice : Esquema::indicesActuales())
        ejecutar(c, indice.replace(u"CREATE INDEX "_s, u"CREATE INDEX IF NOT EXISTS "_s));

    // The program's own connection, opened before the new columns came,
    // works their keys out from now on.
    if (Conexion().isOpen() && Conexion().path() == path) {
        try {
            Esquema::prepararClavesNombre(Conexion());
        } catch (const ErrorBD&) {
            // It fills them at its next open.
        }
    }
}

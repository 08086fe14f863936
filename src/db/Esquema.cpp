#include "db/Esquema.h"

#include "db/BaseDatos.h"

using namespace Qt::StringLiterals;

namespace {

// Tables whose layout did not change between the generations.
const auto kComun =
    uR"SQL(
CREATE TABLE Grupos (
    Grupo INTEGER NOT NULL PRIMARY KEY,
    Nombre TEXT(50)
);
CREATE TABLE AboGrup (
    Abonado TEXT(50) NOT NULL,
    Grupo INTEGER NOT NULL
);
CREATE INDEX AboGrup_Grupo ON AboGrup (Grupo);
CREATE INDEX AboGrup_Abonado ON AboGrup (Abonado);
CREATE TABLE MenPro (
    Mensaje INTEGER NOT NULL PRIMARY KEY,
    Texto TEXT(160)
);
CREATE TABLE envios (
    Id INTEGER PRIMARY KEY AUTOINCREMENT,
    Registro DATETIME,
    Canal INTEGER,
    Abonado TEXT(50),
    Mensaje TEXT,
    intento INTEGER
);
CREATE INDEX envios_Canal ON envios (Canal);
)SQL"_s;

// Names compare without case in the program's queries (db/Nombres), never
// by a collation of the schema, so that any SQLite client can read and
// write the file; the index on the alias is under the engine's own NOCASE,
// which every client keeps in the same order. The lists' order of a name
// is a stored key (ClaveNombre) that only the program can work out: a
// rename by any client empties it, and the program fills what is empty.
const auto kActual =
    uR"SQL(
CREATE TABLE Canales (
    Canal INTEGER NOT NULL PRIMARY KEY,
    Nombre TEXT(50),
    maxmen INTEGER,
    Puerto INTEGER,
    Host TEXT(255),
    usuario TEXT(50),
    clave TEXT(50),
    Saldo NUMERIC,
    Principal INTEGER,
    Remitente TEXT(16),
    remopc INTEGER DEFAULT 0,
    tini TEXT(50),
    tfin TEXT(50),
    imptextos INTEGER DEFAULT 0,
    movil TEXT(16)
);
CREATE TABLE Abonados (
    Codigo TEXT(50) NOT NULL PRIMARY KEY,
    Alias TEXT(100),
    Comentario TEXT(100),
    Canal INTEGER,
    ClaveNombre TEXT
);
CREATE INDEX Abonados_Alias ON Abonados (Alias COLLATE NOCASE);
CREATE INDEX Abonados_ClaveNombre ON Abonados (ClaveNombre);
CREATE INDEX AboGrup_GrupoAbonado ON AboGrup (Grupo, Abonado);
CREATE TABLE HEnvios (
    Abonado TEXT(50),
    Registro DATETIME,
    Mensaje TEXT,
    Resultado TEXT,
    Canal INTEGER,
    crem TEXT(50)
);
CREATE INDEX HEnvios_Registro ON HEnvios (Registro);
CREATE TABLE opciones (
    id INTEGER NOT NULL PRIMARY KEY DEFAULT 1,
    maxlote INTEGER DEFAULT 50,
    solocontactos INTEGER DEFAULT 0,
    imgfondo TEXT(255) DEFAULT ''
);
INSERT INTO opciones (id, maxlote, solocontactos, imgfondo) VALUES (1, 50, 0, '');
CREATE TABLE Automaticos (
    Codigo INTEGER NOT NULL PRIMARY KEY,
    Nombre TEXT(50),
    TareaProgramada BOOLEAN,
    Hora DATETIME,
    Periodicidad SMALLINT,
    FechaIni DATETIME,
    FechaFin DATETIME,
    Cada SMALLINT,
    DiasSemana INTEGER,
    MensualEsDia BOOLEAN,
    MensualDiaMes INTEGER,
    MensualNumSemana INTEGER,
    MensualDiaSemana INTEGER,
    AnualDia INTEGER,
    AnualMes INTEGER,
    UltimaTarea DATETIME,
    ProximaTarea DATETIME,
    RevisarTarea DATETIME
);
CREATE INDEX Automaticos_RevisarTarea ON Automaticos (RevisarTarea);
CREATE TABLE AboAuto (
    id_AboAuto INTEGER PRIMARY KEY AUTOINCREMENT,
    Automatico INTEGER,
    Abonado TEXT(50),
    Mensaje TEXT
);
CREATE INDEX AboAuto_Automatico ON AboAuto (Automatico);
)SQL"_s;

const auto kDisparadorNombre =
    uR"SQL(
CREATE TRIGGER IF NOT EXISTS Abonados_NombreCambiado AFTER UPDATE OF Alias ON Abonados
BEGIN
    UPDATE Abonados SET ClaveNombre = NULL WHERE rowid = new.rowid;
END;
)SQL"_s;

// On the program's own connection the key is worked out as a row is
// written, so that a list by name never waits for a bulk of them.
const auto kDisparadoresPropios =
    uR"SQL(
CREATE TEMP TRIGGER IF NOT EXISTS ClaveNombreNueva AFTER INSERT ON main.Abonados
WHEN new.ClaveNombre IS NULL
BEGIN
    UPDATE Abonados SET ClaveNombre = clave_nombre(new.Alias) WHERE rowid = new.rowid;
END;
CREATE TEMP TRIGGER IF NOT EXISTS ClaveNombreVaciada AFTER UPDATE OF ClaveNombre ON main.Abonados
WHEN new.ClaveNombre IS NULL
BEGIN
    UPDATE Abonados SET ClaveNombre = clave_nombre(new.Alias) WHERE rowid = new.rowid;
END;
)SQL"_s;

// The outbox keeps its own row count per account, so that the compose
// screen's list counts a million rows without walking them. Plain SQL only:
// every client that writes the file (the sqlite3 shell, a script) keeps it
// right in its own transaction. The key is declared INT, not INTEGER, so
// that it is no rowid: an account code that is no number is kept as it
// stands, where a rowid key would refuse the writer's row.
// A writer's own OR clause (OR REPLACE, OR ROLLBACK) takes the place of a
// trigger statement's, but not of an upsert's DO UPDATE, so the count goes
// up by one statement that no writer can turn into a failure. A row
// that a writer's OR REPLACE replaces goes without a delete trigger unless
// that writer turned recursive triggers on: the one write the count misses.
const auto kCuentaBandeja =
    uR"SQL(
CREATE TABLE IF NOT EXISTS EnviosPorCanal (
    Canal INT NOT NULL PRIMARY KEY,
    Filas INTEGER NOT NULL
);
CREATE TRIGGER IF NOT EXISTS envios_Alta AFTER INSERT ON envios WHEN new.Canal IS NOT NULL
BEGIN
    INSERT INTO EnviosPorCanal (Canal, Filas) VALUES (new.Canal, 1)
        ON CONFLICT (Canal) DO UPDATE SET Filas = Filas + 1;
END;
CREATE TRIGGER IF NOT EXISTS envios_Baja AFTER DELETE ON envios WHEN old.Canal IS NOT NULL
BEGIN
    UPDATE EnviosPorCanal SET Filas = Filas - 1 WHERE Canal = old.Canal;
END;
CREATE TRIGGER IF NOT EXISTS envios_CambioCanal AFTER UPDATE OF Canal ON envios
WHEN old.Canal IS NOT new.Canal
BEGIN
    UPDATE EnviosPorCanal SET Filas = Filas - 1 WHERE Canal = old.Canal;
    INSERT INTO EnviosPorCanal (Canal, Filas) SELECT new.Canal, 1 WHERE new.Canal IS NOT NULL
        ON CONFLICT (Canal) DO UPDATE SET Filas = Filas + 1;
END;
)SQL"_s;

// The outbox list's date as it shows it ("dd/MM HH:mm:ss" from the stored
// "yyyy-MM-dd HH:mm:ss"), indexed so that a click on its header reads one
// page. Those characters sort alike by the lists' rule and by plain
// comparison, so the engine's own order serves.
const auto kFechaBandeja =
    uR"SQL(coalesce(CASE WHEN length(Registro) = 19
    THEN substr(Registro, 9, 2) || '/' || substr(Registro, 6, 2) || ' ' || substr(Registro, 12, 8)
    ELSE Registro END, ''))SQL"_s;

// An older release: no sender or texts per account, no options, no
// schedule, one row per contact and multi-send, narrower aliases.
const auto kBase =
    uR"SQL(
CREATE TABLE Canales (
    Canal INTEGER NOT NULL PRIMARY KEY,
    Nombre TEXT(50) COLLATE NOCASE,
    maxmen INTEGER,
    Puerto INTEGER,
    Host TEXT(255),
    usuario TEXT(50),
    clave TEXT(50),
    Saldo NUMERIC,
    Principal INTEGER
);
CREATE TABLE Abonados (
    Codigo TEXT(50) NOT NULL PRIMARY KEY,
    Alias TEXT(30) COLLATE NOCASE,
    Comentario TEXT(50),
    Canal INTEGER
);
CREATE TABLE HEnvios (
    Abonado TEXT(50),
    Registro DATETIME,
    Mensaje TEXT,
    Resultado TEXT,
    Canal INTEGER
);
CREATE TABLE Automaticos (
    Codigo INTEGER NOT NULL PRIMARY KEY,
    Nombre TEXT(50) COLLATE NOCASE
);
CREATE TABLE AboAuto (
    Automatico INTEGER NOT NULL,
    Abonado TEXT(50) NOT NULL,
    Mensaje TEXT,
    PRIMARY KEY (Automatico, Abonado)
);
)SQL"_s;

void crear(BaseDatos& db, const QString& propio) {
    db.begin();
    try {
        db.execScript(kComun);
        db.execScript(propio);
        if (propio == kActual) {
            db.execScript(kDisparadorNombre);
            Esquema::crearCuentaBandeja(db);
        }
        db.commit();
    } catch (...) {
        db.rollback();
        throw;
    }
}

}  // namespace

namespace Esquema {
void crearActual(BaseDatos& db) {
    crear(db, kActual);
    prepararClavesNombre(db);
}
void crearBase(BaseDatos& db) {
    crear(db, kBase);
}
void crearDisparadorNombre(BaseDatos& db) {
    db.execScript(kDisparadorNombre);
}
bool crearCuentaBandeja(BaseDatos& db) {
    const bool nueva = !db.hasTable(u"EnviosPorCanal"_s);
    db.execScript(kCuentaBandeja);
    // Rows written before the triggers are counted once, in the same
    // transaction, so that no write falls between the count and them.
    if (nueva)
        db.exec(
            u"INSERT INTO EnviosPorCanal (Canal, Filas) SELECT Canal, count(*) FROM envios "
            u"WHERE Canal IS NOT NULL GROUP BY Canal"_s);
    db.exec(u"CREATE INDEX IF NOT EXISTS envios_Fecha ON envios ("_s + kFechaBandeja + u')');
    return nueva;
}
QString fechaBandeja(const QString& tabla) {
    QString sql = kFechaBandeja;
    return sql.replace(u"Registro"_s, tabla + u".Registro"_s);
}
void prepararClavesNombre(BaseDatos& db) {
    // A trigger naming a column the table lacks would fail every insert.
    db.query(u"SELECT ClaveNombre FROM main.Abonados LIMIT 0"_s);
    db.execScript(kDisparadoresPropios);
    // Contacts another client wrote since are put in order at once.
    if (!db.query(u"SELECT 1 FROM main.Abonados WHERE ClaveNombre IS NULL LIMIT 1"_s).isEmpty())
        completarClavesNombre(db);
}
void completarClavesNombre(BaseDatos& db) {
    db.exec(u"UPDATE Abonados SET ClaveNombre = clave_nombre(Alias) WHERE ClaveNombre IS NULL"_s);
}
QStringList indicesActuales() {
    QStringList r;
    for (const QString& sentencia : QString(kComun + kActual).split(u';'))
        if (sentencia.trimmed().startsWith(u"CREATE INDEX"_s)) r.append(sentencia.trimmed());
    return r;
}
}  // namespace Esquema

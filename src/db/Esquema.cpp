#include "db/Esquema.h"

#include "db/BaseDatos.h"

#include <QMap>
#include <utility>

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
    ClaveNombre TEXT,
    ClaveComentario TEXT
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
    RevisarTarea DATETIME,
    ClaveNombre TEXT,
    Destinatarios INTEGER DEFAULT 0,
    ClaveUltima TEXT
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

// A stored date in the stored form, shown day first as the scheduler
// writes it: a time of day alone on the zero date, no time at midnight.
QString diaPrimero(const QString& x) {
    const QString hora = u"substr("_s + x + u", 12)"_s;
    return u"CASE WHEN substr("_s + x + u", 1, 10) = '1899-12-30' THEN "_s + hora +
           u" ELSE substr("_s + x + u", 9, 2) || '/' || substr("_s + x +
           u", 6, 2) || '/' || "
           u"substr("_s +
           x + u", 1, 4) || CASE WHEN "_s + hora +
           u" = '00:00:00' THEN '' "
           u"ELSE ' ' || "_s +
           hora + u" END END"_s;
}

QString enFormaGuardada(const QString& x) {
    // Never null, so that NOT of it is false for a null column.
    return u"coalesce("_s + x +
           u" GLOB '[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9] "
           u"[0-9][0-9]:[0-9][0-9]:[0-9][0-9]', 0)"_s;
}

// A column's place in the lists' order, kept beside it as the rule's key
// (clave_nombre) in a column any client can index: a change of the column
// by any client empties the key (a trigger of the file), and the
// program's own connection works it out on every write. `origen` is SQL
// over the row (unqualified), `columnas` what it reads, and `cambio`, when
// given, the test on old and new that tells a change of what it shows, so
// that a write that changes nothing shown leaves the key and its indexes
// alone.
struct ClaveGuardada {
    QString tabla;
    QString clave;
    QString origen;
    QString disparador;
    QString columnas = origen;
    QString cambio = {};
};
// The last run shows differently only when it, the switch, or whether the
// next run is a date change: the re-work of the next runs, which writes
// every row, leaves it alone.
QString cambioUltimaTarea() {
    return u"old.TareaProgramada IS NOT new.TareaProgramada OR old.UltimaTarea IS NOT "
           u"new.UltimaTarea OR "_s +
           enFormaGuardada(u"old.ProximaTarea"_s) + u" <> "_s +
           enFormaGuardada(u"new.ProximaTarea"_s);
}
const ClaveGuardada kClaves[] = {
    {u"Abonados"_s, u"ClaveNombre"_s, u"Alias"_s, u"Abonados_NombreCambiado"_s},
    {u"Abonados"_s, u"ClaveComentario"_s, u"Comentario"_s, u"Abonados_ComentarioCambiado"_s},
    {u"Automaticos"_s, u"ClaveNombre"_s, u"Nombre"_s, u"Automaticos_NombreCambiado"_s},
    {u"Automaticos"_s, u"ClaveUltima"_s, Esquema::textoUltimaTarea(),
     u"Automaticos_UltimaCambiada"_s, u"TareaProgramada, ProximaTarea, UltimaTarea"_s,
     cambioUltimaTarea()},
};

QString disparadorVaciar(const ClaveGuardada& k) {
    return u"CREATE TRIGGER IF NOT EXISTS "_s + k.disparador + u" AFTER UPDATE OF "_s + k.columnas +
           u" ON "_s + k.tabla + (k.cambio.isEmpty() ? QString() : u" WHEN "_s + k.cambio) +
           u" BEGIN UPDATE "_s + k.tabla + u" SET "_s + k.clave +
           u" = NULL WHERE rowid = new.rowid; END;"_s;
}

// On the program's own connection the keys are worked out as a row is
// written, so that a sorted list never waits for a bulk of them: one
// trigger a key for a change, one a table for an insert (a row written
// once however many keys it has). Only the keys whose columns the file
// has: a trigger naming a column the table lacks would fail every write.
// The row's columns, unqualified in the UPDATE, are its new values.
QString disparadoresPropios(const QList<const ClaveGuardada*>& claves) {
    const QString tabla = claves.first()->tabla;
    QString script, vacia, calculo;
    for (const ClaveGuardada* k : claves) {
        script += u"CREATE TEMP TRIGGER IF NOT EXISTS "_s + tabla + k->clave +
                  u"Vaciada AFTER UPDATE OF "_s + k->clave + u" ON main."_s + tabla +
                  u" WHEN new."_s + k->clave + u" IS NULL BEGIN UPDATE "_s + tabla + u" SET "_s +
                  k->clave + u" = clave_nombre("_s + k->origen +
                  u") WHERE rowid = new.rowid; END;"_s;
        vacia += (vacia.isEmpty() ? u""_s : u" OR "_s) + u"new."_s + k->clave + u" IS NULL"_s;
        calculo += (calculo.isEmpty() ? u""_s : u", "_s) + k->clave + u" = coalesce("_s + k->clave +
                   u", clave_nombre("_s + k->origen + u"))"_s;
    }
    // Dropped first: the one made before an upgrade added a key lacks it.
    return script + u"DROP TRIGGER IF EXISTS temp."_s + tabla + u"ClavesNuevas; CREATE TEMP "_s +
           u"TRIGGER "_s + tabla + u"ClavesNuevas AFTER INSERT ON main."_s + tabla + u" WHEN "_s +
           vacia + u" BEGIN UPDATE "_s + tabla + u" SET "_s + calculo +
           u" WHERE rowid = new.rowid; END;"_s;
}

QString rellenarVacias(const ClaveGuardada& k) {
    return u"UPDATE "_s + k.tabla + u" SET "_s + k.clave + u" = clave_nombre("_s + k.origen +
           u") WHERE "_s + k.clave + u" IS NULL"_s;
}

// Each multi-send keeps how many recipients it has, so that the list sorts
// by it on an index; every client's writes keep it, as the triggers are
// the file's. A row that comes (or changes its code) counts those it finds.
const auto kDisparadoresDestinatarios =
    uR"SQL(
CREATE TRIGGER IF NOT EXISTS AboAuto_Alta AFTER INSERT ON AboAuto
BEGIN
    UPDATE Automaticos SET Destinatarios = Destinatarios + 1 WHERE Codigo = new.Automatico;
END;
CREATE TRIGGER IF NOT EXISTS AboAuto_Baja AFTER DELETE ON AboAuto
BEGIN
    UPDATE Automaticos SET Destinatarios = Destinatarios - 1 WHERE Codigo = old.Automatico;
END;
CREATE TRIGGER IF NOT EXISTS AboAuto_Cambio AFTER UPDATE OF Automatico ON AboAuto
BEGIN
    UPDATE Automaticos SET Destinatarios = Destinatarios - 1 WHERE Codigo = old.Automatico;
    UPDATE Automaticos SET Destinatarios = Destinatarios + 1 WHERE Codigo = new.Automatico;
END;
CREATE TRIGGER IF NOT EXISTS Automaticos_Alta AFTER INSERT ON Automaticos
BEGIN
    UPDATE Automaticos SET Destinatarios =
        (SELECT count(Automatico) FROM AboAuto WHERE Automatico = new.Codigo)
    WHERE Codigo = new.Codigo AND Destinatarios IS NOT
        (SELECT count(Automatico) FROM AboAuto WHERE Automatico = new.Codigo);
END;
CREATE TRIGGER IF NOT EXISTS Automaticos_CodigoCambiado AFTER UPDATE OF Codigo ON Automaticos
BEGIN
    UPDATE Automaticos SET Destinatarios =
        (SELECT count(Automatico) FROM AboAuto WHERE Automatico = new.Codigo)
    WHERE Codigo = new.Codigo;
END;
)SQL"_s;

// The lists sort these on an index. A text the engine compares as the
// lists' rule does needs no key of ours: digits and signs alone, and the
// few words, sort alike in both. A count is a number, and sorts as one.
//
// Lines equal in the column clicked keep the order of the sort before,
// and a click turns the direction round: a list opened by name or by
// code gets its first click descending, and a click after one on the name
// ascending, the names descending. An index in those orders gives the
// page without sorting the equal lines, which may be all of them (every
// multi-send with three recipients). The re-work of the next runs writes
// every row: each index of them costs it a second at 100,000 rows and
// a longer checkpoint now and then, so the next run has one index. The
// last run's are on its stored key, which that re-work leaves alone.
QStringList indicesDeListas() {
    QStringList r{
        u"CREATE INDEX Abonados_Canal ON Abonados (Canal)"_s,
        u"CREATE INDEX Abonados_Codigo ON Abonados (Codigo COLLATE NOCASE)"_s,
        u"CREATE INDEX Abonados_ClaveComentario ON Abonados (ClaveComentario DESC, "
        u"ClaveNombre)"_s,
        u"CREATE INDEX Automaticos_ClaveNombre ON Automaticos (ClaveNombre)"_s,
    };
    r << u"CREATE INDEX Automaticos_Destinatarios ON Automaticos (Destinatarios DESC)"_s
      << u"CREATE INDEX Automaticos_DestinatariosNombre ON Automaticos (Destinatarios, "
         u"ClaveNombre DESC)"_s
      << u"CREATE INDEX Automaticos_Programado ON Automaticos ("_s + Esquema::textoProximaTarea() +
             u" DESC)"_s
      << u"CREATE INDEX Automaticos_ClaveUltima ON Automaticos (ClaveUltima DESC)"_s
      << u"CREATE INDEX Automaticos_ClaveUltimaNombre ON Automaticos (ClaveUltima, "
         u"ClaveNombre DESC)"_s;
    return r;
}

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
            for (const QString& indice : indicesDeListas()) db.exec(indice);
            Esquema::crearDisparadoresListas(db);
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
void crearDisparadoresListas(BaseDatos& db) {
    for (const ClaveGuardada& k : kClaves) db.execScript(disparadorVaciar(k));
    db.execScript(kDisparadoresDestinatarios);
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
    // A first click on Destinatario sorts descending, equal numbers in the
    // order they came: the index's own order.
    db.exec(u"CREATE INDEX IF NOT EXISTS envios_Abonado ON envios ("_s + destinoBandeja({}) +
            u" DESC)"_s);
    return nueva;
}
QString destinoBandeja(const QString& tabla) {
    // Numbers are digits and signs, which sort alike by the lists' rule and
    // by the engine's NOCASE; a number with letters another client wrote
    // sorts by NOCASE.
    return u"coalesce("_s + (tabla.isEmpty() ? QString() : tabla + u'.') +
           u"Abonado, '') COLLATE NOCASE"_s;
}
QString fechaBandeja(const QString& tabla) {
    QString sql = kFechaBandeja;
    return sql.replace(u"Registro"_s, tabla + u".Registro"_s);
}
void prepararClavesNombre(BaseDatos& db) {
    // Each key on its own: a file without one column still gets the rest.
    QMap<QString, QList<const ClaveGuardada*>> porTabla;
    for (const ClaveGuardada& k : kClaves) {
        try {
            db.query(u"SELECT "_s + k.clave + u" FROM main."_s + k.tabla + u" LIMIT 0"_s);
        } catch (const ErrorBD&) {
            continue;
        }
        porTabla[k.tabla].append(&k);
        // Rows another client wrote since are put in order at once.
        if (!db.query(u"SELECT 1 FROM main."_s + k.tabla + u" WHERE "_s + k.clave +
                      u" IS NULL LIMIT 1"_s)
                 .isEmpty())
            db.exec(rellenarVacias(k));
    }
    if (porTabla.isEmpty()) throw ErrorBD(u"Sin claves de orden"_s);
    for (const QList<const ClaveGuardada*>& claves : std::as_const(porTabla))
        db.execScript(disparadoresPropios(claves));
}
void completarClavesNombre(BaseDatos& db) {
    for (const ClaveGuardada& k : kClaves) db.exec(rellenarVacias(k));
}
QStringList indicesActuales() {
    QStringList r;
    for (const QString& sentencia : QString(kComun + kActual).split(u';'))
        if (sentencia.trimmed().startsWith(u"CREATE INDEX"_s)) r.append(sentencia.trimmed());
    return r + indicesDeListas();
}
QString textoProximaTarea() {
    const QString activa = u"coalesce(TareaProgramada=true, 0)"_s;
    return u"CASE WHEN NOT "_s + activa + u" THEN 'no' WHEN "_s +
           enFormaGuardada(u"ProximaTarea"_s) + u" THEN "_s + diaPrimero(u"ProximaTarea"_s) +
           u" WHEN ProximaTarea IS NULL THEN 'Finalizado' ELSE '' END"_s;
}
QString textoUltimaTarea() {
    const QString conFecha =
        u"coalesce(TareaProgramada=true, 0) AND "_s + enFormaGuardada(u"ProximaTarea"_s);
    return u"CASE WHEN NOT ("_s + conFecha +
           u") THEN '' WHEN coalesce(UltimaTarea, '') = '' THEN 'nunca' WHEN "_s +
           enFormaGuardada(u"UltimaTarea"_s) +
           u" THEN CASE WHEN UltimaTarea > '1900-01-01 00:00:00' THEN "_s +
           diaPrimero(u"UltimaTarea"_s) + u" ELSE 'nunca' END ELSE char(31) || UltimaTarea END"_s;
}
QString ordenDestinatarios() {
    return u"Automaticos.Destinatarios"_s;
}
QString ordenUltimaTarea() {
    return u"Automaticos.ClaveUltima"_s;
}
}  // namespace Esquema

#include "addressbook/mdoAgenda.h"

#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Movil.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "db/EscrituraPorTurnos.h"
#include "db/Esquema.h"

#include <sqlite3.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <array>

using namespace Qt::StringLiterals;

namespace {

BaseDatos& bd() {
    return Conexion();
}

// Undoes a savepoint after a failure; the failure is the caller's to report.
void deshacer(const QString& nombre) {
    try {
        bd().rollbackTo(nombre);
        bd().release(nombre);
    } catch (const ErrorBD&) {
        // A savepoint the engine no longer has leaves nothing to undo.
    }
}

// A duplicate key is what the engine reports for a number that exists.
bool esClaveRepetida() {
    sqlite3* h = bd().handle();
    return h && (sqlite3_extended_errcode(h) & 0xff) == SQLITE_CONSTRAINT;
}

// What the editor says of a failure of the engine.
Hecho inesperado(const ErrorBD& e) {
    return Hecho::no(u"Error inesperado:\n"_s + e.description());
}

}  // namespace

// ---- Contacts --------------------------------------------------------------

Hecho msComprobarNumeroContacto(const QString& numero) {
    const QString motivo = Movil::motivo(Movil::leer(Movil::Via::Contacto, numero).fallo);
    if (motivo.isEmpty()) return {};
    return Hecho::no(motivo +
                     u"\nAtención, el formato del Número de Móvil, no es correcto "
                     u"\nRecuerde, que el formato debe incluir el código internacional del "
                     u"Número de Móvil\nEjemplo : para España (0034)629000000, el Número "
                     u"sería 0034629000000"_s);
}

Hecho mbDatosCompletos(const FichaContacto& ficha) {
    // Nothing is trimmed: a blank counts as data.
    if (ficha.codigo.isEmpty()) return Hecho::no(u"El Número de Móvil debe de contener datos"_s);
    if (ficha.alias.isEmpty()) return Hecho::no(u"El Nombre del Contacto debe de contener datos"_s);
    if (ficha.cuenta.isEmpty())
        return Hecho::no(u"Debe seleccionar una Cuenta para este Contacto"_s);
    return {};
}

Hecho mbGuardarContacto(const FichaContacto& ficha) {
    if (Hecho h = mbDatosCompletos(ficha); !h) return h;
    // Destinations are separated by ";", so an alias can't hold one.
    if (ficha.alias.contains(u';'))
        return Hecho::no(
            u"Atención, el formato del Nombre de Contacto, contiene el caracter [;] y no "
            u"esta permitido"_s);
    const int16_t canal = ficha.canal;
    if (Hecho h = msComprobarNumeroContacto(ficha.codigo); !h) return h;

    const QString sp = u"contacto"_s;
    try {
        bd().savepoint(sp);
    } catch (const ErrorBD& e) {
        return inesperado(e);
    }
    try {
        if (ficha.nuevo)
            bd().exec(u"Insert into abonados (Codigo,Alias,Comentario,Canal) values (?,?,?,?)"_s,
                      {ficha.codigo, ficha.alias, ficha.comentario, canal});
        else
            bd().exec(u"Update Abonados Set Alias = ?,Comentario = ?,Canal = ? Where Codigo = ?"_s,
                      {ficha.alias, ficha.comentario, canal, ficha.codigo});
    } catch (const ErrorBD& e) {
        const bool repetido = esClaveRepetida();
        deshacer(sp);
        if (repetido) return Hecho::no(u"Error Añadiendo datos, el Contacto ya existe"_s);
        return inesperado(e);
    }
    try {
        mbGuardarListas(ficha.codigo, ficha.listas);
        bd().release(sp);
    } catch (const ErrorBD& e) {
        deshacer(sp);
        return inesperado(e);
    }
    Q_EMIT Avisos::instancia().contactosCambiados();
    return {};
}

void mbGuardarListas(const QString& codigo, const QStringList& entradas) {
    bd().exec(u"Delete from AboGrup where Abonado = ?"_s, {codigo});
    for (const QString& entrada : entradas)
        bd().exec(u"Insert into AboGrup (Abonado,Grupo) Values (?,?)"_s,
                  {codigo, grupoDeEntrada(entrada)});
}

bool mbEstaEnLista(const QString& codigo, int16_t grupo) {
    const ResultadoConsulta r = bd().query(
        u"select count(*) from AboGrup where Abonado = ? and Grupo = ?"_s, {codigo, grupo});
    return numeroDe(r.value(0, 0)) > 0;
}

QString entradaLista(int grupo, const QString& nombre) {
    return u"%1 - %2"_s.arg(grupo, 3, 10, QChar(u'0')).arg(nombre);
}

int16_t grupoDeEntrada(const QString& entrada) {
    // The number ends two characters before the first "-" ("000 - Nombre").
    const qsizetype guion = entrada.indexOf(u'-');
    const QString numero = guion < 0 ? entrada : entrada.left(qMax<qsizetype>(0, guion - 1));
    return int16_t(numeroDe(numero));
}

Hecho mbBorrarContacto(const QString& codigo) {
    const QString sp = u"borrarcontacto"_s;
    try {
        bd().savepoint(sp);
        bd().exec(u"Delete from AboGrup where abonado = ?"_s, {codigo});
        bd().exec(u"Delete from AboAuto where abonado = ?"_s, {codigo});
        bd().exec(u"Delete from Abonados where Codigo = ?"_s, {codigo});
        bd().release(sp);
    } catch (const ErrorBD& e) {
        deshacer(sp);
        return Hecho::no(e.description(), Msg::OkOnly);
    }
    return {};
}

ContactosBorrados msBorrarContactos(const QStringList& codigos) {
    // The outer savepoint only saves a disk sync per contact when thousands
    // go at once; without it each contact still goes on its own.
    const QString sp = u"borrarcontactos"_s;
    bool exterior = true;
    try {
        bd().savepoint(sp);
    } catch (const ErrorBD&) {
        exterior = false;
    }
    ContactosBorrados borrados;
    for (const QString& codigo : codigos) {
        Hecho h = mbBorrarContacto(codigo);
        if (h)
            ++borrados.cuantos;
        else
            borrados.fallos.append(std::move(h));
    }
    if (exterior) {
        try {
            bd().release(sp);
        } catch (const ErrorBD& e) {
            msLog(u"Error confirmando el borrado de Contactos: "_s + e.description());
        }
    }
    return borrados;
}

namespace {
const QString kContactosVisibles =
    u"FROM Abonados INNER JOIN Canales ON Abonados.Canal = Canales.Canal"_s;
}  // namespace

ListaPaginada::Definicion definicionContactos() {
    ListaPaginada::Definicion d;
    d.desde = kContactosVisibles;
    d.clave = u"Abonados.rowid"_s;
    d.mayor = u"SELECT max(rowid) FROM Abonados"_s;
    // The contacts of an account that exists: every contact, counted on
    // the table's pages alone, less those of no account and those between
    // two accounts, which the index of the account finds without walking
    // the others (there are none, mostly).
    d.cuenta =
        u"SELECT CASE WHEN EXISTS (SELECT 1 FROM Canales) THEN (SELECT count(*) FROM Abonados) "
        u"- (SELECT count(*) FROM Abonados WHERE Canal IS NULL) "
        u"- (SELECT count(*) FROM Abonados WHERE Canal < (SELECT min(Canal) FROM Canales)) "
        u"- (SELECT count(*) FROM Abonados WHERE Canal > (SELECT max(Canal) FROM Canales)) "
        u"- (SELECT coalesce(sum((SELECT count(*) FROM Abonados WHERE Canal > c.Canal AND "
        u"Canal < (SELECT min(d.Canal) FROM Canales d WHERE d.Canal > c.Canal))), 0) "
        u"FROM Canales c) ELSE 0 END"_s;
    // Numbers are digits and signs, which NOCASE puts in the lists' order;
    // comments keep their key beside them (see Esquema); an account's
    // name is sorted among the accounts, its contacts read an account at
    // a time.
    d.columnas = {{u"Abonados.Alias"_s, u"Abonados.ClaveNombre"_s},
                  {u"Abonados.Codigo"_s, u"Abonados.Codigo COLLATE NOCASE"_s},
                  {u"Abonados.Comentario"_s, u"Abonados.ClaveComentario"_s},
                  {u"Canales.Nombre"_s, {}}};
    d.porClave = {3, u"Abonados.Canal"_s, u"SELECT Canal, Nombre FROM Canales"_s};
    // Names that sort alike keep the order of the names when another
    // column is sorted.
    d.desempate = u"coalesce(Abonados.Alias, '') COLLATE REGLA_LISTAS"_s;
    return d;
}

std::optional<ContactoLeido> primerContactoConAlias(const QString& alias) {
    const ResultadoConsulta r = bd().query(
        u"SELECT Abonados.Codigo, Abonados.Comentario, Abonados.Canal "_s + kContactosVisibles +
            u" WHERE Abonados.Alias = ? ORDER BY Abonados.rowid LIMIT 1"_s,
        {alias});
    if (r.isEmpty()) return std::nullopt;
    return ContactoLeido{textoDe(r.value(0, 0)), textoDe(r.value(0, 1)),
                         int16_t(numeroDe(r.value(0, 2)))};
}

namespace {

constexpr int kContactosPorBloque = 5000;

// Runs `sentencias` in one transaction; how many contacts went is what
// the last one changed. When the block
// fails it is undone and its contacts (`codigos` of the block) go one by
// one, each failure reported on its own, as they would without blocks.
ContactosBorrados borrarBloque(const QList<std::pair<QString, QVariantList>>& sentencias,
                               const std::function<QStringList()>& codigos) {
    const QString sp = u"bloquecontactos"_s;
    try {
        bd().savepoint(sp);
        int borrados = 0;
        for (const auto& [sql, params] : sentencias) borrados = bd().exec(sql, params);
        bd().release(sp);
        return {borrados, {}};
    } catch (const ErrorBD&) {
        deshacer(sp);
    }
    try {
        return msBorrarContactos(codigos());
    } catch (const ErrorBD& e) {
        return {0, {Hecho::no(e.description(), Msg::OkOnly)}};
    }
}

// Memberships and multi-send rows of the contacts chosen by `donde`, then
// the contacts themselves.
QList<std::pair<QString, QVariantList>> borrarDonde(const QString& donde,
                                                    const QVariantList& params) {
    const QString codigos = u"(SELECT Codigo FROM Abonados WHERE "_s + donde + u')';
    // The contacts first, then their memberships by the number's index:
    // left to itself the engine walks every membership for each block.
    return {{u"DELETE FROM AboGrup WHERE rowid IN (SELECT AboGrup.rowid FROM Abonados CROSS "
             u"JOIN AboGrup ON AboGrup.Abonado = Abonados.Codigo WHERE "_s +
                 donde + u')',
             params},
            {u"DELETE FROM AboAuto WHERE Abonado IN "_s + codigos, params},
            {u"DELETE FROM Abonados WHERE "_s + donde, params}};
}

// The numbers of the contacts chosen by `donde`.
std::function<QStringList()> codigosDonde(const QString& donde, const QVariantList& params) {
    return [donde, params] {
        const QVector<QString> t =
            bd().queryTexts(u"SELECT Codigo FROM Abonados WHERE "_s + donde, params);
        return QStringList(t.begin(), t.end());
    };
}

}  // namespace

void msBorrarContactosPorBloques(const QStringList& codigos,
                                 std::function<void(const ContactosBorrados&)> alTerminar) {
    const QString donde = u"Abonados.Codigo IN (SELECT value FROM json_each(?))"_s;
    auto borrados = std::make_shared<ContactosBorrados>();
    qsizetype desde = 0;
    // Each block in its own transaction: a block that fails leaves the others.
    EscrituraPorTurnos::porTurnos(
        bd(), {[codigos, desde, donde, borrados]() mutable {
            const QString lista = QString::fromUtf8(
                QJsonDocument(QJsonArray::fromStringList(codigos.mid(desde, kContactosPorBloque)))
                    .toJson(QJsonDocument::Compact));
            desde += kContactosPorBloque;
            *borrados += borrarBloque(borrarDonde(donde, {lista}), codigosDonde(donde, {lista}));
            return desde < codigos.size();
        }},
        [borrados, alTerminar = std::move(alTerminar)](const ErrorBD*) {
            Q_EMIT Avisos::instancia().contactosCambiados();
            if (alTerminar) alTerminar(*borrados);
        });
}

namespace {
// Sets aside the rows of `tabla` (`columnas` of it, as t) whose number is
// no contact shown: no contact at all, or one set aside in
// temp.quedanAbonados. Each row looks its number up in the number's index
// alone, a stretch of rows at a time.
void apartarSinContactoVisible(std::vector<EscrituraPorTurnos::Paso>& pasos, const QString& tabla,
                               const QString& columnas, const QString& apartado) {
    const QString select =
        u"SELECT "_s + columnas + u" FROM "_s + tabla +
        u" t LEFT JOIN Abonados a ON a.Codigo = t.Abonado WHERE (a.Codigo IS NULL OR "
        u"a.Codigo IN (SELECT Codigo FROM temp.quedanAbonados)) AND t.rowid BETWEEN ? AND ?"_s;
    pasos.push_back(EscrituraPorTurnos::sentencia(bd(), u"CREATE TEMP TABLE "_s + apartado +
                                                            u" AS SELECT "_s + columnas +
                                                            u" FROM "_s + tabla + u" t LIMIT 0"_s));
    pasos.push_back(EscrituraPorTurnos::porTramos(
        bd(), u"INSERT INTO temp."_s + apartado + u' ' + select, {}, {tabla, u"rowid"_s}));
}
}  // namespace

void msBorrarTodosLosContactos(std::function<void(const ContactosBorrados&)> alTerminar) {
    using namespace EscrituraPorTurnos;
    // The accounts that contacts name, hopping through the account index
    // from one value to the next rather than reading every contact.
    const QString cuentasNombradas =
        u"WITH RECURSIVE c(v) AS (SELECT min(Canal) FROM Abonados UNION ALL SELECT (SELECT "
        u"min(Canal) FROM Abonados WHERE Canal > v) FROM c WHERE v IS NOT NULL) SELECT v FROM c "
        u"WHERE v NOT IN (SELECT Canal FROM Canales)"_s;
    // What stays (contacts of a missing account, memberships and
    // multi-send rows of numbers that are no contact shown) is set aside,
    // the three tables are emptied and it comes back, under its own row
    // numbers: emptied without a condition, a table's pages are dropped
    // whole, where deleting row by row rewrites every page of its indexes.
    // The contacts set aside go first, so that emptying the table counts
    // the contacts shown. One transaction over as many turns as it takes.
    auto borrados = std::make_shared<int>(0);
    std::vector<Paso> pasos{
        sentencia(bd(),
                  u"CREATE TEMP TABLE quedanAbonados AS SELECT rowid AS r, Codigo, Alias, "
                  u"Comentario, Canal FROM Abonados WHERE Canal IS NULL OR Canal IN ("_s +
                      cuentasNombradas + u')')};
    apartarSinContactoVisible(pasos, u"AboGrup"_s, u"t.rowid AS r, t.Abonado, t.Grupo"_s,
                              u"quedanAboGrup"_s);
    apartarSinContactoVisible(pasos, u"AboAuto"_s,
                              u"t.id_AboAuto, t.Automatico, t.Abonado, t.Mensaje"_s,
                              u"quedanAboAuto"_s);
    pasos.push_back(vaciar(bd(), u"AboGrup"_s));
    pasos.push_back(vaciar(bd(), u"AboAuto"_s));
    pasos.push_back(sentencia(
        bd(), u"DELETE FROM Abonados WHERE rowid IN (SELECT r FROM temp.quedanAbonados)"_s));
    pasos.push_back(vaciar(bd(), u"Abonados"_s, borrados.get()));
    for (const QString& sql :
         {u"INSERT INTO Abonados (rowid, Codigo, Alias, Comentario, Canal) SELECT r, Codigo, "
          u"Alias, Comentario, Canal FROM temp.quedanAbonados"_s,
          u"INSERT INTO AboGrup (rowid, Abonado, Grupo) SELECT r, Abonado, Grupo FROM "
          u"temp.quedanAboGrup"_s,
          u"INSERT INTO AboAuto (id_AboAuto, Automatico, Abonado, Mensaje) SELECT * FROM "
          u"temp.quedanAboAuto"_s,
          u"DROP TABLE temp.quedanAbonados"_s, u"DROP TABLE temp.quedanAboGrup"_s,
          u"DROP TABLE temp.quedanAboAuto"_s})
        pasos.push_back(sentencia(bd(), sql));
    escribir(bd(), std::move(pasos),
             [borrados, alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
                 if (!fallo) {
                     Q_EMIT Avisos::instancia().contactosCambiados();
                     if (alTerminar) alTerminar({*borrados, {}});
                     return;
                 }
                 // Undone whole: the contacts shown go by blocks, each
                 // failure on its own.
                 QStringList codigos;
                 try {
                     codigos = codigosDonde(u"Canal IN (SELECT Canal FROM Canales)"_s, {})();
                 } catch (const ErrorBD& e) {
                     if (alTerminar) alTerminar({0, {Hecho::no(e.description(), Msg::OkOnly)}});
                     return;
                 }
                 msBorrarContactosPorBloques(codigos, alTerminar);
             });
}

ResultadoConsulta abrirCuentas() {
    return bd().query(u"Select * From Canales"_s);
}

ResultadoConsulta abrirListas() {
    return bd().query(u"Select * From Grupos"_s);
}

int primeraFilaCon(const ResultadoConsulta& rs, const QString& columna, const QString& texto) {
    const int c = rs.columnIndex(columna);
    if (c < 0) return -1;
    for (int f = 0; f < rs.recordCount(); ++f)
        if (textoDe(rs.value(f, c)) == texto) return f;
    return -1;
}

// ---- Lists -----------------------------------------------------------------

ResultadoConsulta abrirListasConContactos() {
    return bd().query(
        u"SELECT Grupos.*, (select count(*) from abogrup where abogrup.grupo=Grupos.grupo) AS "
        u"Contactos FROM Grupos order by nombre COLLATE REGLA_LISTAS"_s);
}

namespace {
const QString kNombreGrande = u"El nombre introducido es demasiado grande"_s;
}  // namespace

Resultado<int> msAltaLista(const QString& nombre) {
    if (nombre.size() > kMaxNombreLista) return Hecho::no(kNombreGrande);
    int grupo = 0;
    try {
        const QVariant maximo = bd().query(u"Select Max(Grupo) From Grupos"_s).value(0, 0);
        if (!maximo.isNull()) {
            // The limit is on the number, not on the count: free numbers
            // below the highest aren't handed out again.
            const long long mayor = numeroDe(maximo);
            grupo = int(mayor + 1);
            if (mayor > kMaxGrupo) return Hecho::no(u"No es posible añadir mas Listas"_s);
            if (grupo > kMaxGrupo)
                return Hecho::no(u"Debe especificar un numero de Lista inferior"_s);
        }
        bd().exec(u"Insert into Grupos (Grupo, Nombre) values (?,?)"_s, {grupo, nombre});
    } catch (const ErrorBD&) {
        // Whatever the cause, these are the words the user has always had.
        return Hecho::no(u"El numero de Lista ya existe"_s);
    }
    return grupo;
}

Resultado<bool> msRenombrarLista(int16_t grupo, const QString& actual, const QString& nombre) {
    if (nombre.size() > kMaxNombreLista) return Hecho::no(kNombreGrande);
    try {
        bd().exec(u"Update Grupos Set Nombre = ? where Grupo = ?"_s, {nombre, grupo});
    } catch (const ErrorBD& e) {
        msLog(u"No se pudo renombrar la Lista "_s + actual + u": "_s + e.description());
        return false;
    }
    return true;
}

bool listaConMiembros(int16_t grupo) {
    // The first membership found is enough: counting half a million held
    // the click.
    return numeroDe(bd().query(u"select exists (select 1 from AboGrup where Grupo = ?)"_s, {grupo})
                        .value(0, 0)) != 0;
}

void msBorrarLista(int16_t grupo, std::function<void(bool borrada)> alTerminar) {
    using namespace EscrituraPorTurnos;
    // A list of half a million members goes a stretch of its numbers at a
    // time, on the index of list and number, in one transaction: the list
    // is gone whole or stays whole.
    escribir(bd(),
             {porTramos(bd(), u"DELETE FROM AboGrup WHERE Grupo = ? AND Abonado BETWEEN ? AND ?"_s,
                        {grupo}, {u"AboGrup"_s, u"Abonado"_s, u"Grupo = ?"_s, {grupo}}),
              sentencia(bd(), u"delete from Grupos where Grupo = ?"_s, {grupo})},
             [alTerminar = std::move(alTerminar)](const ErrorBD* fallo) { alTerminar(!fallo); });
}

namespace {
// The moves of the list edited. Every contact stands in one "leaf": the
// members not moved one by one (1), the other contacts not moved one by
// one (2), or the lines of one move of chosen lines (the leaf's own
// number), in the order they were moved (Paso). Leaves hang from a
// "root", a run of lines on one side: among the side's ordered lines, or
// after them at a place until a sort of that side (Posicion). A run of a
// move by choice shows by its steps, either way (Descendente); a run of an
// "all moved" shows in the order of a column (Columna, Descendente), as
// the side it left was sorted turned round. Moving a side whole, or a
// sort, changes roots alone, never a line: the work is the same for ten
// lines as for a million.
const QString kLista = u"temp.MiembrosLista"_s;
const QString kMovidos = u"temp.MiembrosMovidos"_s;
const QString kHojas = u"temp.MiembrosHojas"_s;
const QString kRaices = u"temp.MiembrosRaices"_s;
// The contacts (their rows) in the list when the screen opened: looked up
// by row number for every line a side walks past, where the list's own
// table is looked up by the number's text through the contact's row.
const QString kDentro = u"temp.MiembrosDentro"_s;
const QString kDesde =
    u"FROM Abonados LEFT JOIN temp.MiembrosMovidos m ON m.Fila = Abonados.rowid"_s;
const QString kCeldas =
    u"SELECT Abonados.rowid AS Fila, coalesce(upper(Abonados.Alias), '') AS Nombre, "
    u"Abonados.Codigo AS Codigo "_s;

QString lado(bool dentro) {
    return dentro ? u"1"_s : u"0"_s;
}

// What the leaf of the row of `fila` (with its move, `m`) tells: a column
// of the leaves' table.
QString deSuHoja(const QString& columna, const QString& fila = u"Abonados.rowid"_s) {
    return u"(SELECT h."_s + columna + u" FROM "_s + kHojas +
           u" h WHERE h.Hoja = coalesce(m.Hoja, CASE WHEN EXISTS (SELECT 1 FROM "_s + kDentro +
           u" d WHERE d.Fila = "_s + fila + u") THEN 1 ELSE 2 END))"_s;
}

// Each leaf takes the side and the place of its root: a row's filter then
// looks up its leaf alone.
void seguirRaices() {
    bd().exec(u"UPDATE "_s + kHojas +
              u" SET Lado = r.Lado, Ordenada = CASE WHEN r.Posicion IS NULL THEN r.Lado ELSE -1 "
              u"END FROM "_s +
              kRaices + u" r WHERE r.Raiz = MiembrosHojas.Raiz"_s);
}

// The next place after the lines of `dentro`'s side.
QString siguientePosicion(bool dentro) {
    return u"(SELECT coalesce(max(Posicion), 0) + 1 FROM "_s + kRaices + u" WHERE Lado = "_s +
           lado(dentro) + u')';
}

// A root new on `dentro`'s side after its lines, of no leaf yet; its
// number.
qlonglong nuevaRaiz(bool dentro, int columna, bool descendente) {
    bd().exec(u"INSERT INTO "_s + kRaices +
                  u" (Lado, Posicion, Columna, Descendente) VALUES (?, "_s +
                  siguientePosicion(dentro) + u", ?, ?)"_s,
              {dentro ? 1 : 0, columna, descendente ? 1 : 0});
    return numeroDe(bd().query(u"SELECT max(Raiz) FROM "_s + kRaices).value(0, 0));
}
}  // namespace

void msPrepararMiembrosLista(int16_t grupo,
                             std::function<void(std::optional<std::pair<int, int>>)> alTerminar) {
    using namespace EscrituraPorTurnos;
    auto dentro = std::make_shared<int>(0);
    auto filas = std::make_shared<std::pair<int, int>>();
    std::vector<Paso> pasos{
        [grupo] {
            msSoltarMiembrosLista();
            // Names written by another program since are put in order first.
            Esquema::completarClavesNombre(bd());
            // A leaf's lines are read in the order they were moved (the
            // index of leaf and step), and stored so (of the step).
            for (const QString& sql : QStringList{
                     u"CREATE TABLE "_s + kLista +
                         u" (Grupo INTEGER, Ajenos INTEGER, Pasos INTEGER)"_s,
                     u"CREATE TABLE "_s + kMovidos +
                         u" (Fila INTEGER PRIMARY KEY, Hoja INTEGER, Paso INTEGER)"_s,
                     u"CREATE INDEX temp.MiembrosMovidosHoja ON MiembrosMovidos (Hoja, Paso)"_s,
                     u"CREATE INDEX temp.MiembrosMovidosPaso ON MiembrosMovidos (Paso)"_s,
                     u"CREATE TABLE "_s + kHojas +
                         u" (Hoja INTEGER PRIMARY KEY, Raiz INTEGER, Filas INTEGER, Lado INTEGER, "
                         u"Ordenada INTEGER)"_s,
                     u"CREATE TABLE "_s + kRaices +
                         u" (Raiz INTEGER PRIMARY KEY, Lado INTEGER, Posicion INTEGER, Columna "
                         u"INTEGER, Descendente INTEGER, Hoja INTEGER)"_s,
                     u"CREATE TABLE "_s + kDentro + u" (Fila INTEGER PRIMARY KEY)"_s,
                     // The members inside, the others outside, both among the
                     // ordered lines.
                     u"INSERT INTO "_s + kRaices +
                         u" (Raiz, Lado, Posicion, Columna, Descendente) "
                         u"VALUES (1, 1, NULL, -1, 0), (2, 0, NULL, -1, 0)"_s,
                     u"INSERT INTO "_s + kHojas +
                         u" (Hoja, Raiz, Filas, Lado, Ordenada) "
                         u"VALUES (1, 1, 0, 1, 1), (2, 2, 0, 0, 0)"_s})
                bd().exec(sql);
            bd().exec(u"INSERT INTO "_s + kLista + u" (Grupo, Pasos) VALUES (?, 0)"_s, {grupo});
            return false;
        },
        // The members that are contacts, each once, a stretch of numbers
        // at a time; their count is the inner side's.
        porTramos(bd(),
                  u"INSERT OR IGNORE INTO "_s + kDentro +
                      u" SELECT a.rowid FROM AboGrup g INNER JOIN Abonados a ON a.Codigo = "
                      u"g.Abonado WHERE g.Grupo = ? AND g.Abonado BETWEEN ? AND ?"_s,
                  {grupo}, {u"AboGrup"_s, u"Abonado"_s, u"Grupo = ?"_s, {grupo}}, dentro.get()),
        [grupo, dentro, filas] {
            // Memberships that show nowhere: of a number that is no
            // contact, or of one twice. "Guardar" looks for the first kind
            // only when there may be some.
            const long long miembros = numeroDe(
                bd().query(u"SELECT count(*) FROM AboGrup WHERE Grupo = ?"_s, {grupo}).value(0, 0));
            bd().exec(u"UPDATE "_s + kLista + u" SET Ajenos = ?"_s, {miembros - *dentro});
            const long long todos =
                numeroDe(bd().query(u"SELECT count(*) FROM Abonados"_s).value(0, 0));
            *filas = {*dentro, int(todos - *dentro)};
            bd().exec(u"UPDATE "_s + kHojas + u" SET Filas = CASE Hoja WHEN 1 THEN ? ELSE ? END"_s,
                      {filas->first, filas->second});
            return false;
        }};
    porTurnos(bd(), std::move(pasos),
              [filas, alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
                  if (fallo) {
                      alTerminar(std::nullopt);
                      return;
                  }
                  alTerminar(*filas);
              });
}

ListaPaginada::Definicion definicionMiembros(bool dentro) {
    ListaPaginada::Definicion d;
    d.desde = kDesde;
    d.clave = u"Abonados.rowid"_s;
    d.mayor = u"SELECT max(rowid) FROM Abonados"_s;
    d.columnas = {{u"upper(Abonados.Alias)"_s, u"Abonados.ClaveNombre"_s},
                  {u"Abonados.Codigo"_s, {}}};
    // Names alike go by their rows both ways, so the index serves both,
    // and a side's order turned round is its lines from the last up.
    d.estable = false;
    // Which side a line is on is a look into the temporary tables: no
    // index on the contacts has it.
    d.filtroPorFila = true;
    // The lines of a run of "all moved": a list of their own.
    auto deRaiz = [d](qlonglong raiz) {
        auto lista = std::make_shared<ListaPaginada::Definicion>(d);
        lista->filtro = deSuHoja(u"Raiz"_s) + u" = "_s + QString::number(raiz);
        return lista;
    };
    // On this side now, among its ordered lines; their count is the
    // leaves'.
    d.filtro = deSuHoja(u"Ordenada"_s) + u" = "_s + lado(dentro);
    d.cuenta =
        u"SELECT coalesce(sum(Filas), 0) FROM "_s + kHojas + u" WHERE Ordenada = "_s + lado(dentro);
    const QString celdas =
        kCeldas + u"FROM "_s + kMovidos + u" m INNER JOIN Abonados ON Abonados.rowid = m.Fila"_s;
    d.cola = [dentro, celdas, deRaiz] {
        QVector<ListaPaginada::TramoCola> tramos;
        const ResultadoConsulta r = bd().query(
            u"SELECT r.Raiz, r.Hoja, r.Columna, r.Descendente, (SELECT coalesce(sum(h.Filas), "
            u"0) FROM "_s +
                kHojas + u" h WHERE h.Raiz = r.Raiz) FROM "_s + kRaices +
                u" r WHERE r.Lado = ? AND r.Posicion IS NOT NULL ORDER BY r.Posicion"_s,
            {dentro ? 1 : 0});
        for (int f = 0; f < r.recordCount(); ++f) {
            ListaPaginada::TramoCola t;
            t.filas = int(numeroDe(r.value(f, 4)));
            t.descendente = numeroDe(r.value(f, 3)) != 0;
            if (r.value(f, 1).isNull()) {
                t.lista = deRaiz(numeroDe(r.value(f, 0)));
                t.columna = int(numeroDe(r.value(f, 2)));
            } else {
                t.serie = {celdas, kMovidos + u" m"_s,
                           u"m.Hoja = "_s + QString::number(numeroDe(r.value(f, 1))), u"m.Paso"_s,
                           t.descendente};
            }
            tramos.append(std::move(t));
        }
        return tramos;
    };
    d.asentarCola = [dentro] {
        try {
            bd().exec(u"UPDATE "_s + kRaices + u" SET Posicion = NULL WHERE Lado = ?"_s,
                      {dentro ? 1 : 0});
            seguirRaices();
            return true;
        } catch (const ErrorBD& e) {
            // Refused while another write of ours holds the connection, the
            // lines moved stay after the others until the next sort.
            if (!bd().retenida()) msLog(u"No se pudo ordenar la Lista: "_s + e.description());
            return false;
        }
    };
    return d;
}

namespace {
// The moves write the screen's temporary tables, which a write of ours
// holding the connection would take into its transaction and undo with it.
void cuandoLibre(std::function<void()> mover, std::function<void()> alTerminar) {
    EscrituraPorTurnos::porTurnos(
        bd(), {[mover = std::move(mover)] {
            mover();
            return false;
        }},
        [alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
            if (fallo)
                msLog(u"No se pudieron mover los contactos de la Lista: "_s + fallo->description());
            alTerminar();
        });
}

void moverMiembros(bool haciaDentro, const std::vector<int64_t>& claves) {
    QString lista = u"["_s;
    for (size_t k = 0; k < claves.size(); ++k) {
        if (k) lista += u',';
        lista += QString::number(claves[k]);
    }
    lista += u']';
    const QString sp = u"mover"_s;
    bd().savepoint(sp);
    try {
        // The leaves they leave are that much smaller.
        bd().exec(
            u"UPDATE "_s + kHojas + u" SET Filas = Filas - x.n FROM (SELECT "_s +
                deSuHoja(u"Hoja"_s) +
                u" AS h, count(*) AS n FROM json_each(?) j INNER JOIN Abonados ON "
                u"Abonados.rowid = j.value LEFT JOIN "_s +
                kMovidos +
                u" m ON m.Fila = Abonados.rowid GROUP BY 1) x WHERE MiembrosHojas.Hoja = x.h"_s,
            {lista});
        // A leaf of their own at the end of the other side, in the order
        // given, after every step before.
        const qlonglong hoja = nuevaRaiz(haciaDentro, -1, false);
        bd().exec(u"UPDATE "_s + kRaices + u" SET Hoja = Raiz WHERE Raiz = ?"_s, {hoja});
        const int movidas = bd().exec(
            u"INSERT INTO "_s + kMovidos +
                u" (Fila, Hoja, Paso) SELECT a.rowid, ?, j.key + 1 + (SELECT Pasos FROM "_s +
                kLista +
                u") FROM json_each(?) j INNER JOIN Abonados a ON a.rowid = j.value WHERE "
                u"true ON CONFLICT (Fila) DO UPDATE SET Hoja = excluded.Hoja, Paso = "
                u"excluded.Paso"_s,
            {hoja, lista});
        bd().exec(u"UPDATE "_s + kLista + u" SET Pasos = Pasos + ?"_s, {qlonglong(claves.size())});
        bd().exec(u"INSERT INTO "_s + kHojas +
                      u" (Hoja, Raiz, Filas, Lado, Ordenada) VALUES (?, ?, ?, ?, -1)"_s,
                  {hoja, hoja, movidas, haciaDentro ? 1 : 0});
        bd().release(sp);
    } catch (const ErrorBD&) {
        deshacer(sp);
        throw;
    }
}

void moverTodos(bool haciaDentro, int columna, bool descendente) {
    const QString sp = u"todos"_s;
    const QVariant hacia = haciaDentro ? 1 : 0;
    const QVariant desde = haciaDentro ? 0 : 1;
    bd().savepoint(sp);
    try {
        // The side's lines after its ordered ones follow the other side's,
        // from the last run up, each turned round.
        const ResultadoConsulta posiciones =
            bd().query(u"SELECT (SELECT coalesce(max(Posicion), 0) FROM "_s + kRaices +
                           u" WHERE Lado = ?), (SELECT coalesce(max(Posicion), 0) FROM "_s +
                           kRaices + u" WHERE Lado = ?)"_s,
                       {hacia, desde});
        const qlonglong base = numeroDe(posiciones.value(0, 0));
        const qlonglong ultima = numeroDe(posiciones.value(0, 1));
        bd().exec(u"UPDATE "_s + kRaices +
                      u" SET Lado = ?, Posicion = ? + ? + 1 - Posicion, Descendente = NOT "
                      u"Descendente WHERE Lado = ? AND Posicion IS NOT NULL"_s,
                  {hacia, base, ultima, desde});
        // Then its ordered lines, from the last up: one run whatever their
        // leaves.
        const qlonglong raiz = nuevaRaiz(haciaDentro, columna, !descendente);
        bd().exec(u"UPDATE "_s + kHojas + u" SET Raiz = ? WHERE Ordenada = ?"_s, {raiz, desde});
        bd().exec(u"DELETE FROM "_s + kRaices + u" WHERE Lado = ? AND Posicion IS NULL"_s, {desde});
        seguirRaices();
        bd().release(sp);
    } catch (const ErrorBD&) {
        deshacer(sp);
        throw;
    }
}

}  // namespace

void msMoverMiembros(bool haciaDentro, const std::vector<int64_t>& claves,
                     std::function<void()> alTerminar) {
    if (claves.empty()) {
        alTerminar();
        return;
    }
    cuandoLibre([haciaDentro, claves] { moverMiembros(haciaDentro, claves); },
                std::move(alTerminar));
}

void msMoverTodosLosMiembros(bool haciaDentro, int columna, bool descendente,
                             std::function<void()> alTerminar) {
    cuandoLibre([=] { moverTodos(haciaDentro, columna, descendente); }, std::move(alTerminar));
}

void msGuardarMiembrosLista(int16_t grupo, std::function<void(bool guardada)> alTerminar) {
    using namespace EscrituraPorTurnos;
    long long ajenos = 0;
    std::array<QVariant, 2> quietos;  // where the members, and the others, not moved one by one are
    try {
        ajenos = numeroDe(bd().query(u"SELECT Ajenos FROM "_s + kLista).value(0, 0));
        const ResultadoConsulta hojas =
            bd().query(u"SELECT Hoja, Lado FROM "_s + kHojas + u" WHERE Hoja IN (1, 2)"_s);
        for (int f = 0; f < hojas.recordCount(); ++f)
            quietos.at(size_t(numeroDe(hojas.value(f, 0)) - 1)) = hojas.value(f, 1);
    } catch (const ErrorBD&) {
        alTerminar(false);
        return;
    }
    // Only what moved is written, a range of rows at a time, each row
    // looked up in an index: a list of half a million members is stored
    // over several turns in one transaction.
    const QString movidos = u"FROM "_s + kMovidos +
                            u" m INNER JOIN Abonados a ON a.rowid = m.Fila WHERE "_s +
                            deSuHoja(u"Lado"_s, u"a.rowid"_s) + u" = "_s;
    const QString noEsMiembro =
        u" AND NOT EXISTS (SELECT 1 FROM AboGrup g WHERE g.Grupo = ? AND g.Abonado = a.Codigo)"_s;
    std::vector<Paso> pasos{
        porTramos(bd(),
                  u"DELETE FROM AboGrup WHERE Grupo = ? AND Abonado IN (SELECT a.Codigo "_s +
                      movidos + u"0 AND m.Fila BETWEEN ? AND ?)"_s,
                  {grupo}, {kMovidos, u"Fila"_s})};
    // Memberships of numbers that are no contact go, as the list showed
    // them not; looked for only when there may be some.
    if (ajenos > 0)
        pasos.push_back(porTramos(bd(),
                                  u"DELETE FROM AboGrup WHERE Grupo = ? AND NOT EXISTS (SELECT 1 "
                                  u"FROM Abonados a WHERE a.Codigo = AboGrup.Abonado) AND rowid "
                                  u"BETWEEN ? AND ?"_s,
                                  {grupo}, {u"AboGrup"_s, u"rowid"_s, u"Grupo = ?"_s, {grupo}}));
    // A row refused undoes the whole write, as the failure would anyway
    // (OR ROLLBACK): the engine then keeps no copy of each page a stretch
    // touches to undo that stretch alone.
    // Those moved in one by one join in the order they were moved, then
    // the others by number.
    pasos.push_back(porTramos(
        bd(),
        u"INSERT OR ROLLBACK INTO AboGrup (Abonado, Grupo) SELECT a.Codigo, ? "_s + movidos +
            u"1"_s + noEsMiembro + u" AND m.Paso BETWEEN ? AND ? ORDER BY m.Paso"_s,
        {grupo, grupo}, {kMovidos, u"Paso"_s}));
    const QString sinMover =
        u" NOT EXISTS (SELECT 1 FROM "_s + kMovidos + u" m WHERE m.Fila = a.rowid)"_s;
    if (!quietos[0].isNull() && numeroDe(quietos[0]) == 0)
        pasos.push_back(porTramos(
            bd(),
            u"DELETE FROM AboGrup WHERE rowid IN (SELECT g.rowid FROM Abonados a INNER JOIN "
            u"AboGrup g ON g.Grupo = ? AND g.Abonado = a.Codigo WHERE"_s +
                sinMover + u" AND a.Codigo BETWEEN ? AND ?)"_s,
            {grupo}, {u"Abonados"_s, u"Codigo"_s}));
    if (!quietos[1].isNull() && numeroDe(quietos[1]) == 1)
        pasos.push_back(porTramos(bd(),
                                  u"INSERT OR ROLLBACK INTO AboGrup (Abonado, Grupo) SELECT "
                                  u"a.Codigo, ? FROM Abonados a WHERE"_s +
                                      sinMover + noEsMiembro + u" AND a.Codigo BETWEEN ? AND ?"_s,
                                  {grupo, grupo}, {u"Abonados"_s, u"Codigo"_s}));
    escribir(bd(), std::move(pasos), [alTerminar = std::move(alTerminar)](const ErrorBD* fallo) {
        if (!fallo) msSoltarMiembrosLista();
        alTerminar(!fallo);
    });
}

void msSoltarMiembrosLista() {
    try {
        for (const QString& t : {kLista, kMovidos, kHojas, kRaices, kDentro})
            bd().exec(u"DROP TABLE IF EXISTS "_s + t);
    } catch (const ErrorBD& e) {
        msLog(u"No se pudieron soltar los cambios de la Lista: "_s + e.description());
    }
}

// ---- Predefined texts ------------------------------------------------------

ResultadoConsulta abrirMensajesPredefinidos() {
    return bd().query(u"select * from MenPro order by Mensaje"_s);
}

QStringList leerTextosPredefinidos() {
    QStringList textos;
    try {
        const ResultadoConsulta rs = bd().query(u"select * from MenPro"_s);
        for (int f = 0; f < rs.recordCount(); ++f) textos.append(textoDe(rs.value(f, 1)));
    } catch (const ErrorBD& e) {
        msLog(u"No se pudieron leer los Mensajes Predefinidos: "_s + e.description());
    }
    return textos;
}

Hecho msAltaMensaje(const QString& texto) {
    // "nombre": the words of this routine, not of the change below.
    if (texto.size() > kMaxTextoPredefinido) return Hecho::no(kNombreGrande);
    try {
        const QVariant siguiente = bd().query(u"Select Max(Mensaje)+1 From MenPro"_s).value(0, 0);
        bd().exec(u"Insert into menpro (Mensaje, Texto) values (?,?)"_s,
                  {siguiente.isNull() ? 0LL : numeroDe(siguiente), texto});
    } catch (const ErrorBD&) {
        return Hecho::no(u"El numero de Mensaje ya existe"_s);
    }
    return {};
}

Resultado<bool> msCambiarMensaje(int mensaje, QString texto) {
    if (texto.size() > kMaxTextoPredefinido)
        return Hecho::no(u"El texto introducido es demasiado grande"_s);
    // Texts changed here never carry a straight apostrophe.
    texto.replace(u'\'', u'´');
    try {
        bd().exec(u"Update menpro Set texto = ? where mensaje = ?"_s, {texto, mensaje});
    } catch (const ErrorBD&) {
        return false;
    }
    return true;
}

bool msBorrarMensaje(int mensaje) {
    try {
        bd().exec(u"delete from MenPro where Mensaje = ?"_s, {mensaje});
    } catch (const ErrorBD&) {
        return false;
    }
    return true;
}

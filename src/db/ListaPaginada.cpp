#include "db/ListaPaginada.h"

#include "db/Conexion.h"

#include <sqlite3.h>

#include <QHash>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <unordered_map>

using namespace Qt::StringLiterals;

namespace {

// Rows read at once, and pages kept for scrolling back and forth.
constexpr int kFilasPagina = 250;
constexpr size_t kPaginasGuardadas = 4;
// A page a few pages past the last one read is reached by skipping rows
// of one bounded sort; farther, the whole order is read once.
constexpr int kSaltoCorto = 4;
// A row that moved far is looked for in lists up to this size.
constexpr int kFilasBuscadas = 20000;

QString sinNulo(const QString& sql) {
    return u"coalesce("_s + sql + u", '')"_s;
}

// Runs a statement of one bound number row by row on the engine itself:
// a whole order of a million rows is read without a value per cell.
template <typename PorFila>
void recorrer(const QString& sql, int64_t numero, PorFila porFila) {
    sqlite3* h = Conexion().handle();
    const QByteArray texto = sql.toUtf8();
    sqlite3_stmt* s = nullptr;
    if (!h || sqlite3_prepare_v2(h, texto.constData(), -1, &s, nullptr) != SQLITE_OK) {
        sqlite3_finalize(s);
        throw ErrorBD(QString::fromUtf8(h ? sqlite3_errmsg(h) : "Base de datos cerrada"),
                      ErrNum::BaseDatos);
    }
    sqlite3_bind_int64(s, 1, numero);
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) porFila(s);
    const QString error = QString::fromUtf8(sqlite3_errmsg(h));
    sqlite3_finalize(s);
    if (rc != SQLITE_DONE) throw ErrorBD(error, ErrNum::BaseDatos);
}

}  // namespace

ListaPaginada::ListaPaginada(Definicion definicion) : m_def(std::move(definicion)) {}

void ListaPaginada::vaciarPaginas() {
    m_paginas.clear();
    m_anclas.clear();
    m_orden.clear();
    m_orden.shrink_to_fit();
    m_grupos.clear();
}

void ListaPaginada::limpiar() {
    vaciarPaginas();
    m_cola = {};
    m_filasCola = 0;
    m_filas = 0;
    m_tope = 0;
}

int ListaPaginada::contar() const {
    const QString sql =
        m_def.cuenta.isEmpty() ? u"SELECT count(*) "_s + desdeDonde() : m_def.cuenta;
    return int(Conexion().query(sql).value(0, 0).toLongLong());
}

void ListaPaginada::cargar(int filas, int filasCola) {
    limpiar();
    // The count from the smallest index, the highest number from the
    // table's own key: neither walks the rows.
    m_filas = filas >= 0 ? filas : contar();
    const QString mayor = m_def.mayor.isEmpty()
                              ? u"SELECT max("_s + m_def.clave + u") "_s + desdeDonde()
                              : m_def.mayor;
    m_tope = Conexion().query(mayor).value(0, 0).toLongLong();
    if (!m_def.cola.isEmpty())
        m_filasCola = filasCola >= 0
                          ? filasCola
                          : int(Conexion()
                                    .query(u"SELECT count(*) FROM ("_s + m_def.cola + u')')
                                    .value(0, 0)
                                    .toLongLong());
}

const ListaPaginada::Fila* ListaPaginada::filaCola(int k) const {
    const int numero = k / kFilasPagina;
    if (m_cola.numero != numero) {
        m_cola = {numero, {}};
        try {
            const QVector<QString> celdas =
                Conexion().queryTexts(m_def.cola + u" LIMIT ? OFFSET ?"_s,
                                      {kFilasPagina, qlonglong(numero) * kFilasPagina});
            const qsizetype porFila = columnas() + 1;
            m_cola.filas.resize(size_t(celdas.size() / porFila));
            for (size_t i = 0; i < m_cola.filas.size(); ++i) {
                m_cola.filas[i].clave = celdas.at(qsizetype(i) * porFila).toLongLong();
                m_cola.filas[i].celdas = celdas.mid(qsizetype(i) * porFila + 1, columnas());
            }
        } catch (const ErrorBD&) {
            // Shown empty, like a page of the order that can't be read.
        }
    }
    const size_t i = size_t(k - numero * kFilasPagina);
    return i < m_cola.filas.size() ? &m_cola.filas[i] : nullptr;
}

void ListaPaginada::ordenar(int columna, bool descendente) {
    vaciarPaginas();
    if (m_filasCola > 0) {
        if (m_def.asentarCola) m_def.asentarCola();
        m_filas += m_filasCola;
        m_filasCola = 0;
        m_cola = {};
    }
    columna = columna >= 0 && columna < columnas() ? columna : -1;
    if (columna != m_columna) {
        m_anterior = m_columna;
        m_anteriorDescendente = m_descendente;
    }
    m_columna = columna;
    m_descendente = descendente;
}

bool ListaPaginada::porIndice() const {
    return m_columna < 0 || !m_def.columnas.at(m_columna).orden.isEmpty();
}

QString ListaPaginada::valorDe(int columna) const {
    const Columna& c = m_def.columnas.at(columna);
    return c.orden.isEmpty() ? sinNulo(c.texto) + u" COLLATE REGLA_LISTAS"_s : c.orden;
}

QVector<ListaPaginada::Termino> ListaPaginada::terminos() const {
    if (m_columna < 0) return {{m_def.clave, m_descendente}};
    const bool empates = m_def.estable ? false : m_descendente;
    QVector<Termino> t{{valorDe(m_columna), m_descendente}};
    if (m_def.estable && m_anterior >= 0) t.append({valorDe(m_anterior), m_anteriorDescendente});
    if (!m_def.desempate.isEmpty()) t.append({m_def.desempate, empates});
    t.append({m_def.clave, empates});
    return t;
}

QString ListaPaginada::ordenSql(const QVector<Termino>& t) {
    QString orden;
    for (const Termino& termino : t)
        orden += (orden.isEmpty() ? u" ORDER BY "_s : u", "_s) + termino.sql +
                 (termino.descendente ? u" DESC"_s : u""_s);
    return orden;
}

QString ListaPaginada::despuesDe(QVariantList& params, const QVector<Termino>& t,
                                 const QVector<QString>& orden, int64_t clave) {
    // (a after x) OR (a = x AND (b after y OR (b = y AND ...))), down to
    // the row's number, which no two rows share.
    QString sql;
    QVariantList valores;
    for (qsizetype i = t.size() - 1; i >= 0; --i) {
        const QString mayor = t.at(i).descendente ? u" < ?"_s : u" > ?"_s;
        const QVariant v =
            i == t.size() - 1 ? QVariant(qlonglong(clave)) : QVariant(orden.value(i));
        if (sql.isEmpty()) {
            sql = t.at(i).sql + mayor;
            valores = {v};
        } else {
            sql = u"("_s + t.at(i).sql + mayor + u" OR ("_s + t.at(i).sql + u" = ? AND "_s + sql +
                  u"))"_s;
            valores = QVariantList{v, v} + valores;
        }
    }
    params += valores;
    return sql;
}

QString ListaPaginada::seleccion() const {
    QString s = u"SELECT "_s + m_def.clave;
    const QVector<Termino> t = terminos();
    for (qsizetype i = 0; i + 1 < t.size(); ++i) s += u", "_s + t.at(i).sql;
    for (const Columna& c : m_def.columnas) s += u", "_s + sinNulo(c.texto);
    return s + u' ';
}

QString ListaPaginada::desdeDonde(const QString& condicion) const {
    if (m_def.filtro.isEmpty())
        return condicion.isEmpty() ? m_def.desde : m_def.desde + u" WHERE "_s + condicion;
    return m_def.desde + u" WHERE ("_s + m_def.filtro + u')' +
           (condicion.isEmpty() ? QString() : u" AND "_s + condicion);
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerFilas(const QString& donde,
                                                          const QString& resto,
                                                          const QVariantList& params) const {
    const int ancho = columnas();
    const qsizetype terminosFila = terminos().size() - 1;
    const QVector<QString> celdas =
        Conexion().queryTexts(seleccion() + desdeDonde(donde) + resto, params);
    const qsizetype porFila = ancho + 1 + terminosFila;
    std::vector<Fila> filas(size_t(celdas.size() / porFila));
    for (size_t i = 0; i < filas.size(); ++i) {
        const qsizetype base = qsizetype(i) * porFila;
        Fila& f = filas[i];
        f.clave = celdas.at(base).toLongLong();
        f.orden = celdas.mid(base + 1, terminosFila);
        f.celdas = celdas.mid(base + 1 + terminosFila, ancho);
    }
    return filas;
}

void ListaPaginada::leerOrdenCompleto() const {
    std::vector<int64_t> orden;
    orden.reserve(size_t(m_filas));
    recorrer(u"SELECT "_s + m_def.clave + u' ' + desdeDonde(m_def.clave + u" <= ?"_s) + ordenSql(),
             m_tope, [&](sqlite3_stmt* s) { orden.push_back(sqlite3_column_int64(s, 0)); });
    m_orden = std::move(orden);
}

bool ListaPaginada::porGrupos() const {
    return !porIndice() && m_columna == m_def.porClave.columna;
}

const std::vector<ListaPaginada::Grupo>& ListaPaginada::grupos() const {
    if (!m_grupos.empty()) return m_grupos;
    // Keys whose texts the rule finds equal share a rank: their rows mix,
    // in the order of the other terms.
    const ResultadoConsulta r =
        Conexion().query(u"WITH v(clave, texto) AS ("_s + m_def.porClave.valores +
                         u") SELECT clave, dense_rank() OVER (ORDER BY coalesce(texto, '') COLLATE "
                         u"REGLA_LISTAS) AS g FROM v ORDER BY g"_s +
                         (m_descendente ? u" DESC"_s : QString()));
    std::vector<Grupo> grupos;
    for (int i = 0; i < r.recordCount(); ++i) {
        if (i == 0 || r.value(i, 1) != r.value(i - 1, 1)) grupos.emplace_back();
        grupos.back().claves.append(r.value(i, 0));
    }
    m_grupos = std::move(grupos);
    return m_grupos;
}

namespace {
// The rows of a group of keys: on the key's index, or (`enIndice` false)
// picked out of another index's order.
QString condicionGrupo(const QString& porClave, const QVariantList& claves, bool enIndice,
                       QVariantList& params) {
    QString sql = (enIndice ? QString() : u"+"_s) + porClave;
    if (claves.size() == 1) {
        sql += u" = ?"_s;
    } else {
        QStringList marcas;
        for (qsizetype i = 0; i < claves.size(); ++i) marcas.append(u"?"_s);
        sql += u" IN ("_s + marcas.join(u", "_s) + u')';
    }
    params += claves;
    return sql;
}
}  // namespace

bool ListaPaginada::restoPorIndice() const {
    if (m_def.estable && m_anterior >= 0) return !m_def.columnas.at(m_anterior).orden.isEmpty();
    return m_def.desempate.isEmpty();
}

std::vector<int64_t> ListaPaginada::leerClavesGrupo(size_t g, const Ancla* ancla,
                                                    int limite) const {
    const QString& porClave = m_def.porClave.clave;
    Grupo& grupo = m_grupos.at(g);
    // A small group is sorted whole on the key's index; in a large one
    // the rows of a page are found soon along the order's own index.
    // Either costs at most about the root of a page times the rows.
    const int umbral = int(std::sqrt(double(kFilasPagina) * std::max(m_filas, 1)));
    const bool recorrerOrden = restoPorIndice();
    if (recorrerOrden && grupo.filas < 0) {
        QVariantList params;
        const QString donde = condicionGrupo(porClave, grupo.claves, true, params);
        params << umbral + 1;
        grupo.filas = int(
            Conexion()
                .query(u"SELECT count(*) FROM (SELECT 1 "_s + desdeDonde(donde) + u" LIMIT ?)"_s,
                       params)
                .value(0, 0)
                .toLongLong());
    }
    const QVector<Termino> resto = terminos().mid(1);
    QVariantList params;
    QString donde =
        condicionGrupo(porClave, grupo.claves, !(recorrerOrden && grupo.filas > umbral), params) +
        u" AND +"_s + m_def.clave + u" <= ?"_s;
    params << qlonglong(m_tope);
    if (ancla) donde += u" AND "_s + despuesDe(params, resto, ancla->orden.mid(1), ancla->clave);
    params << limite;
    return leerClaves(donde, ordenSql(resto) + u" LIMIT ?"_s, params);
}

std::vector<int64_t> ListaPaginada::leerClavesPorGrupos(const Ancla* ancla, int saltar,
                                                        size_t& grupo) const {
    const size_t primero = ancla ? ancla->grupo : 0;
    const int quiero = saltar + kFilasPagina;
    std::vector<int64_t> claves;
    for (size_t g = primero; g < grupos().size() && int(claves.size()) < quiero; ++g) {
        const std::vector<int64_t> k =
            leerClavesGrupo(g, g == primero ? ancla : nullptr, quiero - int(claves.size()));
        if (!k.empty()) grupo = g;
        claves.insert(claves.end(), k.begin(), k.end());
    }
    claves.erase(claves.begin(), claves.begin() + std::min(claves.size(), size_t(saltar)));
    return claves;
}

void ListaPaginada::leerOrdenPorGrupos() const {
    // One pass in the order of the other terms, each row into its group.
    QHash<QString, size_t> grupoDe;
    for (size_t g = 0; g < grupos().size(); ++g)
        for (const QVariant& k : m_grupos[g].claves) grupoDe.insert(k.toString(), g);
    std::vector<std::vector<int64_t>> porGrupo(m_grupos.size());
    recorrer(u"SELECT "_s + m_def.porClave.clave + u", "_s + m_def.clave + u' ' +
                 desdeDonde(u"+"_s + m_def.clave + u" <= ?"_s) + ordenSql(terminos().mid(1)),
             m_tope, [&](sqlite3_stmt* s) {
                 const auto* t = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
                 const auto g = grupoDe.constFind(QString::fromUtf8(t, sqlite3_column_bytes(s, 0)));
                 if (g != grupoDe.cend()) porGrupo[*g].push_back(sqlite3_column_int64(s, 1));
             });
    std::vector<int64_t> orden;
    orden.reserve(size_t(m_filas));
    for (const std::vector<int64_t>& g : porGrupo) orden.insert(orden.end(), g.begin(), g.end());
    m_orden = std::move(orden);
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerPorClave(const int64_t* claves,
                                                             size_t n) const {
    // One statement for the page: the numbers go in as one JSON array.
    QString lista = u"["_s;
    for (size_t k = 0; k < n; ++k) {
        if (k) lista += u',';
        lista += QString::number(claves[k]);
    }
    lista += u']';
    std::vector<Fila> leidas =
        leerFilas(m_def.clave + u" IN (SELECT value FROM json_each(?))"_s, QString(), {lista});
    std::unordered_map<int64_t, size_t> donde;
    donde.reserve(leidas.size());
    for (size_t i = 0; i < leidas.size(); ++i) donde.emplace(leidas[i].clave, i);
    std::vector<Fila> filas(n);
    for (size_t k = 0; k < n; ++k) {
        const auto it = donde.find(claves[k]);
        // A row deleted meanwhile shows empty rather than shift the rest.
        if (it == donde.end())
            filas[k].clave = claves[k];
        else
            filas[k] = std::move(leidas[it->second]);
    }
    return filas;
}

std::vector<int64_t> ListaPaginada::leerClaves(const QString& donde, const QString& resto,
                                               const QVariantList& params) const {
    const QVector<QString> t = Conexion().queryTexts(
        u"SELECT "_s + m_def.clave + u' ' + desdeDonde(donde) + resto, params);
    std::vector<int64_t> claves(size_t(t.size()));
    for (qsizetype i = 0; i < t.size(); ++i) claves[size_t(i)] = t.at(i).toLongLong();
    return claves;
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerPagina(int numero, size_t& grupo) const {
    const QString hastaTope = m_def.clave + u" <= ?"_s;
    if (porIndice()) {
        // The index gives the order; skipping rows on it is cheap. The
        // unary plus keeps the engine from walking the table by its key
        // instead.
        const QVariantList params{qlonglong(m_tope), kFilasPagina,
                                  qlonglong(numero) * kFilasPagina};
        const QString resto = ordenSql() + u" LIMIT ? OFFSET ?"_s;
        if (terminos().size() <= 2) return leerFilas(u"+"_s + hastaTope, resto, params);
        // Rows equal on the index are sorted by the other terms, a block
        // of them at a time: that sort carries their numbers alone.
        const std::vector<int64_t> claves = leerClaves(u"+"_s + hastaTope, resto, params);
        return leerPorClave(claves.data(), claves.size());
    }
    // A text order finds the numbers of one page, then reads the rows by
    // number: from the start, or going on after the nearest page read
    // before this one, skipping a few pages.
    const auto siguiente = m_anclas.lower_bound(numero);
    const bool cerca =
        siguiente != m_anclas.begin() && numero - std::prev(siguiente)->first <= kSaltoCorto;
    if (m_orden.empty() && (numero == 0 || cerca)) {
        const Ancla* ancla = numero == 0 ? nullptr : &std::prev(siguiente)->second;
        const int saltar = ancla ? (numero - std::prev(siguiente)->first - 1) * kFilasPagina : 0;
        std::vector<int64_t> claves;
        if (porGrupos()) {
            claves = leerClavesPorGrupos(ancla, saltar, grupo);
        } else {
            // The whole table is walked and one page of numbers kept.
            QVariantList params{qlonglong(m_tope)};
            QString donde = hastaTope;
            if (ancla)
                donde += u" AND "_s + despuesDe(params, terminos(), ancla->orden, ancla->clave);
            params << kFilasPagina << saltar;
            claves = leerClaves(donde, ordenSql() + u" LIMIT ? OFFSET ?"_s, params);
        }
        return leerPorClave(claves.data(), claves.size());
    }
    if (m_orden.empty()) {
        if (porGrupos())
            leerOrdenPorGrupos();
        else
            leerOrdenCompleto();
    }
    const size_t desde = std::min(m_orden.size(), size_t(numero) * kFilasPagina);
    const size_t hasta = std::min(m_orden.size(), desde + kFilasPagina);
    return leerPorClave(m_orden.data() + desde, hasta - desde);
}

const ListaPaginada::Fila* ListaPaginada::fila(int n) const {
    if (n >= m_filas && n < filas()) return filaCola(n - m_filas);
    if (n < 0 || n >= m_filas) return nullptr;
    const int numero = n / kFilasPagina;
    auto it = std::find_if(m_paginas.begin(), m_paginas.end(),
                           [numero](const Pagina& p) { return p.numero == numero; });
    if (it == m_paginas.end()) {
        Pagina p{numero, {}};
        size_t grupo = 0;
        try {
            p.filas = leerPagina(numero, grupo);
        } catch (const ErrorBD&) {
            // The rows show empty, and the page is kept so that painting
            // doesn't ask the engine again. No log line: it would give the
            // event loop a turn in the middle of painting.
        }
        if (!porIndice() && !p.filas.empty()) {
            const Fila& ultima = p.filas.back();
            m_anclas[numero] = {ultima.orden, ultima.clave, grupo};
        }
        if (m_paginas.size() >= kPaginasGuardadas) m_paginas.pop_back();
        m_paginas.insert(m_paginas.begin(), std::move(p));
        it = m_paginas.begin();
    }
    const size_t k = size_t(n - numero * kFilasPagina);
    return k < it->filas.size() ? &it->filas[k] : nullptr;
}

QString ListaPaginada::texto(int n, int columna) const {
    const Fila* f = fila(n);
    if (!f || columna < 0 || columna >= f->celdas.size()) return QString();
    const QString& celda = f->celdas.at(columna);
    return m_def.mostrar ? m_def.mostrar(columna, celda) : celda;
}

int64_t ListaPaginada::clave(int n) const {
    const Fila* f = fila(n);
    return f ? f->clave : 0;
}

QString ListaPaginada::ordenInverso() const {
    QStringList orden;
    for (const Termino& t : terminos()) orden.append(t.sql + (t.descendente ? u""_s : u" DESC"_s));
    return orden.join(u", "_s);
}

int ListaPaginada::filaDe(int64_t clave, int cerca) const {
    for (size_t k = 0; k < m_cola.filas.size(); ++k)
        if (m_cola.filas[k].clave == clave) return m_filas + m_cola.numero * kFilasPagina + int(k);
    if (clave <= 0 || clave > m_tope) return -1;
    // The page where it stood, and the one before (rows that went before
    // it move it up), are read anyway to paint it.
    for (const int n : {cerca, cerca - kFilasPagina}) {
        if (n < 0 || n >= m_filas || !m_orden.empty()) continue;
        const int numero = n / kFilasPagina;
        fila(n);
        for (const Pagina& p : m_paginas)
            if (p.numero == numero)
                for (size_t k = 0; k < p.filas.size(); ++k)
                    if (p.filas[k].clave == clave) return numero * kFilasPagina + int(k);
    }
    if (!m_orden.empty()) {
        const auto it = std::find(m_orden.begin(), m_orden.end(), clave);
        return it == m_orden.end() ? -1 : int(it - m_orden.begin());
    }
    // Those of the pages in memory are found there.
    for (const Pagina& p : m_paginas)
        for (size_t k = 0; k < p.filas.size(); ++k)
            if (p.filas[k].clave == clave) return p.numero * kFilasPagina + int(k);
    // Farther away, finding it walks the table: beyond a size the row is
    // let go rather than hold the window.
    if (m_filas > kFilasBuscadas) return -1;
    const QVector<Termino> t = terminos();
    QString valores = u"SELECT "_s + m_def.clave;
    for (qsizetype i = 0; i + 1 < t.size(); ++i) valores += u", "_s + t.at(i).sql;
    const QVector<QString> orden = Conexion().queryTexts(
        valores + u' ' + desdeDonde(m_def.clave + u" = ?"_s), {qlonglong(clave)});
    if (orden.isEmpty()) return -1;
    // The rows before it are those neither it nor after it.
    QVariantList params{qlonglong(m_tope), qlonglong(clave)};
    const QString despues = despuesDe(params, t, orden.mid(1), clave);
    const ResultadoConsulta r = Conexion().query(
        u"SELECT count(*) "_s +
            desdeDonde(m_def.clave + u" <= ? AND "_s + m_def.clave + u" <> ? AND NOT "_s + despues),
        params);
    return int(r.value(0, 0).toLongLong());
}

#include "db/ListaPaginada.h"

#include "db/Conexion.h"

#include <sqlite3.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QScopeGuard>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <random>
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
// Lists up to this size are sorted in one statement, a few milliseconds;
// longer ones over stretches of row numbers, so a paint can wait for them
// over turns.
constexpr int kFilasDirectas = 20000;
// What a read gives a turn, the paint that asked for it more (most sorts
// end in it, in one statement), and what a stretch aims at.
constexpr qint64 kPrimerTurnoMs = 15;
constexpr qint64 kTurnoMs = 12;
constexpr qint64 kTramoMs = 6;
// Candidates kept from the stretches before they are cut back to those
// that can still make the page.
constexpr size_t kCandidatasMax = 8;
// What filaDe answers, not waiting, while the page it looks in is read.
constexpr int kPorLeer = -2;
// Rows sampled to find where a page far into a text order falls: the rows
// kept around it number about three times the list over the sample's root.
constexpr int64_t kMuestras = 2000;
// Where a page read from a jump's run ended, in a sort by groups of keys.
constexpr size_t kSinAncla = std::numeric_limits<size_t>::max();
// Rows kept around a far page that are sorted at once; more are narrowed
// down by sampling them again.
constexpr int64_t kVentanaMax = 4000;

QString sinNulo(const QString& sql) {
    return u"coalesce("_s + sql + u", '')"_s;
}

// Row numbers as one JSON array, a single parameter however many.
QString listaJson(const int64_t* claves, size_t n) {
    QString lista = u"["_s;
    for (size_t k = 0; k < n; ++k) {
        if (k) lista += u',';
        lista += QString::number(claves[k]);
    }
    return lista + u']';
}

// The rows whose numbers a JSON array parameter gives.
QString enLista(const QString& clave) {
    return clave + u" IN (SELECT value FROM json_each(?))"_s;
}

// The next stretch as long as takes about `kTramoMs`, growing by four at
// most; the last took `ms`.
int64_t siguienteLargo(int64_t largo, qint64 ms) {
    return std::clamp<int64_t>(largo * kTramoMs / std::max<qint64>(1, ms), 256, largo * 4);
}

}  // namespace

ListaPaginada::ListaPaginada(Definicion definicion) : m_def(std::move(definicion)) {}

void ListaPaginada::vaciarPaginas() {
    m_paginas.clear();
    m_anclas.clear();
    m_marcas.clear();
    // Its pages may have left the memory since: the stretches start short.
    m_pasoMarcas = kPrimerPaso;
    m_recorrido = {};
    m_orden.clear();
    m_orden.shrink_to_fit();
    m_grupos.clear();
    // A read under way was for the order or the rows before.
    m_leyendo = -1;
    m_enEspera.clear();
    m_tramos.clear();
    m_salto = {};
    m_ventana = {};
}

void ListaPaginada::limpiar() {
    vaciarPaginas();
    m_cola.clear();
    m_corridas.clear();
    m_filasCola = 0;
    m_filas = 0;
    m_tope = 0;
}

int ListaPaginada::contar() const {
    const QString sql =
        m_def.cuenta.isEmpty() ? u"SELECT count(*) "_s + desdeDonde() : m_def.cuenta;
    return int(Conexion().query(sql).value(0, 0).toLongLong());
}

void ListaPaginada::cargar(int filas) {
    limpiar();
    // The count from the smallest index, the highest number from the
    // table's own key: neither walks the rows.
    m_filas = filas >= 0 ? filas : contar();
    const QString mayor = m_def.mayor.isEmpty()
                              ? u"SELECT max("_s + m_def.clave + u") "_s + desdeDonde()
                              : m_def.mayor;
    m_tope = Conexion().query(mayor).value(0, 0).toLongLong();
    if (!m_def.cola) return;
    for (TramoCola& t : m_def.cola()) {
        if (t.filas <= 0) continue;
        Corrida c{std::move(t), m_filasCola, nullptr};
        m_filasCola += c.def.filas;
        if (c.def.lista) {
            // A list of its own, told where its lines stand among these.
            c.lista = std::make_unique<ListaPaginada>(*c.def.lista);
            c.lista->ordenar(c.def.columna, c.def.descendente);
            c.lista->cargar(c.def.filas);
            c.lista->alLlegar([this, inicio = c.inicio](int primera, int ultima) {
                if (m_alLlegar) m_alLlegar(m_filas + inicio + primera, m_filas + inicio + ultima);
            });
        }
        m_corridas.push_back(std::move(c));
    }
}

bool ListaPaginada::leyendo() const {
    if (m_leyendo >= 0) return true;
    for (const Corrida& c : m_corridas)
        if (c.lista && c.lista->leyendo()) return true;
    return false;
}

namespace {
// Reads through a list without waiting (or waiting) while it lives.
class SinEsperar {
  public:
    explicit SinEsperar(bool& bandera, bool valor = true) : m_bandera(bandera), m_antes(bandera) {
        bandera = valor;
    }
    ~SinEsperar() { m_bandera = m_antes; }
    SinEsperar(const SinEsperar&) = delete;
    SinEsperar& operator=(const SinEsperar&) = delete;

  private:
    bool& m_bandera;
    bool m_antes;
};
}  // namespace

size_t ListaPaginada::corridaDe(int k) const {
    // A handful of runs: the first that ends after the row.
    size_t c = 0;
    while (c + 1 < m_corridas.size() && m_corridas[c + 1].inicio <= k) ++c;
    return c;
}

const ListaPaginada::Fila* ListaPaginada::filaCola(int k) const {
    if (k < 0 || k >= m_filasCola || m_corridas.empty()) return nullptr;
    const size_t c = corridaDe(k);
    const Corrida& corrida = m_corridas[c];
    if (!corrida.lista) return filaSerie(c, k - corrida.inicio);
    // A paint's read of them doesn't wait either.
    SinEsperar comoEsta(corrida.lista->m_sinEsperar, m_sinEsperar);
    return corrida.lista->fila(k - corrida.inicio);
}

const ListaPaginada::Fila* ListaPaginada::filaSerie(size_t c, int k) const {
    const int numero = k / kFilasPagina;
    auto it = std::find_if(m_cola.begin(), m_cola.end(), [&](const PaginaCola& p) {
        return p.corrida == c && p.numero == numero;
    });
    if (it == m_cola.end()) {
        // Not kept empty while the connection is away: asked again later.
        if (Conexion().enOtroHilo()) return nullptr;
        PaginaCola p{c, numero, {}};
        try {
            // The rows before the page are skipped on the run's index
            // alone, without looking up their cells, from whichever end
            // of the run is nearer.
            const Serie& serie = m_corridas[c].def.serie;
            const int filas = m_corridas[c].def.filas;
            const QString& paso = serie.paso;
            const int primera = numero * kFilasPagina;
            const bool desdeElFinal = primera > filas / 2;
            const bool bajando = serie.descendente != desdeElFinal;
            const QString sentido = serie.descendente ? u" DESC"_s : QString();
            const QVector<QString> celdas = Conexion().queryTexts(
                serie.celdas + u" WHERE "_s + serie.condicion + u" AND "_s + paso +
                    (serie.descendente ? u" <= "_s : u" >= "_s) + u"(SELECT "_s + paso +
                    u" FROM "_s + serie.tabla + u" WHERE "_s + serie.condicion + u" ORDER BY "_s +
                    paso + (bajando ? u" DESC"_s : QString()) + u" LIMIT 1 OFFSET ?) ORDER BY "_s +
                    paso + sentido + u" LIMIT ?"_s,
                {desdeElFinal ? filas - 1 - primera : primera, kFilasPagina});
            const qsizetype porFila = columnas() + 1;
            p.filas.resize(size_t(celdas.size() / porFila));
            for (size_t i = 0; i < p.filas.size(); ++i) {
                p.filas[i].clave = celdas.at(qsizetype(i) * porFila).toLongLong();
                p.filas[i].celdas = celdas.mid(qsizetype(i) * porFila + 1, columnas());
            }
        } catch (const ErrorBD&) {
            // Shown empty, like a page of the order that can't be read.
        }
        if (m_cola.size() >= 2) m_cola.pop_back();
        it = m_cola.insert(m_cola.begin(), std::move(p));
    }
    const size_t i = size_t(k - numero * kFilasPagina);
    return i < it->filas.size() ? &it->filas[i] : nullptr;
}

void ListaPaginada::ordenar(int columna, bool descendente) {
    vaciarPaginas();
    if (m_filasCola > 0 && (!m_def.asentarCola || m_def.asentarCola())) {
        m_filas += m_filasCola;
        m_filasCola = 0;
        m_cola.clear();
        m_corridas.clear();
    }
    columna = columna >= 0 && columna < columnas() ? columna : -1;
    if (columna != m_columna) {
        m_anterior = m_columna;
        m_anteriorDescendente = m_descendente;
    }
    m_columna = columna;
    m_descendente = descendente;
}

bool ListaPaginada::indexada(int columna) const {
    const Columna& c = m_def.columnas.at(columna);
    return !c.orden.isEmpty() && !c.sinIndice;
}

bool ListaPaginada::porIndice() const {
    return m_columna < 0 || indexada(m_columna);
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
                                 const QVariantList& orden, int64_t clave) {
    // (a after x) OR (a IS x AND (b after y OR (b IS y AND ...))), down to
    // the row's number, which no two rows share. Nulls come first going
    // up and last going down, as the engine sorts them.
    QString sql;
    QVariantList valores;
    for (qsizetype i = t.size() - 1; i >= 0; --i) {
        const QString& a = t.at(i).sql;
        const bool baja = t.at(i).descendente;
        const QVariant v = i == t.size() - 1 ? QVariant(qlonglong(clave)) : orden.value(i);
        QString mayor;
        QVariantList conV;
        if (v.isNull()) {
            mayor = baja ? u"0"_s : QString(a + u" IS NOT NULL"_s);
        } else {
            mayor = baja ? QString(u"("_s + a + u" < ? OR "_s + a + u" IS NULL)"_s)
                         : QString(a + u" > ?"_s);
            conV = {v};
        }
        if (sql.isEmpty()) {
            sql = mayor;
            valores = conV;
        } else {
            sql = u"("_s + mayor + u" OR ("_s + a + u" IS ? AND "_s + sql + u"))"_s;
            valores = conV + QVariantList{v} + valores;
        }
    }
    params += valores;
    return sql;
}

QVariantList ListaPaginada::comoValores(const QVector<QString>& textos) {
    QVariantList v;
    v.reserve(textos.size());
    for (const QString& t : textos) v.append(t);
    return v;
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
    Conexion().recorrer(
        u"SELECT "_s + m_def.clave + u' ' + desdeDonde(m_def.clave + u" <= ?"_s) + ordenSql(),
        {qlonglong(m_tope)}, [&](sqlite3_stmt* s) {
            orden.push_back(sqlite3_column_int64(s, 0));
            return true;
        });
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
    if (m_def.estable && m_anterior >= 0) return indexada(m_anterior);
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
    if (grupo.filas < 0) {
        QVariantList params;
        const QString donde = condicionGrupo(porClave, grupo.claves, true, params);
        params << std::max(umbral, kFilasDirectas) + 1;
        grupo.filas = int(
            Conexion()
                .query(u"SELECT count(*) FROM (SELECT 1 "_s + desdeDonde(donde) + u" LIMIT ?)"_s,
                       params)
                .value(0, 0)
                .toLongLong());
    }
    // A large group no index orders is sorted over stretches of the table.
    const bool ordena = !recorrerOrden && grupo.filas > kFilasDirectas;
    const QVector<Termino> resto = terminos().mid(1);
    QVariantList params;
    QString donde = condicionGrupo(porClave, grupo.claves,
                                   !(recorrerOrden && grupo.filas > umbral) && !ordena, params) +
                    u" AND +"_s + m_def.clave + u" <= ?"_s;
    params << qlonglong(m_tope);
    if (ancla)
        donde +=
            u" AND "_s + despuesDe(params, resto, comoValores(ancla->orden.mid(1)), ancla->clave);
    return leerClavesOrdenadas(donde, resto, params, limite, 0, ordena);
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
    Conexion().recorrer(
        u"SELECT "_s + m_def.porClave.clave + u", "_s + m_def.clave + u' ' +
            desdeDonde(u"+"_s + m_def.clave + u" <= ?"_s) + ordenSql(terminos().mid(1)),
        {qlonglong(m_tope)}, [&](sqlite3_stmt* s) {
            const auto* t = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
            const auto g = grupoDe.constFind(QString::fromUtf8(t, sqlite3_column_bytes(s, 0)));
            if (g != grupoDe.cend()) porGrupo[*g].push_back(sqlite3_column_int64(s, 1));
            return true;
        });
    std::vector<int64_t> orden;
    orden.reserve(size_t(m_filas));
    for (const std::vector<int64_t>& g : porGrupo) orden.insert(orden.end(), g.begin(), g.end());
    m_orden = std::move(orden);
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerPorClave(const int64_t* claves,
                                                             size_t n) const {
    // One statement for the page.
    std::vector<Fila> leidas = leerFilas(enLista(m_def.clave), QString(), {listaJson(claves, n)});
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

namespace {
// Runs `leer` with the engine stopped at `plazo`: nullopt when it was.
template <class F>
auto antesDe(QDeadlineTimer plazo, F leer) -> std::optional<decltype(leer())> {
    sqlite3* h = Conexion().handle();
    // Closed, or in another thread's hands: `leer` fails as such.
    if (!h) return leer();
    struct Estado {
        QDeadlineTimer plazo;
        bool parada = false;
    } e{plazo};
    const auto mirar = [](void* p) {
        auto* e = static_cast<Estado*>(p);
        e->parada = e->plazo.hasExpired();
        return e->parada ? 1 : 0;
    };
    // Whatever way `leer` ends, the handler goes with it.
    struct Vigia {
        sqlite3* h;
        ~Vigia() { sqlite3_progress_handler(h, 0, nullptr, nullptr); }
    } vigia{h};
    sqlite3_progress_handler(h, 1000, mirar, &e);
    try {
        return leer();
    } catch (const ErrorBD&) {
        if (e.parada) return std::nullopt;
        throw;
    }
}
}  // namespace

QString ListaPaginada::despuesDeFila(QVariantList& params, const QVector<Termino>& t,
                                     int64_t clave) const {
    QString valores = u"SELECT "_s + m_def.clave;
    for (qsizetype i = 0; i + 1 < t.size(); ++i) valores += u", "_s + t.at(i).sql;
    const QVector<QString> v = Conexion().queryTexts(
        valores + u' ' + desdeDonde(m_def.clave + u" = ?"_s), {qlonglong(clave)});
    return v.isEmpty() ? QString() : despuesDe(params, t, comoValores(v.mid(1)), clave);
}

int64_t ListaPaginada::menorClave() const {
    return Conexion()
        .query(u"SELECT min("_s + m_def.clave + u") "_s + m_def.desde)
        .value(0, 0)
        .toLongLong();
}

std::vector<int64_t> ListaPaginada::leerClavesOrdenadas(const QString& donde,
                                                        const QVector<Termino>& t,
                                                        QVariantList params, int limite, int saltar,
                                                        bool ordena) const {
    const QString orden = ordenSql(t);
    const auto deUnaVez = [&] {
        return leerClaves(donde, orden + u" LIMIT ? OFFSET ?"_s,
                          params + QVariantList{limite, saltar});
    };
    if (!ordena || m_filas <= kFilasDirectas) return deUnaVez();
    QString llave = donde + orden + u'|' + QString::number(limite) + u'|' + QString::number(saltar);
    for (const QVariant& p : std::as_const(params)) llave += u'|' + p.toString();
    Tramos& tr = m_tramos[llave];
    if (!tr.empezado) {
        // A reader that waits, or a sort that ends soon (few rows equal on
        // an index), is done in one statement.
        if (m_plazo.isForever()) return deUnaVez();
        if (std::optional<std::vector<int64_t>> r = antesDe(m_plazo, deUnaVez)) return *r;
        tr.empezado = true;
        tr.desde = menorClave();
    }
    // The first rows of the whole are among the first of each stretch:
    // each stretch sorts only its own rows, and the turn can end between
    // two of them. The last row that can still make the page bounds the
    // next stretches, so that they sort only the rows before it.
    const size_t quiero = size_t(limite) + size_t(saltar);
    const auto entreCandidatas = [&](int lim, int salto) {
        return leerClaves(enLista(m_def.clave), orden + u" LIMIT ? OFFSET ?"_s,
                          {listaJson(tr.candidatas.data(), tr.candidatas.size()), lim, salto});
    };
    const QString enTramo =
        (donde.isEmpty() ? QString() : donde + u" AND "_s) + m_def.clave + u" BETWEEN ? AND ?"_s;
    while (tr.desde <= m_tope) {
        const int64_t hasta = std::min<int64_t>(m_tope, tr.desde + tr.largo - 1);
        QElapsedTimer reloj;
        reloj.start();
        QVariantList p = params + QVariantList{qlonglong(tr.desde), qlonglong(hasta)};
        QString sql = enTramo;
        if (!tr.corte.isEmpty()) {
            // Rows the bound can't place (a null) are kept: the last sort
            // places them.
            sql += u" AND ("_s + tr.corte + u") IS NOT TRUE"_s;
            p += tr.parametrosCorte;
        }
        const std::vector<int64_t> k =
            leerClaves(sql, orden + u" LIMIT ?"_s, p + QVariantList{qlonglong(quiero)});
        tr.candidatas.insert(tr.candidatas.end(), k.begin(), k.end());
        if (tr.candidatas.size() >= quiero &&
            (tr.corte.isEmpty() || tr.candidatas.size() >= 2 * quiero)) {
            tr.candidatas = entreCandidatas(int(quiero), 0);
            tr.parametrosCorte.clear();
            tr.corte = despuesDeFila(tr.parametrosCorte, t, tr.candidatas.back());
        }
        tr.largo = siguienteLargo(tr.largo, reloj.elapsed());
        tr.desde = hasta + 1;
        if (tr.desde <= m_tope && m_plazo.hasExpired()) throw Pendiente{};
    }
    return entreCandidatas(limite, saltar);
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerPagina(int numero, size_t& grupo) const {
    const QString hastaTope = m_def.clave + u" <= ?"_s;
    if (porIndice()) {
        // Skipping rows on the index walks each of them: a few pages in
        // one statement, farther in a long list over stretches.
        if (m_def.filtroPorFila && terminos().size() <= 2) return leerPaginaFiltrada(numero);
        if (numero > kSaltoCorto && m_filas > kFilasDirectas) return leerPaginaLejos(numero);
        // The unary plus keeps the engine from walking the table by its
        // key instead of the index.
        const QVariantList params{qlonglong(m_tope), kFilasPagina,
                                  qlonglong(numero) * kFilasPagina};
        const QString resto = ordenSql() + u" LIMIT ? OFFSET ?"_s;
        if (terminos().size() <= 2) return leerFilas(u"+"_s + hastaTope, resto, params);
        // Rows equal on the index are sorted by the other terms, a block
        // of them at a time: that sort carries their numbers alone.
        const std::vector<int64_t> claves = m_filas > kFilasDirectas
                                                ? leerHastaBloque(numero)
                                                : leerClaves(u"+"_s + hastaTope, resto, params);
        return leerPorClave(claves.data(), claves.size());
    }
    if (m_orden.empty() && enVentana(numero)) {
        grupo = kSinAncla;
        return leerDeVentana(numero);
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
                donde += u" AND "_s +
                         despuesDe(params, terminos(), comoValores(ancla->orden), ancla->clave);
            claves = leerClavesOrdenadas(donde, terminos(), params, kFilasPagina, saltar, true);
        }
        return leerPorClave(claves.data(), claves.size());
    }
    if (m_orden.empty() && !m_plazo.isForever() && m_filas > kFilasDirectas) {
        Ambito todo;
        todo.t = terminos();
        todo.filas = m_filas;
        const Ambito ambito = porGrupos() ? ambitoDeGrupo(numero).value_or(todo) : todo;
        if (leerVentana(numero, ambito)) {
            grupo = kSinAncla;
            return leerDeVentana(numero);
        }
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

QVector<ListaPaginada::Parte> ListaPaginada::partesDespues(const Marca* desde) const {
    const QVector<Termino> t = terminos();
    const Termino& a = t.first();
    // The row's number alone: never null.
    if (t.size() == 1)
        return {{desde ? a.sql + (a.descendente ? u" < ?"_s : u" > ?"_s) : QString(),
                 desde ? QVariantList{qlonglong(desde->clave)} : QVariantList()}};
    // Nulls stand first going up, last going down.
    const Parte nulos{a.sql + u" IS NULL"_s, {}};
    const Parte valores{a.sql + u" IS NOT NULL"_s, {}};
    if (!desde)
        return a.descendente ? QVector<Parte>{valores, nulos} : QVector<Parte>{nulos, valores};
    // What is left of its block of equal values, found on the index by
    // that value; then the blocks after it. One condition with an OR in
    // it would have the engine walk the index from its start.
    const QVariant& v = desde->valores.value(0);
    QVector<Parte> partes(1);
    partes[0].params = {v};
    partes[0].donde = a.sql + u" IS ? AND "_s +
                      despuesDe(partes[0].params, t.mid(1), desde->valores.mid(1), desde->clave);
    if (v.isNull()) {
        if (!a.descendente) partes.append(valores);
    } else {
        partes.append({a.sql + (a.descendente ? u" < ?"_s : u" > ?"_s), {v}});
        if (a.descendente) partes.append(nulos);
    }
    return partes;
}

QString ListaPaginada::hastaTope(const Parte& parte) const {
    // The unary plus keeps the engine on the order's index.
    return u"+"_s + m_def.clave + u" <= ?"_s +
           (parte.donde.isEmpty() ? QString() : u" AND "_s + parte.donde);
}

QVariantList ListaPaginada::parametrosHastaTope(const Parte& parte) const {
    return QVariantList{qlonglong(m_tope)} + parte.params;
}

std::optional<ListaPaginada::Marca> ListaPaginada::saltarFilas(const Marca* desde,
                                                               int64_t filas) const {
    const QVector<Termino> t = terminos();
    const auto conTope = [&](const Parte& parte, const QVariant& ultimo) {
        return parametrosHastaTope(parte) + QVariantList{ultimo};
    };
    // The row `n` rows into a part, in the whole order.
    const auto filaEn = [&](const Parte& parte, int64_t n) -> std::optional<Marca> {
        QString valores = u"SELECT "_s + m_def.clave;
        for (qsizetype i = 0; i + 1 < t.size(); ++i) valores += u", "_s + t.at(i).sql;
        const ResultadoConsulta r = Conexion().query(
            valores + u' ' + desdeDonde(hastaTope(parte)) + ordenSql(t) + u" LIMIT 1 OFFSET ?"_s,
            conTope(parte, qlonglong(n - 1)));
        if (r.isEmpty()) return std::nullopt;
        Marca m;
        m.clave = r.value(0, 0).toLongLong();
        for (qsizetype i = 0; i + 1 < t.size(); ++i) m.valores.append(r.value(0, int(i) + 1));
        return m;
    };
    // Its rows, up to `n`.
    const auto contarEn = [&](const Parte& parte, int64_t n) {
        return Conexion()
            .query(u"SELECT count(*) FROM (SELECT 1 "_s + desdeDonde(hastaTope(parte)) +
                       u" LIMIT ?)"_s,
                   conTope(parte, qlonglong(n)))
            .value(0, 0)
            .toLongLong();
    };
    // Where the index doesn't give the whole order, each of its blocks of
    // equal values is sorted: the rows are skipped on the index alone, and
    // only the block the stretch ends in is sorted, to find the row.
    const bool porBloques = t.size() > 2;
    const Termino& a = t.first();
    const QVector<Parte> partes = partesDespues(desde);
    for (qsizetype i = 0; i < partes.size(); ++i) {
        const Parte& parte = partes.at(i);
        // What is left of a marked row's block is sorted whole.
        if (!porBloques || (desde && i == 0)) {
            if (std::optional<Marca> m = filaEn(parte, filas)) return m;
        } else {
            const ResultadoConsulta r =
                Conexion().query(u"SELECT "_s + a.sql + u' ' + desdeDonde(hastaTope(parte)) +
                                     ordenSql({a}) + u" LIMIT 1 OFFSET ?"_s,
                                 conTope(parte, qlonglong(filas - 1)));
            if (!r.isEmpty()) {
                // Its blocks before that value are counted (none before
                // the nulls), then that block is sorted.
                const QVariant w = r.value(0, 0);
                const Parte antes{
                    parte.donde + u" AND "_s + a.sql + (a.descendente ? u" > ?"_s : u" < ?"_s),
                    parte.params + QVariantList{w}};
                return filaEn({a.sql + u" IS ?"_s, {w}}, filas - contarEn(antes, filas));
            }
        }
        // The part ends before that row: the rest is skipped in the next.
        filas -= contarEn(parte, filas);
    }
    return std::nullopt;
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerPaginaLejos(int numero) const {
    // From the nearest marked page before it, or from the start.
    const Marca* marca = nullptr;
    int siguiente = 0;
    if (auto m = m_marcas.lower_bound(numero); m != m_marcas.begin()) {
        --m;
        marca = &m->second;
        siguiente = m->first + 1;
    }
    while (siguiente < numero) {
        const int64_t porPaso = std::max<int64_t>(1, m_pasoMarcas / kFilasPagina);
        const int paginas = int(std::min<int64_t>(porPaso, numero - siguiente));
        QElapsedTimer reloj;
        reloj.start();
        const std::optional<Marca> fin = saltarFilas(marca, int64_t(paginas) * kFilasPagina);
        // Rows deleted since the count: the page is past the end now.
        if (!fin) return {};
        siguiente += paginas;
        marca = &(m_marcas[siguiente - 1] = *fin);
        // A stretch cut short by the page wanted tells only of its own
        // length; no stretch need be longer than the list.
        const int64_t largo = paginas < porPaso ? int64_t(paginas) * kFilasPagina : m_pasoMarcas;
        m_pasoMarcas = std::min<int64_t>(siguienteLargo(largo, reloj.elapsed()),
                                         std::max<int64_t>(m_filas, kPrimerPaso));
        if (siguiente < numero && m_plazo.hasExpired()) throw Pendiente{};
    }
    // The page itself: its rows whole in an index's order of two terms;
    // more are sorted by their numbers alone, as a page near the start.
    const bool directas = terminos().size() <= 2;
    std::vector<Fila> filas;
    std::vector<int64_t> claves;
    for (const Parte& parte : partesDespues(marca)) {
        const int faltan = kFilasPagina - int(directas ? filas.size() : claves.size());
        if (faltan <= 0) break;
        const QVariantList params = parametrosHastaTope(parte) + QVariantList{faltan};
        const QString resto = ordenSql() + u" LIMIT ?"_s;
        if (directas) {
            std::vector<Fila> f = leerFilas(hastaTope(parte), resto, params);
            std::move(f.begin(), f.end(), std::back_inserter(filas));
        } else {
            const std::vector<int64_t> k = leerClaves(hastaTope(parte), resto, params);
            claves.insert(claves.end(), k.begin(), k.end());
        }
    }
    return directas ? filas : leerPorClave(claves.data(), claves.size());
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerPaginaFiltrada(int numero) const {
    Recorrido& r = m_recorrido;
    // From where the last turn stopped, or the nearest marked page.
    const Marca* desde = &r.pos;
    if (r.numero != numero) {
        r = {};
        r.numero = numero;
        desde = nullptr;
        if (auto m = m_marcas.lower_bound(numero); m != m_marcas.begin()) {
            --m;
            desde = &m->second;
            r.pagina = m->first + 1;
        }
    }
    const QVector<Termino> t = terminos();
    QString valores = u"SELECT "_s + m_def.clave;
    for (qsizetype i = 0; i + 1 < t.size(); ++i) valores += u", "_s + t.at(i).sql;
    const int columnaFiltro = int(t.size());
    valores +=
        u", CASE WHEN ("_s + m_def.filtro + u") THEN 1 ELSE 0 END "_s + m_def.desde + u" WHERE "_s;
    const auto marcaDe = [&](sqlite3_stmt* s) {
        Marca m;
        m.clave = sqlite3_column_int64(s, 0);
        for (int i = 1; i < columnaFiltro; ++i) m.valores.append(BaseDatos::valorDe(s, i));
        return m;
    };
    bool llena = false, cortada = false;
    int64_t andadas = 0;
    // A walk that failed starts again from a mark.
    auto olvidar = qScopeGuard([&r] { r = {}; });
    // Each part's rows in order, the list's and the others alike.
    for (const Parte& parte : partesDespues(desde)) {
        Conexion().recorrer(valores + hastaTope(parte) + ordenSql(t), parametrosHastaTope(parte),
                            [&](sqlite3_stmt* s) {
                                if (sqlite3_column_int(s, columnaFiltro)) {
                                    if (r.pagina == numero)
                                        r.claves.push_back(sqlite3_column_int64(s, 0));
                                    if (++r.enPagina == kFilasPagina) {
                                        m_marcas[r.pagina] = marcaDe(s);
                                        if (r.pagina == numero) {
                                            llena = true;
                                            return false;
                                        }
                                        ++r.pagina;
                                        r.enPagina = 0;
                                    }
                                }
                                // The clock is read now and then: it costs more than a row.
                                if (++andadas % 256 == 0 && m_plazo.hasExpired()) {
                                    r.pos = marcaDe(s);
                                    cortada = true;
                                    return false;
                                }
                                return true;
                            });
        if (llena || cortada) break;
    }
    if (cortada) {
        olvidar.dismiss();
        throw Pendiente{};
    }
    // Full, or the list ended in it (or before it: rows deleted since).
    const std::vector<int64_t> claves = std::move(r.claves);
    return leerPorClave(claves.data(), claves.size());
}

bool ListaPaginada::enVentana(int numero) const {
    const int64_t desde = int64_t(numero) * kFilasPagina;
    const int64_t fin = m_ventana.inicio + int64_t(m_ventana.claves.size());
    return m_ventana.inicio >= 0 && m_ventana.inicio <= desde &&
           (desde + kFilasPagina <= fin || (fin >= m_filas && desde < fin));
}

std::vector<ListaPaginada::Fila> ListaPaginada::leerDeVentana(int numero) const {
    const size_t desde = size_t(int64_t(numero) * kFilasPagina - m_ventana.inicio);
    const size_t n = std::min(m_ventana.claves.size() - desde, size_t(kFilasPagina));
    return leerPorClave(m_ventana.claves.data() + desde, n);
}

namespace {
// The numbers of a JSON array of them.
std::vector<int64_t> numerosJson(const QString& json) {
    std::vector<int64_t> r;
    for (const QStringView n : QStringView(json).mid(1, json.size() - 2).split(u',')) {
        bool bien = false;
        const qlonglong v = n.trimmed().toLongLong(&bien);
        if (bien) r.push_back(v);
    }
    return r;
}
}  // namespace

std::optional<ListaPaginada::Ambito> ListaPaginada::ambitoDeGrupo(int numero) const {
    // The groups before it are counted on the key's index, one a turn at
    // least; inside the group the order is that of the other terms.
    grupos();
    const int64_t primera = int64_t(numero) * kFilasPagina;
    int64_t base = 0;
    for (size_t g = 0; g < m_grupos.size(); ++g) {
        Grupo& grupo = m_grupos[g];
        if (grupo.todas < 0) {
            if (m_plazo.hasExpired()) throw Pendiente{};
            QVariantList params;
            const QString donde = condicionGrupo(m_def.porClave.clave, grupo.claves, true, params) +
                                  u" AND +"_s + m_def.clave + u" <= ?"_s;
            grupo.todas = Conexion()
                              .query(u"SELECT count(*) "_s + desdeDonde(donde),
                                     params + QVariantList{qlonglong(m_tope)})
                              .value(0, 0)
                              .toLongLong();
        }
        if (primera < base + grupo.todas) {
            Ambito a;
            a.donde = condicionGrupo(m_def.porClave.clave, grupo.claves, false, a.params);
            a.t = terminos().mid(1);
            a.filas = grupo.todas;
            a.base = base;
            // A page across two groups ends with the next one's first rows.
            if (primera + kFilasPagina > base + grupo.todas && g + 1 < m_grupos.size()) {
                a.siguiente = condicionGrupo(m_def.porClave.clave, m_grupos[g + 1].claves, false,
                                             a.parametrosSiguiente);
                a.cola = int(primera + kFilasPagina - base - grupo.todas);
            }
            return a;
        }
        base += grupo.todas;
    }
    return std::nullopt;
}

std::vector<int64_t> ListaPaginada::leerCola(const Ambito& ambito) const {
    if (ambito.cola <= 0) return {};
    return leerClavesOrdenadas(ambito.siguiente + u" AND +"_s + m_def.clave + u" <= ?"_s, ambito.t,
                               ambito.parametrosSiguiente + QVariantList{qlonglong(m_tope)},
                               ambito.cola, 0, true);
}

bool ListaPaginada::leerVentana(int numero, const Ambito& ambito) const {
    // A jump far into a text order reads the rows about where the page
    // falls, not the whole order: a sample of the rows, sorted, gives two
    // rows that the page lies between, most surely; one pass over
    // stretches counts the rows before the first and keeps those between.
    // The same again among those kept, until they are few enough to sort.
    Salto& s = m_salto;
    if (s.numero != numero) {
        s = {};
        s.numero = numero;
    }
    // The next group's first rows come first: what their stretches found
    // is kept between turns, and the rounds below must not start again.
    const std::vector<int64_t> cola = leerCola(ambito);
    const QVector<Termino>& t = ambito.t;
    const QString hastaTope =
        m_def.clave + u" <= ?"_s + (ambito.donde.isEmpty() ? QString() : u" AND "_s + ambito.donde);
    const QVariantList tope = QVariantList{qlonglong(m_tope)} + ambito.params;
    const QString enVentanaSql = enLista(m_def.clave);
    const int64_t primera = int64_t(numero) * kFilasPagina - ambito.base;
    for (;;) {
        // Rows of this round's source: the list, or those kept before.
        const int64_t filas = s.enTabla ? ambito.filas : int64_t(s.fuente.size());
        const int64_t objetivo = primera - s.antes;
        if (!s.listo) {
            // Drawn at random: rows at even steps would follow whatever
            // repeats in the order the rows were written.
            std::mt19937_64 azar(uint64_t(numero) * 7919 + uint64_t(s.fuente.size()));
            std::vector<int64_t> puntos;
            if (s.enTabla) {
                s.desde = menorClave();
                std::uniform_int_distribution<int64_t> fila(s.desde, std::max(s.desde, m_tope));
                // As many more as the rows looked among are fewer than the
                // list's (one group of keys).
                const int64_t n = std::min<int64_t>(
                    kMuestras * 10, kMuestras * std::max(m_filas, 1) / std::max<int64_t>(filas, 1));
                for (int64_t i = 0; i < n; ++i) puntos.push_back(fila(azar));
            } else {
                s.desde = 0;
                std::uniform_int_distribution<size_t> fila(0, s.fuente.size() - 1);
                for (int i = 0; i < kMuestras; ++i) puntos.push_back(s.fuente[fila(azar)]);
            }
            const std::vector<int64_t> muestra =
                leerClaves(enVentanaSql + u" AND "_s + hastaTope, ordenSql(t),
                           QVariantList{listaJson(puntos.data(), puntos.size())} + tope);
            if (muestra.size() < 2) return false;
            // Where the page falls in the sample, give or take three
            // times its spread.
            const double m = double(muestra.size());
            const double p = double(objetivo) * m / double(std::max<int64_t>(filas, 1));
            const double margen = 3 * std::sqrt(std::max(1.0, p * (1 - p / m))) + 1;
            const auto a = qint64(std::floor(p - margen));
            const auto b = qint64(
                std::ceil(p + kFilasPagina * m / double(std::max<int64_t>(filas, 1)) + margen));
            s.corte.clear();
            s.techo.clear();
            s.parametrosCorte.clear();
            s.parametrosTecho.clear();
            // The page beyond the sample: the list changed under the count.
            if (a >= qint64(muestra.size())) return false;
            if (a >= 0) s.corte = despuesDeFila(s.parametrosCorte, t, muestra.at(size_t(a)));
            if (b < qint64(muestra.size()))
                s.techo = despuesDeFila(s.parametrosTecho, t, muestra.at(size_t(b)));
            s.listo = true;
        }
        // Rows after the first sampled row go on; those up to it are
        // counted.
        const QString sigue = s.corte.isEmpty() ? u"1"_s : u"coalesce(("_s + s.corte + u"), 0)"_s;
        const QString sql =
            u"SELECT count(*) FILTER (WHERE NOT d), json_group_array(k) FILTER (WHERE d) FROM "
            u"(SELECT "_s +
            m_def.clave + u" AS k, "_s + sigue + u" AS d "_s +
            desdeDonde(
                hastaTope + u" AND "_s +
                (s.enTabla ? m_def.clave + u" BETWEEN ? AND ?"_s : enVentanaSql) +
                (s.techo.isEmpty() ? QString() : u" AND ("_s + s.techo + u") IS NOT TRUE"_s)) +
            u')';
        const int64_t fin = s.enTabla ? m_tope + 1 : int64_t(s.fuente.size());
        while (s.desde < fin) {
            const int64_t hasta = std::min<int64_t>(fin, s.desde + s.largo);
            QElapsedTimer reloj;
            reloj.start();
            QVariantList params = s.parametrosCorte + tope;
            if (s.enTabla)
                params << qlonglong(s.desde) << qlonglong(hasta - 1);
            else
                params << listaJson(s.fuente.data() + s.desde, size_t(hasta - s.desde));
            const ResultadoConsulta r = Conexion().query(sql, params + s.parametrosTecho);
            s.antesRonda += r.value(0, 0).toLongLong();
            const std::vector<int64_t> k = numerosJson(r.value(0, 1).toString());
            s.ventana.insert(s.ventana.end(), k.begin(), k.end());
            s.largo = siguienteLargo(s.largo, reloj.elapsed());
            s.desde = hasta;
            if (s.desde < fin && m_plazo.hasExpired()) throw Pendiente{};
        }
        // The sample misled (rarely): the whole order is read instead.
        const int64_t hastaVentana = s.antesRonda + int64_t(s.ventana.size());
        if (s.antesRonda > objetivo ||
            (!s.techo.isEmpty() && hastaVentana < std::min(objetivo + kFilasPagina, filas)))
            return false;
        s.antes += s.antesRonda;
        s.antesRonda = 0;
        const bool acotada = !s.corte.isEmpty() || !s.techo.isEmpty();
        if (s.ventana.size() <= size_t(kVentanaMax) || !acotada) break;
        s.fuente = std::move(s.ventana);
        s.ventana = {};
        s.enTabla = false;
        s.listo = false;
        s.largo = 4096;
    }
    m_ventana.inicio = ambito.base + s.antes;
    m_ventana.claves =
        leerClaves(enVentanaSql, ordenSql(t), {listaJson(s.ventana.data(), s.ventana.size())});
    m_ventana.claves.insert(m_ventana.claves.end(), cola.begin(), cola.end());
    s = {};
    return enVentana(numero);
}

std::vector<int64_t> ListaPaginada::leerHastaBloque(int numero) const {
    // The rows up to this page's last are those the index puts before the
    // value it ends in, a few, and the first of that value's block, which
    // may be the whole list: that block alone is sorted, over stretches.
    const QVector<Termino> t = terminos();
    const Termino& indice = t.first();
    const int quiero = (numero + 1) * kFilasPagina;
    const QString hastaTope = u"+"_s + m_def.clave + u" <= ?"_s;
    const ResultadoConsulta r =
        Conexion().query(u"SELECT "_s + indice.sql + u' ' + desdeDonde(hastaTope) +
                             ordenSql({indice}) + u" LIMIT 1 OFFSET ?"_s,
                         {qlonglong(m_tope), quiero - 1});
    const QVariant valor = r.isEmpty() ? QVariant() : r.value(0, 0);
    if (valor.isNull())
        return leerClavesOrdenadas(hastaTope, t, {qlonglong(m_tope)}, kFilasPagina,
                                   numero * kFilasPagina, true);
    std::vector<int64_t> claves = leerClaves(
        hastaTope + u" AND "_s + indice.sql + (indice.descendente ? u" > ?"_s : u" < ?"_s),
        ordenSql(t), {qlonglong(m_tope), valor});
    const std::vector<int64_t> bloque =
        leerClavesOrdenadas(hastaTope + u" AND "_s + indice.sql + u" = ?"_s, t.mid(1),
                            {qlonglong(m_tope), valor}, quiero - int(claves.size()), 0, true);
    claves.insert(claves.end(), bloque.begin(), bloque.end());
    claves.erase(claves.begin(),
                 claves.begin() + std::min(claves.size(), size_t(numero) * kFilasPagina));
    return claves;
}

const ListaPaginada::Pagina* ListaPaginada::pagina(int numero) const {
    for (const Pagina& p : m_paginas)
        if (p.numero == numero) return &p;
    return nullptr;
}

bool ListaPaginada::leerPaginaAntesDe(int numero, QDeadlineTimer plazo) const {
    // The connection comes back within a few turns: read then.
    if (Conexion().enOtroHilo()) return false;
    m_plazo = plazo;
    Pagina p{numero, {}};
    size_t grupo = 0;
    try {
        p.filas = leerPagina(numero, grupo);
    } catch (const Pendiente&) {
        return false;
    } catch (const std::exception&) {
        // The rows show empty (an ErrorBD, or worse), and the page is kept
        // so that painting doesn't ask the engine again. No log line: it
        // would give the event loop a turn in the middle of painting.
    }
    m_tramos.clear();
    // A page of a jump's run doesn't know the group of keys it ended in:
    // the next page is looked for in the run, or by a jump of its own.
    if (!porIndice() && !p.filas.empty() && !(grupo == kSinAncla && porGrupos())) {
        const Fila& ultima = p.filas.back();
        m_anclas[numero] = {ultima.orden, ultima.clave, grupo};
    }
    if (m_paginas.size() >= kPaginasGuardadas) m_paginas.pop_back();
    m_paginas.insert(m_paginas.begin(), std::move(p));
    return true;
}

void ListaPaginada::seguirLeyendo() const {
    if (m_turnoProgramado) return;
    m_turnoProgramado = true;
    // A timer, not a zero delay: a chain of posted events would keep the
    // program's own timers (and the window's) waiting.
    QTimer::singleShot(1, QCoreApplication::instance(), [this, vida = std::weak_ptr<char>(m_vida)] {
        if (vida.expired()) return;
        m_turnoProgramado = false;
        m_turnoGastado = false;
        if (m_leyendo < 0) return;
        const int numero = m_leyendo;
        // Read meanwhile by a reader that waited for it.
        if (!pagina(numero) && !leerPaginaAntesDe(numero, QDeadlineTimer(kTurnoMs))) {
            seguirLeyendo();
            return;
        }
        m_leyendo = -1;
        while (!m_enEspera.empty() && m_leyendo < 0) {
            if (!pagina(m_enEspera.front())) m_leyendo = m_enEspera.front();
            m_enEspera.erase(m_enEspera.begin());
        }
        if (m_leyendo >= 0) seguirLeyendo();
        const int primera = numero * kFilasPagina;
        if (m_alLlegar) m_alLlegar(primera, std::min(m_filas, primera + kFilasPagina) - 1);
    });
}

const ListaPaginada::Fila* ListaPaginada::fila(int n) const {
    if (n >= m_filas && n < filas()) return filaCola(n - m_filas);
    if (n < 0 || n >= m_filas) return nullptr;
    const int numero = n / kFilasPagina;
    const Pagina* p = pagina(numero);
    if (!p && m_sinEsperar && m_filas > kFilasDirectas) {
        // A paint reads for a few milliseconds at most: the pages it asks
        // for once that is spent, or while one is read over turns, wait
        // their turn.
        if (m_leyendo >= 0 || m_turnoGastado) {
            if (m_leyendo < 0)
                m_leyendo = numero;
            else if (m_leyendo != numero &&
                     std::find(m_enEspera.begin(), m_enEspera.end(), numero) == m_enEspera.end()) {
                m_enEspera.push_back(numero);
                // A view shows two pages at most: those asked for before
                // were scrolled past, and are read if shown again.
                if (m_enEspera.size() > 2) m_enEspera.erase(m_enEspera.begin());
            }
            seguirLeyendo();
            return nullptr;
        }
        QElapsedTimer reloj;
        reloj.start();
        const bool leida = leerPaginaAntesDe(numero, QDeadlineTimer(kPrimerTurnoMs));
        if (!leida) m_leyendo = numero;
        if (!leida || reloj.elapsed() >= kTramoMs) {
            m_turnoGastado = true;
            seguirLeyendo();
        }
        if (!leida) return nullptr;
    } else if (!p) {
        leerPaginaAntesDe(numero, QDeadlineTimer(QDeadlineTimer::Forever));
    }
    p = pagina(numero);
    const size_t k = size_t(n - numero * kFilasPagina);
    return p && k < p->filas.size() ? &p->filas[k] : nullptr;
}

std::optional<QString> ListaPaginada::textoMostrado(int n, int columna) const {
    SinEsperar sinEsperar(m_sinEsperar);
    const Fila* f = fila(n);
    if (!f && n >= 0 && n < m_filas && m_leyendo >= 0 && !pagina(n / kFilasPagina))
        return std::nullopt;
    if (const int k = n - m_filas; !f && k >= 0 && k < m_filasCola) {
        const Corrida& c = m_corridas[corridaDe(k)];
        if (c.lista && c.lista->leyendo() && !c.lista->pagina((k - c.inicio) / kFilasPagina))
            return std::nullopt;
    }
    if (!f || columna < 0 || columna >= f->celdas.size()) return QString();
    const QString& celda = f->celdas.at(columna);
    return m_def.mostrar ? m_def.mostrar(columna, celda) : celda;
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

int ListaPaginada::filaDe(int64_t clave, int cerca) const {
    // The rows after the ordered ones are looked for where they were read.
    for (const PaginaCola& p : m_cola)
        for (size_t k = 0; k < p.filas.size(); ++k)
            if (p.filas[k].clave == clave)
                return m_filas + m_corridas[p.corrida].inicio + p.numero * kFilasPagina + int(k);
    for (const Corrida& c : m_corridas)
        if (c.lista)
            for (const Pagina& p : c.lista->m_paginas)
                for (size_t k = 0; k < p.filas.size(); ++k)
                    if (p.filas[k].clave == clave)
                        return m_filas + c.inicio + p.numero * kFilasPagina + int(k);
    if (clave <= 0 || clave > m_tope) return -1;
    // The page where it stood, and the one before (rows that went before
    // it move it up), are read anyway to paint it.
    for (const int n : {cerca, cerca - kFilasPagina}) {
        if (n < 0 || n >= m_filas || !m_orden.empty()) continue;
        const int numero = n / kFilasPagina;
        fila(n);
        if (!pagina(numero)) return kPorLeer;
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
    // The rows before it are those neither it nor after it.
    QVariantList params{qlonglong(m_tope), qlonglong(clave)};
    const QString despues = despuesDeFila(params, terminos(), clave);
    if (despues.isEmpty()) return -1;
    const ResultadoConsulta r = Conexion().query(
        u"SELECT count(*) "_s +
            desdeDonde(m_def.clave + u" <= ? AND "_s + m_def.clave + u" <> ? AND NOT "_s + despues),
        params);
    return int(r.value(0, 0).toLongLong());
}

std::optional<int> ListaPaginada::filaDeSinEsperar(int64_t clave, int cerca) const {
    SinEsperar sinEsperar(m_sinEsperar);
    const int n = filaDe(clave, cerca);
    if (n == kPorLeer) return std::nullopt;
    return n;
}

#include "history/mdoHistorico.h"

#include "accounts/mdoCuentas.h"
#include "base/Avisos.h"
#include "base/EstadoAplicacion.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Bandeja.h"
#include "db/Conexion.h"

#include <sqlite3.h>

#include <QDate>

#include <algorithm>
#include <iterator>
#include <unordered_map>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPregunta = Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2;

// Rows read at once, and pages kept for scrolling back and forth.
constexpr int kFilasPagina = 1000;
constexpr size_t kPaginasGuardadas = 4;
// A page a few pages past the last one read is reached by skipping rows
// of one bounded sort; farther, the whole order is read once.
constexpr int kSaltoCorto = 4;

// What each row shows, the texts already as the list shows them (a null
// is empty, the account's code stands in for a missing sender); in a
// text order the text is also the sort key.
const QString kColumnasSql =
    u"rowid, Registro, coalesce(Abonado, ''), coalesce(crem, CAST(Canal AS TEXT), ''), "
    u"coalesce(Mensaje, ''), coalesce(Resultado, '')"_s;

QString claveSql(int columna) {
    switch (columna) {
        case Historico::Numero:
            return u"coalesce(Abonado, '')"_s;
        case Historico::Cuenta:
            return u"coalesce(crem, CAST(Canal AS TEXT), '')"_s;
        case Historico::Mensaje:
            return u"coalesce(Mensaje, '')"_s;
        default:
            return u"coalesce(Resultado, '')"_s;
    }
}

// "yyyy-MM-dd HH:mm:ss" (or a bare date) as yyyyMMddhhmmss; 0 for
// anything else.
int64_t fechaDeTexto(QStringView t) {
    const qsizetype n = t.size();
    auto dig = [&](qsizetype desde, int cuantos, int64_t& v) {
        for (qsizetype i = desde; i < desde + cuantos; ++i) {
            if (i >= n || t[i] < u'0' || t[i] > u'9') return false;
            v = v * 10 + (t[i].unicode() - u'0');
        }
        return true;
    };
    int64_t v = 0;
    if (n < 10 || t[4] != u'-' || t[7] != u'-' || !dig(0, 4, v) || !dig(5, 2, v) || !dig(8, 2, v))
        return 0;
    if (n < 19) return v * 1000000;
    if (!dig(11, 2, v) || !dig(14, 2, v) || !dig(17, 2, v)) return 0;
    return v;
}

void dosCifras(char16_t*& p, int64_t v) {
    *p++ = char16_t(u'0' + v / 10 % 10);
    *p++ = char16_t(u'0' + v % 10);
}

// "dd/MM/yyyy hh:mm:ss", the list's form of a date.
QString textoDeFecha(int64_t f) {
    if (f == 0) return QString();
    char16_t b[19];
    char16_t* p = b;
    dosCifras(p, f / 1000000 % 100);
    *p++ = u'/';
    dosCifras(p, f / 100000000 % 100);
    *p++ = u'/';
    dosCifras(p, f / 1000000000000 % 100);
    dosCifras(p, f / 10000000000 % 100);
    *p++ = u' ';
    dosCifras(p, f / 10000 % 100);
    *p++ = u':';
    dosCifras(p, f / 100 % 100);
    *p++ = u':';
    dosCifras(p, f % 100);
    return QString(reinterpret_cast<const QChar*>(b), 19);
}

}  // namespace

QString idDeFecha(int64_t fecha) {
    return fecha == 0 ? QString() : QString::number(fecha);
}

// ---- Historico ---------------------------------------------------------------

void Historico::vaciarPaginas() {
    m_paginas.clear();
    m_anclas.clear();
    m_orden.clear();
    m_orden.shrink_to_fit();
}

void Historico::limpiar() {
    vaciarPaginas();
    m_filas = 0;
    m_tope = 0;
    m_columna = Id;
    m_descendente = true;
}

void Historico::cargar() {
    limpiar();
    BaseDatos& bd = Conexion();
    // The count comes from the date's index, the highest rowid from the
    // table's own key: neither walks the rows.
    m_filas = int(bd.query(u"SELECT count(*) FROM HEnvios"_s).value(0, 0).toLongLong());
    m_tope = bd.query(u"SELECT coalesce(max(rowid), 0) FROM HEnvios"_s).value(0, 0).toLongLong();
}

void Historico::ordenar(int columna, bool descendente) {
    vaciarPaginas();
    m_columna = columna == Enviado ? int(Id) : columna;
    m_descendente = descendente;
}

QString Historico::ordenSql() const {
    const QString dir = m_descendente ? u" DESC"_s : u""_s;
    QString orden = u" ORDER BY "_s;
    if (m_columna == Id)
        orden += u"Registro"_s;
    else
        orden += claveSql(m_columna) + u" COLLATE REGLA_LISTAS"_s;
    return orden + dir + u", rowid"_s + dir;
}

std::vector<Historico::Fila> Historico::leerFilas(const QString& sql,
                                                  const QVariantList& params) const {
    const ResultadoConsulta r = Conexion().query(sql, params);
    std::vector<Fila> filas(size_t(r.recordCount()));
    for (int i = 0; i < r.recordCount(); ++i) {
        Fila& f = filas[size_t(i)];
        f.rowid = r.value(i, 0).toLongLong();
        f.fecha = fechaDeTexto(r.value(i, 1).toString());
        for (int c = 0; c < 4; ++c) f.textos[size_t(c)] = r.value(i, c + 2).toString();
    }
    return filas;
}

void Historico::leerOrdenCompleto() const {
    sqlite3* h = Conexion().handle();
    const QByteArray sql = (u"SELECT rowid FROM HEnvios WHERE rowid <= ?"_s + ordenSql()).toUtf8();
    sqlite3_stmt* s = nullptr;
    if (!h || sqlite3_prepare_v2(h, sql.constData(), -1, &s, nullptr) != SQLITE_OK) {
        sqlite3_finalize(s);
        throw ErrorBD(QString::fromUtf8(h ? sqlite3_errmsg(h) : "Base de datos cerrada"),
                      ErrNum::BaseDatos);
    }
    sqlite3_bind_int64(s, 1, m_tope);
    std::vector<int64_t> orden;
    orden.reserve(size_t(m_filas));
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) orden.push_back(sqlite3_column_int64(s, 0));
    const QString error = QString::fromUtf8(sqlite3_errmsg(h));
    sqlite3_finalize(s);
    if (rc != SQLITE_DONE) throw ErrorBD(error, ErrNum::BaseDatos);
    m_orden = std::move(orden);
}

std::vector<Historico::Fila> Historico::leerPorRowid(const int64_t* ids, size_t n) const {
    // One statement for the page: the rowids go in as one JSON array.
    QString lista = u"["_s;
    for (size_t k = 0; k < n; ++k) {
        if (k) lista += u',';
        lista += QString::number(ids[k]);
    }
    lista += u']';
    std::vector<Fila> leidas =
        leerFilas(u"SELECT "_s + kColumnasSql +
                      u" FROM HEnvios WHERE rowid IN (SELECT value FROM json_each(?))",
                  {lista});
    std::unordered_map<int64_t, size_t> donde;
    donde.reserve(leidas.size());
    for (size_t i = 0; i < leidas.size(); ++i) donde.emplace(leidas[i].rowid, i);
    std::vector<Fila> filas(n);
    for (size_t k = 0; k < n; ++k) {
        const auto it = donde.find(ids[k]);
        // A row deleted meanwhile shows empty rather than shift the rest.
        if (it == donde.end())
            filas[k].rowid = ids[k];
        else
            filas[k] = std::move(leidas[it->second]);
    }
    return filas;
}

std::vector<Historico::Fila> Historico::leerPagina(int numero) const {
    if (m_columna == Id) {
        // The date's index gives the order; skipping rows on it is cheap.
        // The unary plus keeps the engine from walking the table by rowid
        // instead.
        return leerFilas(u"SELECT "_s + kColumnasSql + u" FROM HEnvios WHERE +rowid <= ?" +
                             ordenSql() + u" LIMIT ? OFFSET ?",
                         {qlonglong(m_tope), kFilasPagina, qlonglong(numero) * kFilasPagina});
    }
    // A text order walks the whole table and keeps the rowids of one page;
    // the rows themselves are read after, by rowid.
    std::vector<int64_t> ids;
    const QString select = u"SELECT rowid FROM HEnvios WHERE rowid <= ?"_s;
    auto ancla = m_anclas.lower_bound(numero);
    if (m_orden.empty() && numero == 0) {
        ids = leerRowids(select + ordenSql() + u" LIMIT ?", {qlonglong(m_tope), kFilasPagina});
    } else if (m_orden.empty() && ancla != m_anclas.begin() &&
               numero - std::prev(ancla)->first <= kSaltoCorto) {
        // Go on after the nearest page read before this one.
        --ancla;
        const QString clave = claveSql(m_columna) + u" COLLATE REGLA_LISTAS";
        const QString mayor = m_descendente ? u" < ?"_s : u" > ?"_s;
        ids = leerRowids(select + u" AND (" + clave + mayor + u" OR (" + clave + u" = ? AND rowid" +
                             mayor + u"))" + ordenSql() + u" LIMIT ? OFFSET ?",
                         {qlonglong(m_tope), ancla->second.clave, ancla->second.clave,
                          qlonglong(ancla->second.rowid), kFilasPagina,
                          (numero - ancla->first - 1) * kFilasPagina});
    } else {
        if (m_orden.empty()) leerOrdenCompleto();
        const size_t desde = std::min(m_orden.size(), size_t(numero) * kFilasPagina);
        const size_t hasta = std::min(m_orden.size(), desde + kFilasPagina);
        return leerPorRowid(m_orden.data() + desde, hasta - desde);
    }
    return leerPorRowid(ids.data(), ids.size());
}

std::vector<int64_t> Historico::leerRowids(const QString& sql, const QVariantList& params) const {
    const ResultadoConsulta r = Conexion().query(sql, params);
    std::vector<int64_t> ids(size_t(r.recordCount()));
    for (int i = 0; i < r.recordCount(); ++i) ids[size_t(i)] = r.value(i, 0).toLongLong();
    return ids;
}

const Historico::Fila* Historico::fila(int n) const {
    if (n < 0 || n >= m_filas) return nullptr;
    const int numero = n / kFilasPagina;
    auto it = std::find_if(m_paginas.begin(), m_paginas.end(),
                           [numero](const Pagina& p) { return p.numero == numero; });
    if (it == m_paginas.end()) {
        Pagina p{numero, {}};
        try {
            p.filas = leerPagina(numero);
        } catch (const ErrorBD&) {
            // The rows show empty, and the page is kept so that painting
            // doesn't ask the engine again. No log line: it would give the
            // event loop a turn in the middle of painting.
        }
        if (m_columna != Id && !p.filas.empty()) {
            const Fila& ultima = p.filas.back();
            m_anclas[numero] = {ultima.textos[size_t(m_columna - Numero)], ultima.rowid};
        }
        if (m_paginas.size() >= kPaginasGuardadas) m_paginas.pop_back();
        m_paginas.insert(m_paginas.begin(), std::move(p));
        it = m_paginas.begin();
    }
    const size_t k = size_t(n - numero * kFilasPagina);
    return k < it->filas.size() ? &it->filas[k] : nullptr;
}

QString Historico::texto(int n, int columna) const {
    const Fila* f = fila(n);
    if (!f) return QString();
    switch (columna) {
        case Enviado:
            return textoDeFecha(f->fecha);
        case Id:
            return idDeFecha(f->fecha);
        case Numero:
        case Cuenta:
        case Mensaje:
        case Resultado:
            return f->textos[size_t(columna - Numero)];
        default:
            return QString();
    }
}

// ---- Resend and deletion -----------------------------------------------------

bool msReenviarMensaje(const QString& numero, const QString& mensaje, const QString& fecha) {
    const QString pregunta =
        u"¿Seguro que desea Reenviar el Mensaje Seleccionado? \n\nMensaje: "_s + mensaje +
        u"\nNúmero: "_s + numero + u"\nDe fecha : "_s + fecha;
    if (ui().msgBox(pregunta, kPregunta) != Msg::Yes) return false;
    // Today's principal account pays, not the one that sent it first.
    const int16_t canal = msCanalPrincipal();
    bool puesto = false;
    {
        // A history row may name no number (a simulated send): the sender
        // would refuse it for ever.
        EntradaBandeja entrada(Conexion());
        try {
            puesto = entrada.poner(numero, mensaje, canal);
        } catch (const ErrorBD&) {
            puesto = false;
        }
    }
    if (!puesto) {
        ui().msgBox(u"No se ha podido reenviar el mensaje"_s, Msg::Exclamation);
        return false;
    }
    ui().msgBox(
        u"El mensaje está listo para enviar en la Bandeja de Salida\nsi tiene activado el Modo "
        u"Transmisor el mensaje se enviará en unos segundos."_s,
        Msg::Information);
    return true;
}

bool msBorrarAnteriores(const QString& fecha) {
    const QDate dia = QDate::fromString(fecha.trimmed(), u"dd/MM/yyyy"_s);
    if (!dia.isValid()) {
        ui().msgBox(u"Fecha no válida, por favor introduzca la fecha en formato dd/mm/yyyy"_s,
                    Msg::Exclamation);
        return false;
    }
    if (ui().msgBox(u"Se van a elminar todos los mensajes con fecha anterior a "_s + fecha +
                        u"\n\n¿Está seguro de elminar estos mensajes?"_s,
                    kPregunta) != Msg::Yes)
        return false;
    // Stored dates are "yyyy-MM-dd HH:mm:ss": every one of the day itself
    // sorts at or after the bare day, so the day stays; the index serves.
    try {
        Conexion().exec(u"DELETE FROM HEnvios WHERE Registro < ?"_s,
                        {dia.toString(u"yyyy-MM-dd"_s)});
    } catch (const ErrorBD& e) {
        msLog(u"No se pudo borrar el histórico: "_s + e.description());
    }
    return true;
}

bool msBorrarTodos() {
    if (ui().msgBox(u"Está seguro de querer eliminar todos los mensajes enviados del histórico?"_s,
                    kPregunta) != Msg::Yes)
        return false;
    try {
        Conexion().exec(u"DELETE FROM HEnvios"_s);
    } catch (const ErrorBD& e) {
        msLog(u"No se pudo borrar el histórico: "_s + e.description());
    }
    return true;
}

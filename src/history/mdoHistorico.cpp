#include "history/mdoHistorico.h"

#include "accounts/mdoCuentas.h"
#include "base/Avisos.h"
#include "base/EstadoAplicacion.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Conexion.h"

#include <sqlite3.h>
#include <QDate>

#include <algorithm>
#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPregunta = Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2;

// ---- The lists' compare rule, on UTF-8 text --------------------------------

// The weight of a UTF-16 unit under the lists' rule, plus one so that 0
// marks the end of a text: letters folded to lower case and stripped of
// accents, "ñ" just after "n" and before "o".
const std::array<uint32_t, 0x10000>& pesos() {
    static const auto tabla = [] {
        std::array<uint32_t, 0x10000> t{};
        for (uint32_t u = 0; u < 0x10000; ++u) {
            const QChar c(char16_t(u), 0);
            char16_t base = char16_t(u);
            uint32_t extra = 0;
            if (u < 0x80) {
                if (u >= 'A' && u <= 'Z') base = char16_t(u + 32);
            } else if (u == u'ñ' || u == u'Ñ') {
                base = u'n';
                extra = 1;
            } else if (c.decompositionTag() == QChar::Canonical) {
                base = c.decomposition().at(0).toCaseFolded().unicode();
            } else {
                base = c.toCaseFolded().unicode();
            }
            t[u] = uint32_t(base) * 2 + extra + 1;
        }
        return t;
    }();
    return tabla;
}

// Walks a UTF-8 text as the UTF-16 units that the rule weighs.
class Unidades {
  public:
    Unidades(const char* p, const char* fin, char16_t pendiente = 0)
        : m_p(reinterpret_cast<const unsigned char*>(p)),
          m_fin(reinterpret_cast<const unsigned char*>(fin)),
          m_pesos(pesos().data()),
          m_pendiente(pendiente) {}

    // Where the walk stands: the next byte, and the second half of a
    // character outside the basic plane still to come.
    const char* posicion() const { return reinterpret_cast<const char*>(m_p); }
    char16_t pendiente() const { return m_pendiente; }

    // The next unit's weight; 0 at the end.
    uint32_t siguiente() {
        if (m_pendiente) {
            const uint32_t w = m_pesos[m_pendiente];
            m_pendiente = 0;
            return w;
        }
        if (m_p == m_fin) return 0;
        const uint32_t c = *m_p++;
        if (c < 0x80) return m_pesos[c];
        uint32_t cp = 0xFFFD;
        if ((c & 0xE0) == 0xC0 && m_fin - m_p >= 1) {
            cp = ((c & 0x1F) << 6) | (m_p[0] & 0x3F);
            m_p += 1;
        } else if ((c & 0xF0) == 0xE0 && m_fin - m_p >= 2) {
            cp = ((c & 0x0F) << 12) | ((m_p[0] & 0x3Fu) << 6) | (m_p[1] & 0x3F);
            m_p += 2;
        } else if ((c & 0xF8) == 0xF0 && m_fin - m_p >= 3) {
            cp = ((c & 0x07) << 18) | ((m_p[0] & 0x3Fu) << 12) | ((m_p[1] & 0x3Fu) << 6) |
                 (m_p[2] & 0x3F);
            m_p += 3;
        }
        if (cp > 0xFFFF) {
            cp -= 0x10000;
            m_pendiente = char16_t(0xDC00 | (cp & 0x3FF));
            return m_pesos[0xD800 | (cp >> 10)];
        }
        return m_pesos[cp];
    }

  private:
    const unsigned char* m_p;
    const unsigned char* m_fin;
    const uint32_t* m_pesos;
    char16_t m_pendiente;
};

int comparar(const char* a, const char* finA, const char* b, const char* finB) {
    Unidades x(a, finA), y(b, finB);
    for (;;) {
        const uint32_t p = x.siguiente(), q = y.siguiente();
        if (p != q) return p < q ? -1 : 1;
        if (p == 0) return 0;
    }
}

// A text sorts by pieces of three weights packed in one number: the rows
// are sorted by the first piece, then each run of equal pieces by the next
// one, so no comparison ever walks a long shared beginning again.
constexpr int kBitsPeso = 18;
constexpr uint64_t kUltimoPeso = (uint64_t(1) << kBitsPeso) - 1;

struct Trozo {
    uint64_t k;
    const char* resto;  // what the pieces so far left of the text
    const char* fin;
    uint32_t pos;  // the row's place before the sort: equal texts keep it
    char16_t pendiente;
};

void siguienteTrozo(Trozo& t) {
    Unidades x(t.resto, t.fin, t.pendiente);
    uint64_t k = 0;
    for (int i = 0; i < 3; ++i) k = (k << kBitsPeso) | x.siguiente();
    t.k = k;
    t.resto = x.posicion();
    t.pendiente = x.pendiente();
}

void ordenarTrozos(Trozo* b, Trozo* e, bool descendente) {
    const auto antes = [descendente](const Trozo& x, const Trozo& y) {
        if (x.k != y.k) return descendente ? x.k > y.k : x.k < y.k;
        return x.pos < y.pos;
    };
    // Texts that share a long beginning come here many times already in
    // order: only a check then.
    if (!std::is_sorted(b, e, antes)) std::sort(b, e, antes);
    for (Trozo* i = b; i < e;) {
        Trozo* j = i + 1;
        while (j < e && j->k == i->k) ++j;
        // A piece that ends in 0 ended its text: the run is of equal texts.
        if (j - i > 1 && (i->k & kUltimoPeso) != 0) {
            for (Trozo* t = i; t < j; ++t) siguienteTrozo(*t);
            ordenarTrozos(i, j, descendente);
        }
        i = j;
    }
}

// "yyyy-MM-dd HH:mm:ss" (or a bare date) as yyyyMMddhhmmss; 0 for
// anything else.
int64_t fechaDeTexto(const char* t, int n) {
    auto dig = [&](int desde, int cuantos, int64_t& v) {
        for (int i = desde; i < desde + cuantos; ++i) {
            if (i >= n || t[i] < '0' || t[i] > '9') return false;
            v = v * 10 + (t[i] - '0');
        }
        return true;
    };
    int64_t v = 0;
    if (n < 10 || t[4] != '-' || t[7] != '-' || !dig(0, 4, v) || !dig(5, 2, v) || !dig(8, 2, v))
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

void Historico::limpiar() {
    m_orden.clear();
    m_fecha.clear();
    m_textos.clear();
    m_cortes.clear();
    m_cuenta.clear();
    m_resultado.clear();
    m_distintos.clear();
    m_utf8.clear();
    m_indice.clear();
    m_recientes.fill(UINT32_MAX);
}

uint32_t Historico::internar(const char* t, int n) {
    // Neighbouring rows mostly repeat a recent value: look there first.
    for (uint32_t id : m_recientes)
        if (id < m_utf8.size() && m_utf8[id].size() == n &&
            std::memcmp(m_utf8[id].constData(), t, size_t(n)) == 0)
            return id;
    const QByteArray clave = QByteArray::fromRawData(t, n);
    const auto it = m_indice.constFind(clave);
    uint32_t id;
    if (it != m_indice.cend()) {
        id = *it;
    } else {
        id = uint32_t(m_distintos.size());
        m_distintos.append(QString::fromUtf8(t, n));
        m_utf8.push_back(QByteArray(t, n));
        m_indice.insert(m_utf8.back(), id);
    }
    m_recientes[m_siguienteReciente++ % m_recientes.size()] = id;
    return id;
}

void Historico::cargar() {
    limpiar();
    BaseDatos& bd = Conexion();
    const int n = int(bd.query(u"SELECT count(*) FROM HEnvios"_s).value(0, 0).toLongLong());
    m_fecha.reserve(size_t(n));
    m_cortes.reserve(size_t(n) * 2 + 1);
    m_cuenta.reserve(size_t(n));
    m_resultado.reserve(size_t(n));
    m_textos.reserve(qsizetype(n) * 64);
    // The rows are read straight from the engine: going through a value
    // object per cell would cost seconds and hundreds of megabytes here.
    sqlite3* h = bd.handle();
    sqlite3_stmt* s = nullptr;
    const char* sql =
        "SELECT Registro, Abonado, coalesce(crem, Canal), Mensaje, Resultado FROM HEnvios";
    if (!h || sqlite3_prepare_v2(h, sql, -1, &s, nullptr) != SQLITE_OK) {
        sqlite3_finalize(s);
        throw ErrorBD(QString::fromUtf8(h ? sqlite3_errmsg(h) : "Base de datos cerrada"),
                      ErrNum::BaseDatos);
    }
    auto texto = [s](int i) {
        return std::pair{reinterpret_cast<const char*>(sqlite3_column_text(s, i)),
                         sqlite3_column_bytes(s, i)};
    };
    int rc;
    while ((rc = sqlite3_step(s)) == SQLITE_ROW) {
        auto [fecha, nf] = texto(0);
        m_fecha.push_back(fecha ? fechaDeTexto(fecha, nf) : 0);
        auto [numero, nn] = texto(1);
        m_cortes.push_back(uint32_t(m_textos.size()));
        m_textos.append(numero, nn);
        auto [mensaje, nm] = texto(3);
        m_cortes.push_back(uint32_t(m_textos.size()));
        m_textos.append(mensaje, nm);
        auto [cuenta, nc] = texto(2);
        m_cuenta.push_back(internar(cuenta ? cuenta : "", nc));
        auto [resultado, nr] = texto(4);
        m_resultado.push_back(internar(resultado ? resultado : "", nr));
    }
    m_cortes.push_back(uint32_t(m_textos.size()));
    const QString error = QString::fromUtf8(sqlite3_errmsg(h));
    sqlite3_finalize(s);
    if (rc != SQLITE_DONE) {
        limpiar();
        throw ErrorBD(error, ErrNum::BaseDatos);
    }
    // The table is read in its own order, which is the order of delivery,
    // faster than through the date's index; newest first is then mostly a
    // reversal. Of equal dates the later row comes first.
    const auto filas = uint32_t(m_fecha.size());
    m_orden.resize(filas);
    for (uint32_t i = 0; i < filas; ++i) m_orden[i] = filas - 1 - i;
    const auto masReciente = [this](uint32_t a, uint32_t b) {
        return m_fecha[a] != m_fecha[b] ? m_fecha[a] > m_fecha[b] : a > b;
    };
    if (!std::is_sorted(m_orden.begin(), m_orden.end(), masReciente))
        std::sort(m_orden.begin(), m_orden.end(), masReciente);
}

QString Historico::textoPropio(uint32_t i, int columna) const {
    switch (columna) {
        case Enviado:
            return textoDeFecha(m_fecha[i]);
        case Id:
            return idDeFecha(m_fecha[i]);
        case Numero:
        case Mensaje: {
            const size_t k = size_t(i) * 2 + (columna == Mensaje ? 1 : 0);
            return QString::fromUtf8(m_textos.constData() + m_cortes[k],
                                     qsizetype(m_cortes[k + 1] - m_cortes[k]));
        }
        case Cuenta:
            return m_distintos.at(m_cuenta[i]);
        case Resultado:
            return m_distintos.at(m_resultado[i]);
        default:
            return QString();
    }
}

QString Historico::texto(int fila, int columna) const {
    if (fila < 0 || fila >= filas()) return QString();
    return textoPropio(m_orden[size_t(fila)], columna);
}

std::vector<uint32_t> Historico::rangosInternados() const {
    std::vector<uint32_t> orden(m_utf8.size());
    for (uint32_t i = 0; i < orden.size(); ++i) orden[i] = i;
    auto comparados = [this](uint32_t a, uint32_t b) {
        const QByteArray &x = m_utf8[a], &y = m_utf8[b];
        return comparar(x.cbegin(), x.cend(), y.cbegin(), y.cend());
    };
    std::sort(orden.begin(), orden.end(), [&](uint32_t a, uint32_t b) {
        const int r = comparados(a, b);
        return r != 0 ? r < 0 : a < b;
    });
    // Equal texts under the rule share a rank, so the sort keeps their order.
    std::vector<uint32_t> rango(orden.size());
    uint32_t r = 0;
    for (size_t k = 0; k < orden.size(); ++k) {
        if (k > 0 && comparados(orden[k - 1], orden[k]) != 0) ++r;
        rango[orden[k]] = r;
    }
    return rango;
}

void Historico::ordenar(int columna, bool descendente) {
    const size_t n = m_orden.size();
    std::vector<Trozo> claves(n);
    if (columna == Numero || columna == Mensaje) {
        const size_t desplazamiento = columna == Mensaje ? 1 : 0;
        const char* base = m_textos.constData();
        for (uint32_t pos = 0; pos < n; ++pos) {
            const size_t k = size_t(m_orden[pos]) * 2 + desplazamiento;
            claves[pos] = {0, base + m_cortes[k], base + m_cortes[k + 1], pos, 0};
            siguienteTrozo(claves[pos]);
        }
        ordenarTrozos(claves.data(), claves.data() + n, descendente);
    } else {
        std::vector<uint32_t> rango;
        if (columna == Cuenta || columna == Resultado) rango = rangosInternados();
        for (uint32_t pos = 0; pos < n; ++pos) {
            const uint32_t i = m_orden[pos];
            uint64_t k = 0;
            if (columna == Cuenta)
                k = rango[m_cuenta[i]];
            else if (columna == Resultado)
                k = rango[m_resultado[i]];
            else
                k = uint64_t(m_fecha[i]);
            claves[pos] = {k, nullptr, nullptr, pos, 0};
        }
        std::sort(claves.begin(), claves.end(), [descendente](const Trozo& x, const Trozo& y) {
            if (x.k != y.k) return descendente ? x.k > y.k : x.k < y.k;
            return x.pos < y.pos;
        });
    }
    std::vector<uint32_t> orden(n);
    for (size_t f = 0; f < n; ++f) orden[f] = m_orden[claves[f].pos];
    m_orden = std::move(orden);
}

// ---- Resend and deletion -----------------------------------------------------

bool msReenviarMensaje(const QString& numero, const QString& mensaje, const QString& fecha) {
    const QString pregunta =
        u"¿Seguro que desea Reenviar el Mensaje Seleccionado? \n\nMensaje: "_s + mensaje +
        u"\nNúmero: "_s + numero + u"\nDe fecha : "_s + fecha;
    if (ui().msgBox(pregunta, kPregunta) != Msg::Yes) return false;
    // Today's principal account pays, not the one that sent it first.
    const int16_t canal = msCanalPrincipal();
    int filas = 0;
    try {
        filas = Conexion().exec(
            u"INSERT INTO envios (Abonado,Mensaje,intento,Registro,Canal) VALUES (?,?,2,?,?)"_s,
            {numero, mensaje, Reloj::now(), canal});
    } catch (const ErrorBD&) {
        filas = 0;
    }
    if (filas <= 0) {
        ui().msgBox(u"No se ha podido reenviar el mensaje"_s, Msg::Exclamation);
        return false;
    }
    Q_EMIT Avisos::instancia().bandejaCambiada();
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

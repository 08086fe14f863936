#include "scheduling/ProximasTareas.h"

#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "db/Transaccion.h"
#include "scheduling/clsNextTarea.h"

#include <QElapsedTimer>
#include <QTimeZone>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

// What the calculation answers at one instant.
struct Respuesta {
    bool falla = false;
    bool hay = false;
    QString cuando;  // stored form, when there is a run

    bool operator==(const Respuesta& o) const {
        return falla == o.falla && hay == o.hay && cuando == o.cuando;
    }
};

// The stored form of wall-clock parts, written by hand: a recalculation
// writes two for each of a hundred thousand rows.
QString textoPared(const QDateTime& x) {
    const QDate d = x.date();
    const QTime t = x.time();
    const int partes[] = {d.year(), d.month(), d.day(), t.hour(), t.minute(), t.second()};
    static constexpr char16_t kSeparadores[] = u"-- ::";
    QString s(19, u'0');
    int pos = 0;
    for (int i = 0; i < 6; ++i) {
        const int cifras = i == 0 ? 4 : 2;
        for (int k = cifras - 1, n = partes[i]; k >= 0; --k, n /= 10)
            s[pos + k] = QChar(u'0' + n % 10);
        pos += cifras;
        if (i < 5) s[pos++] = kSeparadores[i];
    }
    return s;
}

Respuesta responder(clsNextTarea& calculo, const QDateTime& reloj) {
    try {
        calculo.CalcularProximaTareaEn(reloj);
    } catch (const ErrorQuelmo&) {
        return {true, false, {}};
    }
    if (!calculo.HayTarea()) return {};
    return {false, true, textoPared(calculo.FechaProximaTareaPared())};
}

QVariant columna(const QString& texto) {
    return texto.isNull() ? QVariant() : QVariant(texto);
}

// What a moved wall clock is told from: the clock is read to the second.
constexpr qint64 kToleranciaMs = 2000;

std::function<qint64()>& fuenteMonotona() {
    static std::function<qint64()> f;
    return f;
}

qint64 monotono() {
    if (fuenteMonotona()) return fuenteMonotona()();
    static QElapsedTimer desdeElArranque = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
    return desdeElArranque.elapsed();
}

// The clock and the database as the last look found them.
struct Vistazo {
    unsigned long long apertura = 0;
    qint64 pared = 0;
    qint64 mono = 0;
    int desfase = 0;
    QByteArray zona;
};
std::optional<Vistazo>& ultimoVistazo() {
    static std::optional<Vistazo> v;
    return v;
}

// How far the re-work under way went.
std::optional<int64_t>& repaso() {
    static std::optional<int64_t> r;
    return r;
}

}  // namespace

namespace ProximasTareas {

QString seleccion() {
    return u"SELECT "_s + clsNextTarea::columnasFila() +
           u", ProximaTarea, RevisarTarea, Codigo FROM Automaticos "_s;
}

int32_t codigoDe(const ResultadoConsulta& filas, int fila) {
    return aEntero32(filas.value(fila, filas.columnCount() - 1).toString());
}

ProximaGuardada guardadaEn(const ResultadoConsulta& filas, int fila) {
    const int n = filas.columnCount();
    const auto texto = [](const QVariant& v) { return v.isNull() ? QString() : v.toString(); };
    return {texto(filas.value(fila, n - 3)), texto(filas.value(fila, n - 2))};
}

ProximaGuardada calcular(clsNextTarea& calculo, int32_t codigo, const ResultadoConsulta& filas,
                         int fila, const QDateTime& ahora, bool* fallo) {
    calculo.setFila(codigo, filas, fila);
    const Respuesta ya = responder(calculo, ahora);
    if (fallo) *fallo = ya.falla;
    ProximaGuardada p;
    // Stored empty, not null, when it fails: the list tells it from an end.
    p.proxima = ya.falla ? u""_s : ya.cuando;
    // The day of the calculation is that of one minute ago. Wall-clock
    // parts only: the calculation reads no more of an instant.
    const QDateTime pared(ahora.date(), ahora.time(), Qt::UTC);
    const QDateTime diaSiguiente(pared.addSecs(-60).date().addDays(1), QTime(0, 1), Qt::UTC);
    const QString manana = textoPared(diaSiguiente);
    // A run before the day changes is looked at again at its time anyway.
    if (ya.hay && ya.cuando < manana) {
        p.revisar = ya.cuando;
        return p;
    }
    clsNextTarea luego;
    luego.setFila(codigo, filas, fila);
    const bool cambia = ya.falla || !(responder(luego, diaSiguiente) == ya);
    if (cambia)
        p.revisar = manana;
    else if (ya.hay)
        p.revisar = ya.cuando;
    return p;
}

void escribir(int32_t codigo, const ProximaGuardada& p) {
    Conexion().exec(u"UPDATE Automaticos SET ProximaTarea = ?, RevisarTarea = ? WHERE Codigo = ?"_s,
                    {columna(p.proxima), columna(p.revisar), codigo});
}

void guardar(int32_t codigo) {
    const ResultadoConsulta r =
        Conexion().query(seleccion() + u"WHERE Codigo = ? AND tareaProgramada=true"_s, {codigo});
    if (r.isEmpty()) {
        escribir(codigo, {});
        return;
    }
    clsNextTarea calculo;
    escribir(codigo, calcular(calculo, codigo, r, 0, Reloj::now()));
}

bool ponerAlDia() {
    const QDateTime ahora = Reloj::now();
    const Vistazo ya{Conexion().apertura(), ahora.toMSecsSinceEpoch(), monotono(),
                     ahora.offsetFromUtc(), QTimeZone::systemTimeZoneId()};
    const std::optional<Vistazo>& antes = ultimoVistazo();
    const bool cambio = !antes || antes->apertura != ya.apertura || antes->desfase != ya.desfase ||
                        antes->zona != ya.zona ||
                        qAbs((ya.pared - antes->pared) - (ya.mono - antes->mono)) > kToleranciaMs;
    // The rows are worked out again in slices from the event loop: at a
    // hundred thousand rows the whole takes seconds.
    if (cambio) repaso() = -1;
    ultimoVistazo() = ya;
    return cambio;
}

std::optional<int64_t> repasadoHasta() {
    return repaso();
}

void repasado(int64_t codigo, bool fin) {
    if (fin)
        repaso().reset();
    else
        repaso() = codigo;
}

void setMonotono(std::function<qint64()> fuente) {
    fuenteMonotona() = std::move(fuente);
}

}  // namespace ProximasTareas

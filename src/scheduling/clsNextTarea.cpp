#include "scheduling/clsNextTarea.h"

#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "db/Conexion.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// The columns the calculation reads, in the order of kColumnas.
enum Columna {
    kHora,
    kPeriodicidad,
    kFechaIni,
    kFechaFin,
    kCada,
    kDiasSemana,
    kMensualEsDia,
    kMensualDiaMes,
    kMensualNumSemana,
    kMensualDiaSemana,
    kAnualDia,
    kAnualMes,
    kUltimaTarea,
};

const QString kColumnas =
    u"Hora, Periodicidad, FechaIni, FechaFin, Cada, DiasSemana, MensualEsDia, MensualDiaMes, "
    u"MensualNumSemana, MensualDiaSemana, AnualDia, AnualMes, UltimaTarea"_s;
constexpr int kNumColumnas = kUltimaTarea + 1;

const QDate kDiaCero(1899, 12, 30);

QDateTime ingenua(const QDate& d, const QTime& t = QTime(0, 0)) {
    return QDateTime(d, t, Qt::UTC);
}

QDateTime local(const QDateTime& ingenuo) {
    return QDateTime(ingenuo.date(), ingenuo.time());
}

[[noreturn]] void faltaValor() {
    throw ErrorQuelmo(u"Uso no válido de Null"_s, ErrNum::InvalidUseOfNull);
}

// A stored date-time column as a wall-clock value. The stored form is read
// digit by digit: going through local time costs a time-zone lookup per
// value, and a tick reads thousands of them.
QDateTime fechaDe(const QVariant& v) {
    if (v.isNull()) faltaValor();
    const QString s = v.toString();
    if (s.size() == 19 && s[4] == u'-' && s[7] == u'-' && s[10] == u' ' && s[13] == u':' &&
        s[16] == u':') {
        const auto n = [&s](int desde, int largo) { return s.mid(desde, largo).toInt(); };
        const QDate d(n(0, 4), n(5, 2), n(8, 2));
        const QTime t(n(11, 2), n(14, 2), n(17, 2));
        if (d.isValid() && t.isValid()) return ingenua(d, t);
    }
    const QDateTime leida = deTextoBD(s);
    if (!leida.isValid()) throw ErrorQuelmo(u"No coinciden los tipos"_s, ErrNum::TypeMismatch);
    return ingenua(leida.date(), leida.time());
}

int16_t enteroDe(const QVariant& v) {
    if (v.typeId() == QMetaType::LongLong) {
        const qlonglong n = v.toLongLong();
        if (n < -32768 || n > 32767) throw ErrorQuelmo(u"Desbordamiento"_s, ErrNum::Overflow);
        return int16_t(n);
    }
    return aEntero16(v);
}

QString dosCifras(int n) {
    return QString::number(n).rightJustified(2, u'0');
}

QString textoHora(const QTime& t) {
    return dosCifras(t.hour()) + u':' + dosCifras(t.minute()) + u':' + dosCifras(t.second());
}

// The text of Hora: its time of day only, whatever day it was stored with
// (or none, when a bare time was stored).
QString textoHoraDe(const QVariant& v) {
    if (v.isNull()) return QString();
    const QString t = v.toString().trimmed();
    if (t.size() <= 8) {
        const QTime soloHora = QTime::fromString(t, u"HH:mm:ss"_s);
        if (soloHora.isValid()) return textoHora(soloHora);
    }
    return textoHora(fechaDe(v).time());
}

QString textoDia(const QDateTime& x) {
    const QDate d = x.date();
    return dosCifras(d.day()) + u'/' + dosCifras(d.month()) + u'/' +
           QString::number(d.year()).rightJustified(4, u'0');
}

// Reads up to `max` digits at `i`; -1 when there are none.
int leerCifras(const QString& s, qsizetype& i, int max) {
    int n = 0, leidas = 0;
    while (i < s.size() && leidas < max && s[i] >= u'0' && s[i] <= u'9') {
        n = n * 10 + (s[i].unicode() - u'0');
        ++i, ++leidas;
    }
    return leidas ? n : -1;
}

bool leerSeparador(const QString& s, qsizetype& i, QChar c) {
    if (i < s.size() && s[i] == c) {
        ++i;
        return true;
    }
    return false;
}

}  // namespace

FechaNoValida::FechaNoValida(const QString& texto)
    : ErrorQuelmo(u"No coinciden los tipos: \""_s + texto + u"\" no es una fecha"_s,
                  ErrNum::TypeMismatch) {}

QDateTime clsNextTarea::fechaCero() {
    return QDateTime(kDiaCero, QTime(0, 0));
}

QString clsNextTarea::textoFecha(const QDateTime& valor) {
    const QString hora = textoHora(valor.time());
    if (valor.date() == kDiaCero) return hora;
    if (valor.time() == QTime(0, 0)) return textoDia(valor);
    return textoDia(valor) + u' ' + hora;
}

QDateTime clsNextTarea::leerFecha(const QString& texto) {
    // Day first, always: "d/m/yyyy", optionally followed by "H:mm" or
    // "H:mm:ss". Nothing is clamped, so "31/04/2006" is no date.
    const QString s = texto.trimmed();
    qsizetype i = 0;
    const int dia = leerCifras(s, i, 2);
    const bool sepDia = leerSeparador(s, i, u'/');
    const int mes = leerCifras(s, i, 2);
    const bool sepMes = leerSeparador(s, i, u'/');
    const int anio = leerCifras(s, i, 4);
    if (dia < 0 || !sepDia || mes < 0 || !sepMes || anio < 100) throw FechaNoValida(texto);
    const QDate fecha(anio, mes, dia);
    if (!fecha.isValid()) throw FechaNoValida(texto);
    if (i == s.size()) return ingenua(fecha);

    if (!s[i].isSpace()) throw FechaNoValida(texto);
    while (i < s.size() && s[i].isSpace()) ++i;
    const int h = leerCifras(s, i, 2);
    const bool sepHora = leerSeparador(s, i, u':');
    const int m = leerCifras(s, i, 2);
    int seg = 0;
    if (leerSeparador(s, i, u':')) seg = leerCifras(s, i, 2);
    const QTime hora(h, m, seg);
    if (h < 0 || !sepHora || m < 0 || seg < 0 || i != s.size() || !hora.isValid())
        throw FechaNoValida(texto);
    return ingenua(fecha, hora);
}

void clsNextTarea::setCodigo(int32_t codigo) {
    m_codigo = codigo;
    const ResultadoConsulta fila = Conexion().query(
        u"SELECT "_s + kColumnas + u" FROM Automaticos WHERE codigo=? and tareaProgramada=true"_s,
        {codigo});
    m_fila = fila.isEmpty() ? QVector<QVariant>() : fila.row(0);
}

QString clsNextTarea::columnasFila() {
    return kColumnas;
}

void clsNextTarea::setFila(int32_t codigo, const ResultadoConsulta& filas, int fila) {
    m_codigo = codigo;
    m_fila = filas.row(fila).mid(0, kNumColumnas);
}

QDateTime clsNextTarea::UltimaTarea() const {
    return local(m_ultimaTarea);
}

QDateTime clsNextTarea::FechaProximaTarea() const {
    return local(m_fechaProximaTarea);
}

QDate clsNextTarea::DayWeekOfMonth(int16_t Mes, int16_t Anio, int16_t Semana, int16_t DiaSemana) {
    const QString anio = QString::number(Anio);
    const int16_t w =
        int16_t(leerFecha(u"01/"_s + QString::number(Mes) + u'/' + anio).date().dayOfWeek());
    // The first such weekday of the month.
    int16_t dia = w > DiaSemana ? int16_t(7 - w + DiaSemana + 1) : int16_t(DiaSemana - w + 1);
    if (Semana >= 1 && Semana <= 4) {
        dia = int16_t((Semana - 1) * 7 + dia);
    } else if (Semana == 5) {
        // The last one: as far as the month's length allows.
        const int16_t siguiente = Mes == 12 ? int16_t(1) : int16_t(Mes + 1);
        const QDate primeroSiguiente =
            leerFecha(u"01/"_s + QString::number(siguiente) + u'/' + anio).date();
        const int16_t largo = int16_t(primeroSiguiente.addDays(-1).day());
        dia = int16_t(dia + 7);
        while (dia + 7 <= largo) dia = int16_t(dia + 7);
    }
    return leerFecha(QString::number(dia) + u'/' + QString::number(Mes) + u'/' + anio).date();
}

void clsNextTarea::CalcularProximaTarea() {
    // One reading of the clock serves the whole calculation, which takes
    // microseconds.
    calcular(false, Reloj::now());
}

void clsNextTarea::CalcularProximaTareaEn(const QDateTime& reloj) {
    calcular(false, reloj);
}

void clsNextTarea::CalcularProximaTarea2() {
    calcular(true, Reloj::now());
}

QDateTime clsNextTarea::fechaDeColumna(const QVariant& columna) {
    return local(fechaDe(columna));
}

namespace {

// One calculation over one row: the clock read once, the row's columns read
// when first needed, and the two results it assigns. A step that throws
// leaves the results as the steps before it set them.
class Calculo {
  public:
    Calculo(const QVector<QVariant>& fila, const QDateTime& reloj, bool alDia, QDateTime& proxima,
            bool& hay)
        : m_fila(fila),
          m_reloj(reloj),
          m_alDia(alDia),
          m_proxima(proxima),
          m_hay(hay),
          m_horaTexto(textoHoraDe(col(kHora))),
          m_hora(alDia ? u"00:00"_s : m_horaTexto),
          m_base(dia(referencia())) {}

    // A null or unknown kind is -1: it leaves both results as they were.
    int periodicidad() const {
        const QVariant& v = col(kPeriodicidad);
        return v.isNull() ? -1 : enteroDe(v);
    }

    void unaVez() {
        const QDateTime ini = fechaDe(col(kFechaIni));
        m_proxima = unir(ini, m_hora);
        m_hay = m_proxima > referencia() && ini >= dia(referencia());
    }

    void diaria() {
        if (!antesDelFin()) return;
        // Every day starts again from today; Cada only says how far the
        // next run lies once today's has passed.
        candidato(false);
        if (referencia() >= m_c) m_c = m_c.addDays(enteroDe(col(kCada)));
        publicar(m_c);
    }

    void semanal() {
        // Every week: the number of weeks the editor keeps is not read.
        if (!antesDelFin()) return;
        candidato(true);
        // Today is taken even when its time has passed; the final step
        // moves on from it.
        buscarEnSemana(m_c.addDays(-(m_c.date().dayOfWeek() - 1)));
    }

    void mensual() {
        if (!antesDelFin()) return;
        const QVariant& esDia = col(kMensualEsDia);
        if (!esDia.isNull() && aBooleano(esDia.toString()))
            mensualPorDia();
        else
            mensualPorSemana();
    }

    void anual() {
        const QString diaAnual = QString::number(enteroDe(col(kAnualDia)));
        const QString mesAnual = QString::number(enteroDe(col(kAnualMes)));
        // No clamping: 29 February in a common year is no date.
        const auto enElAnio = [&](const QDateTime& x) {
            return leerFecha(diaAnual + u'/' + mesAnual + u'/' +
                             QString::number(x.date().year()).rightJustified(4, u'0') + u' ' +
                             m_hora);
        };
        candidato(true);
        const QDateTime enBase = enElAnio(m_base);
        if (enBase > m_c) {
            m_c = enBase;
        } else if (enBase == m_c) {
            if (unir(m_base, m_hora) > m_c) m_c = enBase.addYears(1);
        } else {
            // The year of the reference, not of the base day: a schedule
            // starting in a later year can be given a run before its first day.
            m_c = enElAnio(referencia()).addYears(1);
        }
        publicar(m_c);
    }

    // Today's run whose minute has gone moves on, for the kinds that have a
    // following run at hand.
    void dejarAtrasLaPasada(int periodicidad) {
        if (!m_hay || m_proxima.date() != referencia().date()) return;
        QDateTime minuto = referencia();
        minuto.setTime(QTime(minuto.time().hour(), minuto.time().minute()));
        if (minuto < m_proxima) return;
        if (periodicidad == int(Periodicidad::Anual)) {
            // Not checked against the end again.
            m_proxima = m_proxima.addYears(1);
        } else if (periodicidad == int(Periodicidad::Semanal)) {
            // Without a later day before the end, the passed run stays.
            buscarEnSemana(m_proxima.addDays(1));
        }
    }

    // To the day, the result's day takes the time of Hora, also when there
    // is no run. A value never assigned has no day: its text is a bare time,
    // and with Hora behind it that is no date at all.
    void ponerHora() {
        m_proxima =
            leerFecha(clsNextTarea::textoFecha(ingenua(m_proxima.date())) + u' ' + m_horaTexto);
    }

  private:
    static QDateTime leerFecha(const QString& t) { return clsNextTarea::leerFecha(t); }
    static QDateTime dia(const QDateTime& x) { return leerFecha(textoDia(x)); }
    static QDateTime unir(const QDateTime& x, const QString& hora) {
        return leerFecha(textoDia(x) + u' ' + hora);
    }

    const QVariant& col(Columna c) const { return m_fila.at(int(c)); }

    // The "now" of the calculation: the clock to the minute, or the start
    // of today to the day.
    QDateTime ahora() const {
        return m_alDia ? leerFecha(textoDia(m_reloj) + u" 00:00"_s) : m_reloj;
    }
    // One minute before now: a run stays the next run for its minute.
    QDateTime referencia() const { return ahora().addSecs(-60); }

    // Read once, when first needed: a kind never reads another kind's
    // columns, so a null there does no harm.
    const QDateTime& fechaFin() {
        if (!m_fin) m_fin = fechaDe(col(kFechaFin));
        return *m_fin;
    }
    bool enDiasSemana(const QDateTime& x) {
        if (!m_mascara) m_mascara = enteroDe(col(kDiasSemana));
        return (*m_mascara & (1 << (x.date().dayOfWeek() - 1))) > 0;
    }

    bool antesDelFin() {
        m_hay = referencia() < fechaFin();
        return m_hay;
    }
    void publicar(const QDateTime& c) {
        m_proxima = c;
        m_hay = c < fechaFin();
    }

    // The candidate is today's run, or the first day's when the schedule
    // starts later; `conBase` moves the base day to the first day as well.
    void candidato(bool conBase) {
        m_c = unir(referencia(), m_hora);
        const QDateTime ini = fechaDe(col(kFechaIni));
        if (ini > dia(referencia())) {
            m_c = unir(ini, m_hora);
            if (conBase) m_base = dia(ini);
        }
    }

    // Day by day from `c` to the first day of the mask not before the base
    // day; reaching the end leaves no run and the result as it was.
    void buscarEnSemana(QDateTime c) {
        for (;;) {
            m_hay = c < fechaFin();
            if (!m_hay) return;
            if (c.date() < m_base.date()) {
                c = c.addDays(1);
                continue;
            }
            if (enDiasSemana(c)) {
                publicar(c);
                return;
            }
            c = c.addDays(1);
            m_hay = c < fechaFin();
        }
    }

    void mensualPorDia() {
        const int16_t diaMes = enteroDe(col(kMensualDiaMes));
        candidato(true);
        const int d = m_c.date().day();
        const QString mesAnio = textoDia(m_base).mid(3);
        const auto enElMes = [&] {
            return leerFecha(QString::number(diaMes) + u'/' + mesAnio + u' ' + m_hora);
        };
        // Ahead in this month the day is read as it stands, so a month
        // without it is a failure; a month added to a valid day falls back
        // to the shorter month's last day.
        if (diaMes > d) {
            m_c = enElMes();
        } else if (diaMes == d) {
            if (m_c < referencia()) m_c = enElMes().addMonths(1);
        } else {
            m_c = enElMes().addMonths(1);
        }
        publicar(m_c);
    }

    void mensualPorSemana() {
        const int16_t semana = enteroDe(col(kMensualNumSemana));
        const int16_t diaSemana = enteroDe(col(kMensualDiaSemana));
        // The occurrence is pulled back a minute and rejoined with the hour:
        // at 00:00 that moves it to the day before.
        const auto ocurrencia = [&](const QDateTime& x) {
            const QDate d = clsNextTarea::DayWeekOfMonth(
                int16_t(x.date().month()), int16_t(x.date().year()), semana, diaSemana);
            m_c = leerFecha(clsNextTarea::textoFecha(ingenua(d)) + u' ' + m_hora);
            m_c = unir(m_c.addSecs(-60), m_hora);
        };
        ocurrencia(ahora());
        if (m_c.addSecs(60) < ahora()) ocurrencia(ahora().addMonths(1));
        const QDateTime ini = fechaDe(col(kFechaIni));
        for (int i = 1; ini > m_c; ++i) ocurrencia(ahora().addMonths(i));
        publicar(m_c);
    }

    const QVector<QVariant>& m_fila;
    const QDateTime m_reloj;
    const bool m_alDia;
    QDateTime& m_proxima;
    bool& m_hay;
    const QString m_horaTexto;  // Hora's time of day
    const QString m_hora;       // the time the candidates take
    QDateTime m_base;           // the first day a run may fall on
    QDateTime m_c;              // the candidate run
    std::optional<QDateTime> m_fin;
    std::optional<int16_t> m_mascara;
};

}  // namespace

void clsNextTarea::calcular(bool alDia, const QDateTime& reloj) {
    // No row, or its schedule is off.
    if (m_fila.isEmpty()) {
        m_hayTarea = false;
        return;
    }
    leerUltimaTarea();
    m_reloj = ingenua(reloj.date(), reloj.time());

    Calculo calculo(m_fila, m_reloj, alDia, m_fechaProximaTarea, m_hayTarea);
    const int periodicidad = calculo.periodicidad();
    switch (periodicidad) {
        case int(Periodicidad::Una):
            calculo.unaVez();
            break;
        case int(Periodicidad::Diaria):
            calculo.diaria();
            break;
        case int(Periodicidad::Semanal):
            calculo.semanal();
            break;
        case int(Periodicidad::Mensual):
            calculo.mensual();
            break;
        case int(Periodicidad::Anual):
            calculo.anual();
            break;
        default:
            break;
    }
    calculo.dejarAtrasLaPasada(periodicidad);
    if (alDia) calculo.ponerHora();
}

void clsNextTarea::leerUltimaTarea() {
    // A null last run, or an empty one, counts as never.
    const QVariant& ultima = m_fila.at(int(kUltimaTarea));
    if (ultima.isNull() || ultima.toString().isEmpty()) {
        m_ultimaTarea = ingenua(QDate(1900, 1, 1));
        return;
    }
    try {
        m_ultimaTarea = fechaDe(ultima);
    } catch (const ErrorQuelmo&) {
        // Silence is the rule here: an unreadable last run keeps what the
        // member held, and the calculation goes on.
    }
}

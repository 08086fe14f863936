#include "scheduling/clsNextTarea.h"

#include "base/AppState.h"
#include "base/Clock.h"
#include "base/Conversions.h"
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
    throw QuelmoError(u"Uso no válido de Null"_s, ErrNum::InvalidUseOfNull);
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
    if (!leida.isValid()) throw QuelmoError(u"No coinciden los tipos"_s, ErrNum::TypeMismatch);
    return ingenua(leida.date(), leida.time());
}

int16_t enteroDe(const QVariant& v) {
    if (v.typeId() == QMetaType::LongLong) {
        const qlonglong n = v.toLongLong();
        if (n < -32768 || n > 32767) throw QuelmoError(u"Desbordamiento"_s, ErrNum::Overflow);
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
    : QuelmoError(u"No coinciden los tipos: \""_s + texto + u"\" no es una fecha"_s,
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
    const QueryResult fila = Conexion().query(
        u"SELECT "_s + kColumnas + u" FROM Automaticos WHERE codigo=? and tareaProgramada=true"_s,
        {codigo});
    m_fila = fila.isEmpty() ? QVector<QVariant>() : fila.row(0);
}

QString clsNextTarea::columnasFila() {
    return kColumnas;
}

void clsNextTarea::setFila(int32_t codigo, const QueryResult& filas, int fila) {
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
    calcular(false);
}

void clsNextTarea::CalcularProximaTarea2() {
    calcular(true);
}

void clsNextTarea::calcular(bool alDia) {
    // No row, or its schedule is off.
    if (m_fila.isEmpty()) {
        m_hayTarea = false;
        return;
    }
    const auto col = [this](Columna c) -> const QVariant& { return m_fila.at(int(c)); };

    // A null last run, or an empty one, counts as never.
    const QVariant& ultima = col(kUltimaTarea);
    if (ultima.isNull() || ultima.toString().isEmpty()) {
        m_ultimaTarea = ingenua(QDate(1900, 1, 1));
    } else {
        try {
            m_ultimaTarea = fechaDe(ultima);
        } catch (const QuelmoError&) {
            // Unreadable: the member keeps what it held.
        }
    }

    // The "now" of each calculator, and the reference instant one minute
    // before it: a run stays the next run for its minute. One reading of
    // the clock serves the whole calculation, which takes microseconds.
    const QDateTime reloj = Clock::now();
    m_reloj = ingenua(reloj.date(), reloj.time());
    const auto N = [&]() -> QDateTime {
        return alDia ? leerFecha(textoDia(m_reloj) + u" 00:00"_s) : m_reloj;
    };
    const auto R = [&N]() { return N().addSecs(-60); };
    const auto dia = [](const QDateTime& x) { return leerFecha(textoDia(x)); };
    const auto unir = [](const QDateTime& x, const QString& t) {
        return leerFecha(textoDia(x) + u' ' + t);
    };
    const auto diaTexto = [](int d, const QString& mesAnio, const QString& t) {
        return leerFecha(QString::number(d) + u'/' + mesAnio + u' ' + t);
    };
    const QString horaTexto = textoHoraDe(col(kHora));
    const QString T = alDia ? u"00:00"_s : horaTexto;

    // Columns read once each, when first needed: a kind never reads
    // another kind's columns, so a null there does no harm.
    std::optional<QDateTime> fin;
    const auto fechaFin = [&]() -> const QDateTime& {
        if (!fin) fin = fechaDe(col(kFechaFin));
        return *fin;
    };
    std::optional<int16_t> mascara;
    const auto enDiasSemana = [&](const QDateTime& x) {
        if (!mascara) mascara = enteroDe(col(kDiasSemana));
        return (*mascara & (1 << (x.date().dayOfWeek() - 1))) > 0;
    };
    const auto publicar = [&](const QDateTime& c) {
        m_fechaProximaTarea = c;
        m_hayTarea = c < fechaFin();
    };

    QDateTime B = dia(R());
    // Day by day from `c` to the first day of the mask not before B;
    // reaching the end leaves HayTarea false and the result as it was.
    const auto buscarEnSemana = [&](QDateTime c) {
        for (;;) {
            m_hayTarea = c < fechaFin();
            if (!m_hayTarea) return;
            if (c.date() < B.date()) {
                c = c.addDays(1);
                continue;
            }
            if (enDiasSemana(c)) {
                publicar(c);
                return;
            }
            c = c.addDays(1);
            m_hayTarea = c < fechaFin();
        }
    };
    QDateTime C;
    // C is today's run at T, or the first day's when the schedule starts
    // later; `conBase` moves the base day to the first day as well.
    const auto candidato = [&](bool conBase) {
        C = unir(R(), T);
        const QDateTime ini = fechaDe(col(kFechaIni));
        if (ini > dia(R())) {
            C = unir(ini, T);
            if (conBase) B = dia(ini);
        }
    };
    // A null or unknown kind leaves both results as they were.
    const QVariant& perValor = col(kPeriodicidad);
    const int periodicidad = perValor.isNull() ? -1 : enteroDe(perValor);

    switch (periodicidad) {
        case int(Periodicidad::Una): {
            const QDateTime ini = fechaDe(col(kFechaIni));
            m_fechaProximaTarea = unir(ini, T);
            m_hayTarea = m_fechaProximaTarea > R() && ini >= dia(R());
            break;
        }
        case int(Periodicidad::Diaria): {
            m_hayTarea = R() < fechaFin();
            if (!m_hayTarea) break;
            // Every day starts again from today; Cada only says how far the
            // next run lies once today's has passed.
            candidato(false);
            if (R() >= C) C = C.addDays(enteroDe(col(kCada)));
            publicar(C);
            break;
        }
        case int(Periodicidad::Semanal): {
            // Every week: the number of weeks the editor keeps is not read.
            m_hayTarea = R() < fechaFin();
            if (!m_hayTarea) break;
            candidato(true);
            // Today is taken even when its time has passed; the final step
            // moves on from it.
            buscarEnSemana(C.addDays(-(C.date().dayOfWeek() - 1)));
            break;
        }
        case int(Periodicidad::Mensual): {
            m_hayTarea = R() < fechaFin();
            if (!m_hayTarea) break;
            const QVariant& esDia = col(kMensualEsDia);
            if (!esDia.isNull() && aBooleano(esDia.toString())) {
                const int16_t M = enteroDe(col(kMensualDiaMes));
                candidato(true);
                const int d = C.date().day();
                const QString mesAnio = textoDia(B).mid(3);
                // Ahead in this month the day is read as it stands, so a
                // month without it is a failure; a month added to a valid
                // day falls back to the shorter month's last day.
                if (M > d) {
                    C = diaTexto(M, mesAnio, T);
                } else if (M == d) {
                    if (C < R()) C = diaTexto(M, mesAnio, T).addMonths(1);
                } else {
                    C = diaTexto(M, mesAnio, T).addMonths(1);
                }
                publicar(C);
            } else {
                const int16_t W = enteroDe(col(kMensualNumSemana));
                const int16_t D = enteroDe(col(kMensualDiaSemana));
                // The occurrence is pulled back a minute and rejoined with
                // T: at 00:00 that moves it to the day before.
                const auto ocurrencia = [&](const QDateTime& X) {
                    const QDate d =
                        DayWeekOfMonth(int16_t(X.date().month()), int16_t(X.date().year()), W, D);
                    C = leerFecha(textoFecha(ingenua(d)) + u' ' + T);
                    C = unir(C.addSecs(-60), T);
                };
                ocurrencia(N());
                if (C.addSecs(60) < N()) ocurrencia(N().addMonths(1));
                const QDateTime ini = fechaDe(col(kFechaIni));
                if (ini > C) {
                    int i = 1;
                    while (ini > C) {
                        ocurrencia(N().addMonths(i));
                        ++i;
                    }
                }
                publicar(C);
            }
            break;
        }
        case int(Periodicidad::Anual): {
            const QString diaAnual = QString::number(enteroDe(col(kAnualDia)));
            const QString mesAnual = QString::number(enteroDe(col(kAnualMes)));
            // No clamping: 29 February in a common year is no date.
            const auto Y = [&](const QDateTime& x) {
                return leerFecha(diaAnual + u'/' + mesAnual + u'/' +
                                 QString::number(x.date().year()).rightJustified(4, u'0') + u' ' +
                                 T);
            };
            candidato(true);
            const QDateTime yB = Y(B);
            if (yB > C) {
                C = yB;
            } else if (yB == C) {
                if (unir(B, T) > C) C = yB.addYears(1);
            } else {
                // The year of R, not of B: a schedule starting in a later
                // year can be given a run before its first day.
                C = Y(R()).addYears(1);
            }
            publicar(C);
            break;
        }
        default:
            break;
    }

    // Final step: today's run whose minute has gone moves on, for the
    // kinds that have a following run at hand.
    if (m_hayTarea && m_fechaProximaTarea.date() == R().date()) {
        QDateTime Q = R();
        Q.setTime(QTime(Q.time().hour(), Q.time().minute()));
        if (!(Q < m_fechaProximaTarea)) {
            if (periodicidad == int(Periodicidad::Anual)) {
                // Not checked against the end again.
                m_fechaProximaTarea = m_fechaProximaTarea.addYears(1);
            } else if (periodicidad == int(Periodicidad::Semanal)) {
                // Without a later day before the end, the passed run stays.
                buscarEnSemana(m_fechaProximaTarea.addDays(1));
            }
        }
    }
    // To the day, the result's day takes the time of Hora, also when there
    // is no run. A value never assigned has no day: its text is a bare time,
    // and with Hora behind it that is no date at all.
    if (alDia)
        m_fechaProximaTarea =
            leerFecha(textoFecha(ingenua(m_fechaProximaTarea.date())) + u' ' + horaTexto);
}

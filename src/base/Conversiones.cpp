#include "base/Conversiones.h"

#include "base/Error.h"

#include <QLocale>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

bool esDigito(QChar c) {
    return c >= u'0' && c <= u'9';
}

bool soloDigitos(QStringView t) {
    for (const QChar c : t)
        if (!esDigito(c)) return false;
    return true;
}

// "&H1F", "&O17": whole numbers written in base 16 or 8.
bool leerBase(QStringView t, double* out) {
    if (t.size() < 3 || t[0] != u'&') return false;
    const QChar b = t[1].toUpper();
    const int base = b == u'H' ? 16 : b == u'O' ? 8 : 0;
    if (base == 0) return false;
    bool ok = false;
    const qulonglong v = t.mid(2).toULongLong(&ok, base);
    if (!ok) return false;
    if (out) *out = double(v);
    return true;
}

// The integer part's digits: plain digits, or points between groups of
// three. Empty when the points group nothing.
QString parteEntera(QStringView t) {
    const QList<QStringView> g = t.split(u'.');
    if (g.size() == 1) return soloDigitos(t) ? t.toString() : QString();
    if (g.first().isEmpty() || g.first().size() > 3 || !soloDigitos(g.first())) return {};
    QString r = g.first().toString();
    for (qsizetype i = 1; i < g.size(); ++i) {
        if (g[i].size() != 3 || !soloDigitos(g[i])) return {};
        r += g[i];
    }
    return r;
}

bool leerNumero(const QString& text, double* out) {
    QStringView t = QStringView(text).trimmed();
    if (t.isEmpty()) return false;
    if (leerBase(t, out)) return true;
    // The euro sign in front or behind, a blank between it and the number.
    if (t.startsWith(u'€'))
        t = t.mid(1).trimmed();
    else if (t.endsWith(u'€'))
        t = t.chopped(1).trimmed();
    QString c;  // the number in the C locale's writing
    if (!t.isEmpty() && (t[0] == u'+' || t[0] == u'-')) {
        c += t[0];
        t = t.mid(1);
    }
    QString exponente;
    const qsizetype e = t.indexOf(u'e', 0, Qt::CaseInsensitive);
    if (e >= 0) {
        QStringView x = t.mid(e + 1);
        t = t.first(e);
        if (!x.isEmpty() && (x[0] == u'+' || x[0] == u'-')) {
            exponente += x[0];
            x = x.mid(1);
        }
        if (x.isEmpty() || !soloDigitos(x)) return false;
        exponente = u'e' + exponente + x.toString();
    }
    const qsizetype coma = t.indexOf(u',');
    QStringView entera = coma < 0 ? t : t.first(coma);
    QStringView decimales = coma < 0 ? QStringView() : t.mid(coma + 1);
    if (!soloDigitos(decimales)) return false;
    QString digitos = parteEntera(entera);
    if (digitos.isEmpty() && !entera.isEmpty()) {
        // No grouping: one point is a decimal point, when no comma is one.
        if (coma >= 0 || entera.count(u'.') != 1) return false;
        const qsizetype punto = entera.indexOf(u'.');
        decimales = entera.mid(punto + 1);
        entera = entera.first(punto);
        if (!soloDigitos(entera) || !soloDigitos(decimales)) return false;
        digitos = entera.toString();
    }
    if (digitos.isEmpty() && decimales.isEmpty()) return false;
    c += (digitos.isEmpty() ? u"0"_s : digitos) + u'.' + decimales + u'0' + exponente;
    bool ok = false;
    const double v = QLocale::c().toDouble(c, &ok);
    if (!ok || !std::isfinite(v)) return false;
    if (out) *out = v;
    return true;
}

template <typename T>
T redondear(double v) {
    const double r = std::nearbyint(v);  // default rounding mode: half to even
    if (r < double(std::numeric_limits<T>::min()) || r > double(std::numeric_limits<T>::max()))
        throw ErrorQuelmo(u"Desbordamiento"_s, ErrNum::Overflow);
    return static_cast<T>(r);
}

}  // namespace

bool esNumerico(const QString& text) {
    return leerNumero(text, nullptr);
}

double aNumero(const QString& text) {
    double v = 0;
    if (!leerNumero(text, &v)) throw ErrorQuelmo(u"No coinciden los tipos"_s, ErrNum::TypeMismatch);
    return v;
}

int16_t aEntero16(const QString& text) {
    return redondear<int16_t>(aNumero(text));
}

int16_t aEntero16(const QVariant& value) {
    if (value.isNull()) throw ErrorQuelmo(u"Uso no válido de Null"_s, ErrNum::InvalidUseOfNull);
    // A column's own number needs no reading ("1.125" would read as grouped).
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::LongLong ||
        value.typeId() == QMetaType::Int)
        return redondear<int16_t>(value.toDouble());
    return aEntero16(value.toString());
}

int32_t aEntero32(const QString& text) {
    return redondear<int32_t>(aNumero(text));
}

bool aBooleano(const QString& text) {
    const QString t = text.trimmed();
    if (t.compare(u"true"_s, Qt::CaseInsensitive) == 0 ||
        t.compare(u"verdadero"_s, Qt::CaseInsensitive) == 0)
        return true;
    if (t.compare(u"false"_s, Qt::CaseInsensitive) == 0 ||
        t.compare(u"falso"_s, Qt::CaseInsensitive) == 0)
        return false;
    double v = 0;
    if (!leerNumero(t, &v)) throw ErrorQuelmo(u"No coinciden los tipos"_s, ErrNum::TypeMismatch);
    return v != 0;
}

QString textoDe(const QVariant& value) {
    return value.isNull() ? QString() : value.toString();
}

QString textoSaldo(const QVariant& value) {
    const QString t = textoDe(value).trimmed();
    return esNumerico(t) && aNumero(t) >= 0 ? t : QString();
}

long long numeroDe(const QVariant& value) {
    if (value.isNull()) return 0;
    // A column's own number needs no reading ("1.125" would read as grouped).
    switch (value.typeId()) {
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::UInt:
        case QMetaType::ULongLong:
            return value.toLongLong();
        case QMetaType::Double:
            return std::isfinite(value.toDouble()) ? std::llround(value.toDouble()) : 0;
        default:
            break;
    }
    double v = 0;
    return leerNumero(value.toString(), &v) ? static_cast<long long>(std::llround(v)) : 0;
}

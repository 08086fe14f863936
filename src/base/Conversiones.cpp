#include "base/Conversiones.h"

#include "base/Error.h"

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

bool leerNumero(const QString& text, double* out) {
    const QString t = text.trimmed();
    if (t.isEmpty()) return false;
    int i = 0;
    const int n = t.size();
    if (t[i] == u'+' || t[i] == u'-') ++i;
    int digitos = 0;
    while (i < n && t[i].isDigit() && t[i].unicode() < 128) ++i, ++digitos;
    if (i < n && t[i] == u'.') {
        ++i;
        while (i < n && t[i].isDigit() && t[i].unicode() < 128) ++i, ++digitos;
    }
    if (digitos == 0) return false;
    if (i < n && (t[i] == u'e' || t[i] == u'E')) {
        ++i;
        if (i < n && (t[i] == u'+' || t[i] == u'-')) ++i;
        int exp = 0;
        while (i < n && t[i].isDigit() && t[i].unicode() < 128) ++i, ++exp;
        if (exp == 0) return false;
    }
    if (i != n) return false;
    bool ok = false;
    const double v = t.toDouble(&ok);
    if (!ok || !std::isfinite(v)) return false;
    if (out) *out = v;
    return true;
}

template <typename T>
T redondear(const QString& text) {
    double v = 0;
    if (!leerNumero(text, &v)) throw ErrorQuelmo(u"No coinciden los tipos"_s, ErrNum::TypeMismatch);
    const double r = std::nearbyint(v);  // default rounding mode: half to even
    if (r < double(std::numeric_limits<T>::min()) || r > double(std::numeric_limits<T>::max()))
        throw ErrorQuelmo(u"Desbordamiento"_s, ErrNum::Overflow);
    return static_cast<T>(r);
}

}  // namespace

bool esNumerico(const QString& text) {
    return leerNumero(text, nullptr);
}

int16_t aEntero16(const QString& text) {
    return redondear<int16_t>(text);
}

int16_t aEntero16(const QVariant& value) {
    if (value.isNull()) throw ErrorQuelmo(u"Uso no válido de Null"_s, ErrNum::InvalidUseOfNull);
    return aEntero16(value.toString());
}

int32_t aEntero32(const QString& text) {
    return redondear<int32_t>(text);
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

long long numeroDe(const QVariant& value) {
    if (value.isNull()) return 0;
    const QString t = value.toString();
    if (!esNumerico(t)) return 0;
    return static_cast<long long>(std::llround(t.trimmed().toDouble()));
}

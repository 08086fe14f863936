#pragma once

#include <QString>
#include <QVariant>
#include <cstdint>

// Conversions with the meaning the program's rules give to "numeric",
// "as a 16-bit integer" and "as a boolean". The failing ones throw
// ErrorQuelmo (type mismatch or overflow).

// Digits with an optional sign, an optional decimal point and exponent,
// and blanks around them. Empty text is not numeric.
bool esNumerico(const QString& text);

// Rounds half to even, like the platform the rules were written for.
int16_t aEntero16(const QString& text);
int16_t aEntero16(const QVariant& value);
int32_t aEntero32(const QString& text);

// "true"/"false" in any case, or any number (zero is false).
bool aBooleano(const QString& text);

// Text of a column value: null reads as empty.
QString textoDe(const QVariant& value);
// Number of a column value: null or empty reads as 0.
long long numeroDe(const QVariant& value);

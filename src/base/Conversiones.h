#pragma once

#include <QString>
#include <QVariant>
#include <cstdint>

// Conversions with the meaning the program's rules give to "numeric",
// "as a 16-bit integer" and "as a boolean". The failing ones throw
// ErrorQuelmo (type mismatch or overflow).

// Whether a text is a number: the one test wherever the rules ask for
// "numeric" (a destination, a contact's number, a typed option, a setting,
// a field of an import line). It takes what a Spanish user writes, with
// blanks (spaces, tabs) around:
//   - digits, with an optional sign in front: "600123456", "+34600", "-7";
//   - a decimal comma, or a decimal point: "12,5", "12.5", ",5";
//   - points between groups of three digits: "600.123.456", "1.234,5";
//   - an exponent: "1e3", "2,5E-2";
//   - the euro sign in front or behind: "€5", "5 €";
//   - "&H" and hexadecimal digits, "&O" and octal digits: "&HFF", "&O17".
// Empty or blank text, letters, blanks between digits and points that
// group no thousands ("1.2.3", "12.5,3") are not numeric. A point after
// one to three digits and followed by groups of three is read as grouping
// ("1.000" is a thousand); any other single point is a decimal point.
// The batch sender keeps a narrower test of its own for destinations.
bool esNumerico(const QString& text);
// The value of a numeric text by the same reading; throws ErrorQuelmo
// (type mismatch) for a text that is not numeric.
double aNumero(const QString& text);

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
// A stored balance as the screens show it: empty when unknown, or when it
// is the error code of a failed query ("-1", "-2") that an older release
// stored; never an error shown as credits.
QString textoSaldo(const QVariant& value);

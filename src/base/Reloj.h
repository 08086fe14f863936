#pragma once

#include <QDateTime>
#include <functional>

// The one source of "now" for the whole program, so that time-dependent
// rules can be tried at any instant. Local time, to the second.
namespace Reloj {
QDateTime now();
QDate today();
// Replaces the source (tests); an empty function restores the system clock.
void setSource(std::function<QDateTime()> source);
}  // namespace Reloj

// The format of every date and time stored in the database.
inline constexpr char16_t kDbDateTimeFormat[] = u"yyyy-MM-dd HH:mm:ss";
QString aTextoBD(const QDateTime& value);
// Reads a stored date-time (also a bare date); invalid when it is none.
QDateTime deTextoBD(const QString& text);

#include "base/Reloj.h"

#include <QString>

namespace {
std::function<QDateTime()>& fuente() {
    static std::function<QDateTime()> f;
    return f;
}
}  // namespace

namespace Reloj {

QDateTime now() {
    if (fuente()) return fuente()();
    QDateTime t = QDateTime::currentDateTime();
    t.setTime(QTime(t.time().hour(), t.time().minute(), t.time().second()));
    return t;
}

QDate today() {
    return now().date();
}

void setSource(std::function<QDateTime()> source) {
    fuente() = std::move(source);
}

}  // namespace Reloj

QString aTextoBD(const QDateTime& value) {
    return value.toString(QString::fromUtf16(kDbDateTimeFormat));
}

QDateTime deTextoBD(const QString& text) {
    const QString t = text.trimmed();
    QDateTime d = QDateTime::fromString(t, QString::fromUtf16(kDbDateTimeFormat));
    if (d.isValid()) return d;
    const QDate soloFecha = QDate::fromString(t, Qt::ISODate);
    if (soloFecha.isValid()) return QDateTime(soloFecha, QTime(0, 0));
    return QDateTime::fromString(t, Qt::ISODate);
}

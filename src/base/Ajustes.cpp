#include "base/Ajustes.h"

#include <QSettings>

using namespace Qt::StringLiterals;

namespace {
QSettings& almacen() {
    static QSettings s(QSettings::IniFormat, QSettings::UserScope, u"Quelmo"_s,
                       u"Quelmo Mensajes SMS"_s);
    return s;
}
QString clave(const QString& section, const QString& key) {
    return section + u'/' + key;
}
}  // namespace

namespace Ajustes {

QString getSetting(const QString& section, const QString& key, const QString& def) {
    const QVariant v = almacen().value(clave(section, key));
    return v.isValid() ? v.toString() : def;
}

void saveSetting(const QString& section, const QString& key, const QString& value) {
    almacen().setValue(clave(section, key), value);
    almacen().sync();
}

bool hasSetting(const QString& section, const QString& key) {
    return almacen().contains(clave(section, key));
}

void deleteSetting(const QString& section, const QString& key) {
    almacen().remove(clave(section, key));
    almacen().sync();
}

void clear() {
    almacen().clear();
    almacen().sync();
}

void sync() {
    almacen().sync();
}

QString fileName() {
    return almacen().fileName();
}

}  // namespace Ajustes

#include "base/Ajustes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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

// The store keeps the account and access passwords: the file is its
// owner's alone. It stands (empty if new) before every write, because the
// store rewrites it through a new file that takes the old one's mode.
void guardar() {
    const QString ruta = almacen().fileName();
    QDir().mkpath(QFileInfo(ruta).absolutePath());
    const int fd = ::open(QFile::encodeName(ruta).constData(), O_WRONLY | O_CREAT | O_CLOEXEC,
                          S_IRUSR | S_IWUSR);
    if (fd >= 0) {
        // A file of an older installation may be readable by others.
        ::fchmod(fd, S_IRUSR | S_IWUSR);
        ::close(fd);
    }
    almacen().sync();
}
}  // namespace

namespace Ajustes {

QString getSetting(const QString& section, const QString& key, const QString& def) {
    const QVariant v = almacen().value(clave(section, key));
    return v.isValid() ? v.toString() : def;
}

void saveSetting(const QString& section, const QString& key, const QString& value) {
    almacen().setValue(clave(section, key), value);
    guardar();
}

bool hasSetting(const QString& section, const QString& key) {
    return almacen().contains(clave(section, key));
}

void deleteSetting(const QString& section, const QString& key) {
    almacen().remove(clave(section, key));
    guardar();
}

void clear() {
    almacen().clear();
    guardar();
}

void sync() {
    guardar();
}

QString fileName() {
    return almacen().fileName();
}

}  // namespace Ajustes

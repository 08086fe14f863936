#include "base/Ajustes.h"

#include "base/Conversiones.h"
#include "base/Error.h"

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

// ---- Transmitter -----------------------------------------------------------

std::optional<int> intervalo() {
    const QString leido = getSetting(u"Tr"_s, u"Interval"_s);
    if (!esNumerico(leido)) return kIntervaloDefecto;
    int segundos = 0;
    try {
        segundos = aEntero16(leido);
    } catch (const ErrorQuelmo&) {
        return std::nullopt;
    }
    return segundos < kIntervaloMinimo ? kIntervaloDefecto : segundos;
}

void guardarIntervalo(const QString& segundos) {
    saveSetting(u"Tr"_s, u"Interval"_s, segundos);
}

void guardarIntervalo(int segundos) {
    guardarIntervalo(QString::number(segundos));
}

bool transmisorEncendido() {
    try {
        return aBooleano(getSetting(u"Tr"_s, u"Activo"_s, u"1"_s));
    } catch (const ErrorQuelmo&) {
        return true;
    }
}

bool transmisorEncendidoParaEnvio() {
    return aEntero16(getSetting(u"Tr"_s, u"Activo"_s, u"0"_s)) == 1;
}

void guardarTransmisorEncendido(bool encendido) {
    saveSetting(u"Tr"_s, u"Activo"_s, encendido ? u"1"_s : u"0"_s);
}

bool transmisorContinuo() {
    return getSetting(u"Tr"_s, u"Continuo"_s) == u"1"_s;
}

bool depurarRespuestas() {
    return getSetting(u"Tr"_s, u"Debug"_s) == u"RXXML"_s;
}

QString claveAcceso() {
    return getSetting(u"Tr"_s, u"pwc"_s);
}

void guardarClaveAcceso(const QString& cifrada) {
    saveSetting(u"Tr"_s, u"pwc"_s, cifrada);
}

// ---- Database --------------------------------------------------------------

QString rutaBaseDatos() {
    return getSetting(u"BD"_s, u"Path"_s);
}

void guardarRutaBaseDatos(const QString& ruta) {
    saveSetting(u"BD"_s, u"Path"_s, ruta);
}

int32_t modoBaseDatos() {
    const QString leido = getSetting(u"BD"_s, u"Mode"_s, u"16"_s);
    if (!esNumerico(leido)) return 16;
    try {
        return aEntero32(leido);
    } catch (const ErrorQuelmo&) {
        return 16;
    }
}

void guardarModoBaseDatos(int32_t modo) {
    saveSetting(u"BD"_s, u"Mode"_s, QString::number(modo));
}

// ---- Import ----------------------------------------------------------------

namespace {
QString seccion(Importacion i) {
    switch (i) {
        case Importacion::Mensajes:
            return u"Import"_s;
        case Importacion::Vigilada:
            return u"ImportA"_s;
        case Importacion::Contactos:
            return u"ImportUser"_s;
    }
    return {};
}
}  // namespace

QString rutaImportacion(Importacion i) {
    return getSetting(seccion(i), u"Path"_s);
}

void guardarRutaImportacion(Importacion i, const QString& ruta) {
    saveSetting(seccion(i), u"Path"_s, ruta);
}

QString listaImportacion(Importacion i, const QString& defecto) {
    return getSetting(seccion(i), u"Lista"_s, defecto);
}

bool anadirContactos(Importacion i) {
    try {
        return aBooleano(getSetting(seccion(i), u"AddContactos"_s, u"false"_s));
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

void guardarListaImportacion(Importacion i, const QString& lista, bool anadir) {
    saveSetting(seccion(i), u"Lista"_s, lista);
    saveSetting(seccion(i), u"AddContactos"_s, anadir ? u"1"_s : u"0"_s);
}

}  // namespace Ajustes

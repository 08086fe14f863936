#pragma once

// What the import tests share: a database with accounts 5 (principal) and
// 7, files written byte for byte, and the log without its time stamps.
#include "TestSupport.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"

#include <QDir>
#include <ctime>

#include <utime.h>

namespace import_prueba {

using namespace Qt::StringLiterals;

using prueba::bd;
using prueba::cuantos;
using prueba::escribir;
using prueba::filas;
using prueba::leer;

// A fresh database as the shared connection, with accounts 5 (principal) and 7.
inline QString baseConCuentas(TestWorld& world) {
    const QString ruta = world.baseNueva(u"import.db"_s);
    prueba::cuenta(5, u"Cuenta 5"_s, {{u"Principal"_s, 1}});
    prueba::cuenta(7, u"Cuenta 7"_s);
    return ruta;
}

// The file looks as if its writer finished a while ago.
inline void envejecer(const QString& ruta) {
    struct utimbuf t {};
    t.actime = t.modtime = ::time(nullptr) - 60;
    ::utime(QFile::encodeName(ruta).constData(), &t);
}

// The log's texts, without "{date time} - ".
inline QStringList registro() {
    QStringList t;
    for (const QString& l : estadoAplicacion().log.lines())
        t.append(l.mid(l.indexOf(u" - "_s) + 3));
    return t;
}

}  // namespace import_prueba

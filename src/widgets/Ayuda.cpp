#include "widgets/Ayuda.h"

#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

QString rutaAyuda() {
    return directorioAplicacion() + u"/ayuda/Quelmo Mensajes SMS.html"_s;
}

void msAyuda() {
    // The browser can't read inside the program, so the manual is written out
    // next to the user's data, and only when it changed.
    QFile origen(u":/quelmo/ayuda/index.html"_s);
    if (!origen.open(QIODevice::ReadOnly)) return;
    const QByteArray manual = origen.readAll();
    const QString ruta = rutaAyuda();
    QFile destino(ruta);
    const bool igual = destino.open(QIODevice::ReadOnly) && destino.readAll() == manual;
    destino.close();
    if (!igual) {
        QDir().mkpath(QFileInfo(ruta).absolutePath());
        if (!destino.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
        destino.write(manual);
        destino.close();
    }
    msAbrirUrl(ruta);
}

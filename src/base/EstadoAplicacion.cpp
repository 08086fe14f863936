#include "base/EstadoAplicacion.h"

#include "base/InterfazSinVentana.h"

#include <QDir>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

int16_t versionCodigo() {
    return int16_t(QString::number(kVersionMajor)
                       .append(QString::number(kVersionMinor))
                       .append(QString::number(kVersionRevision))
                       .toInt());
}

QString tituloAplicacion() {
    return u"Quelmo Mensajes SMS (v.%1.%2.%3)"_s.arg(kVersionMajor)
        .arg(kVersionMinor)
        .arg(kVersionRevision);
}

QString identificacionAplicacion() {
    return u"Quelmo Mensajes SMS - "_s + QString::number(versionCodigo());
}

void EstadoAplicacion::reset() {
    giMaxLote = 0;
    gsClaveAcceso = QString::fromUtf16(kSinClave);
    gsClaveIntroducida.clear();
    gbEnviando = false;
    gbImportado = false;
    MovilCuenta.clear();
    gsVersionPlataforma.clear();
    gsSaldoCuenta.clear();
    gsDestinos.clear();
    log.clear();
}

EstadoAplicacion& estadoAplicacion() {
    static EstadoAplicacion s;
    return s;
}

InterfazUsuario& ui() {
    static InterfazSinVentana porDefecto;
    EstadoAplicacion& s = estadoAplicacion();
    return s.ui ? *s.ui : porDefecto;
}

void establecerInterfaz(InterfazUsuario* ui) {
    estadoAplicacion().ui = ui;
}

QString directorioAplicacion() {
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(dir);
    return dir;
}

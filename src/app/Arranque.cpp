#include "app/Arranque.h"

#include "base/Ajustes.h"
#include "base/Cifrado.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"

#include <QCoreApplication>
#include <QLockFile>

using namespace Qt::StringLiterals;

void nombrarAplicacion() {
    QCoreApplication::setOrganizationName(u"Quelmo"_s);
    QCoreApplication::setApplicationName(u"Quelmo Mensajes SMS"_s);
    QCoreApplication::setApplicationVersion(
        u"%1.%2.%3"_s.arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision));
}

QString rutaBloqueoInstancia() {
    return directorioAplicacion() + u"/quelmo-sms.lock"_s;
}

bool adquirirInstanciaUnica(QLockFile& lock) {
    lock.setStaleLockTime(0);
    return lock.tryLock(0);
}

void cargarClaveAcceso() {
    EstadoAplicacion& g = estadoAplicacion();
    g.gsClaveAcceso = QString::fromUtf16(kSinClave);
    try {
        const QString guardada = Ajustes::claveAcceso();
        if (!guardada.isEmpty()) g.gsClaveAcceso = msCifrarClave(guardada, false);
    } catch (const ErrorQuelmo&) {
        // A stored password that can't be decoded leaves the gate open, as
        // if none had been set.
    }
}

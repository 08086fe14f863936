#include "base/Interruptor.h"

#include "base/Ajustes.h"
#include "base/Conversiones.h"
#include "base/Error.h"

using namespace Qt::StringLiterals;

Interruptor& Interruptor::instancia() {
    static Interruptor interruptor;
    return interruptor;
}

bool Interruptor::paraVentana() const {
    try {
        return aBooleano(Ajustes::getSetting(u"Tr"_s, u"Activo"_s, u"1"_s));
    } catch (const ErrorQuelmo&) {
        // A value the user mangled by hand shows as on, as if never written.
        return true;
    }
}

bool Interruptor::paraEnvio() const {
    // A value that is no number throws: the run logs it and sends nothing.
    return aEntero16(Ajustes::getSetting(u"Tr"_s, u"Activo"_s, u"0"_s)) == 1;
}

void Interruptor::establecer(bool activo) {
    Ajustes::saveSetting(u"Tr"_s, u"Activo"_s, activo ? u"1"_s : u"0"_s);
    Q_EMIT cambiado(activo);
}

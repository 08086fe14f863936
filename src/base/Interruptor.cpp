#include "base/Interruptor.h"

#include "base/Conversions.h"
#include "base/Error.h"
#include "base/Settings.h"

using namespace Qt::StringLiterals;

Interruptor& Interruptor::instancia() {
    static Interruptor interruptor;
    return interruptor;
}

bool Interruptor::paraVentana() const {
    try {
        return aBooleano(Settings::getSetting(u"Tr"_s, u"Activo"_s, u"1"_s));
    } catch (const QuelmoError&) {
        // A value the user mangled by hand shows as on, as if never written.
        return true;
    }
}

bool Interruptor::paraEnvio() const {
    // A value that is no number throws: the run logs it and sends nothing.
    return aEntero16(Settings::getSetting(u"Tr"_s, u"Activo"_s, u"0"_s)) == 1;
}

void Interruptor::establecer(bool activo) {
    Settings::saveSetting(u"Tr"_s, u"Activo"_s, activo ? u"1"_s : u"0"_s);
    Q_EMIT cambiado(activo);
}

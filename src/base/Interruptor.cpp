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
    return Ajustes::transmisorEncendido();
}

bool Interruptor::paraEnvio() const {
    return Ajustes::transmisorEncendidoParaEnvio();
}

void Interruptor::establecer(bool activo) {
    Ajustes::guardarTransmisorEncendido(activo);
    Q_EMIT cambiado(activo);
}

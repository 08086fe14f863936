#pragma once

#include "base/Hecho.h"

// How a screen tells the user what a routine refused: the refusal's box,
// nothing when it was done. Returns whether it was done.
bool mostrar(const Hecho& hecho, const QString& titulo = QString());
template <class T>
bool mostrar(const Resultado<T>& resultado, const QString& titulo = QString()) {
    return resultado.ok() || mostrar(resultado.hecho(), titulo);
}

// The usual question before a routine that removes or replaces something:
// Yes and No, No by default. True when the user said Yes.
bool confirmar(const QString& pregunta, const QString& titulo = QString());

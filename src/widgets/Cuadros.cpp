#include "widgets/Cuadros.h"

#include "base/EstadoAplicacion.h"

bool mostrar(const Hecho& hecho, const QString& titulo) {
    if (hecho.ok()) return true;
    ui().msgBox(hecho.motivo(), hecho.estilo(), titulo);
    return false;
}

bool confirmar(const QString& pregunta, const QString& titulo) {
    return ui().msgBox(pregunta, Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2, titulo) ==
           Msg::Yes;
}

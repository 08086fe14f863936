#include "base/InterfazUsuario.h"

#include "base/EstadoAplicacion.h"
#include "base/InterfazSinVentana.h"

using namespace Qt::StringLiterals;

namespace Msg {
int defaultAnswer(int style) {
    const int buttons = style & 7;
    const int which = (style & DefaultButton3) ? 2 : (style & DefaultButton2) ? 1 : 0;
    switch (buttons) {
        case YesNoCancel:
            return which == 0 ? Yes : which == 1 ? No : Cancel;
        case YesNo:
            return which == 0 ? Yes : No;
        case 1:
            return which == 0 ? Ok : Cancel;  // OK/Cancel
        case 5:
            return which == 0 ? 4 : Cancel;  // Retry/Cancel
        default:
            return Ok;
    }
}
}  // namespace Msg

void msAbrirUrl(const QString& target) {
    if (target.isEmpty()) return;
    ui().openUrl(target);
}

void InterfazUsuario::seleccionarBaseDatos(const QString& motivo, const QString& aviso) {
    if (!aviso.isEmpty()) msgBox(aviso, Msg::Critical);
    abrirSeleccionBaseDatos(motivo);
}

void InterfazUsuario::abrirSeleccionBaseDatos(const QString& motivo) {
    avisoSinVentana(u"[pantalla] No hay una base de datos utilizable "_s + motivo +
                    u". Sin ventana no se puede mostrar la selección de base de datos."_s);
}

void InterfazUsuario::altaCuenta() {
    avisoSinVentana(
        u"[pantalla] No hay una cuenta principal utilizable; sin ventana no se puede "
        u"configurar una cuenta."_s);
}

bool InterfazUsuario::reintentarBaseOcupada(const QString& ruta) {
    return msgBox(u"La Base de Datos está siendo usada por otro programa:\n"_s + ruta +
                      u"\n\n¿Desea volver a intentarlo?"_s,
                  Msg::YesNo + Msg::Exclamation) == Msg::Yes;
}

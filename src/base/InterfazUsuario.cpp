#include "base/InterfazUsuario.h"

#include "base/EstadoAplicacion.h"

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

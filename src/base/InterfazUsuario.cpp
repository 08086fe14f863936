#include "base/InterfazUsuario.h"

#include "base/Ajustes.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazSinVentana.h"
#include "base/Pantallas.h"

#include <QCoreApplication>

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

using namespace Qt::StringLiterals;

void InterfazUsuario::showSelectDatabase() {
    if (Pantallas::abrir(u"frmSelectDB"_s)) return;
    avisoSinVentana(u"[pantalla] No hay una base de datos utilizable (BD/Path: \""_s +
                    Ajustes::getSetting(u"BD"_s, u"Path"_s) +
                    u"\"). Sin ventana no se puede mostrar la selección de base de datos."_s);
}

void InterfazUsuario::showFirstRunSetup() {
    if (Pantallas::abrir(u"frmTipoRegistro"_s)) return;
    avisoSinVentana(
        u"[pantalla] No hay una cuenta principal utilizable; sin ventana no se puede "
        u"configurar una cuenta."_s);
}

void InterfazUsuario::processEvents() {
    if (QCoreApplication::instance()) QCoreApplication::processEvents();
}

void msAbrirUrl(const QString& target) {
    if (target.isEmpty()) return;
    ui().openUrl(target);
}

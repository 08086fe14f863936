#include "app/mdoMain.h"

#include "base/Ajustes.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "db/Conexion.h"
#include "db/mdoDB.h"

using namespace Qt::StringLiterals;

namespace {
// After the selection screen: the file it left must be usable.
void seleccionarOTerminar() {
    msMostrarSeleccionBD();
    const QString elegido = Ajustes::rutaBaseDatos();
    if (!msValidarBD(elegido)) ui().terminateWithoutDatabase();
    // The screen leaves the connection on its file; make sure it is open.
    if (!Conexion().isOpen() || Conexion().path() != elegido) msAbrirBD(elegido);
}
}  // namespace

void msAbrirBaseInicial() {
    const QString porDefecto = rutaBaseDefecto();
    const QString guardada = Ajustes::rutaBaseDatos();

    if (guardada.isEmpty()) {
        // First run: an old-schema default file is not upgraded here; it
        // leads to the selection screen, which has its own upgrade path.
        if (msValidarBD(porDefecto)) {
            Ajustes::guardarRutaBaseDatos(porDefecto);
            msAbrirBD(porDefecto);
        } else {
            seleccionarOTerminar();
        }
        return;
    }
    // A saved file held by another process is busy, not gone: wait for it
    // while the user wants to, and never trade it for another file.
    bool abierta = msAbrirBD(guardada);
    while (!abierta && Conexion().openWasBusy()) {
        msLog(u"La Base de Datos está bloqueada por otro programa: "_s + guardada);
        if (!ui().reintentarBaseOcupada(guardada)) ui().terminateWithoutDatabase();
        abierta = msAbrirBD(guardada);
    }
    if (abierta) {
        // The saved file opened: upgrade it when it lacks a current column.
        if (!msValidarBD(guardada)) {
            msActualizarBD(guardada);
            msLog(u"Proceso de actualización de Base de Datos completado."_s);
        }
        Ajustes::guardarRutaBaseDatos(guardada);
        return;
    }
    // The saved file is gone or broken: silently the default file,
    // neither tested nor upgraded.
    if (msAbrirBD(porDefecto)) {
        Ajustes::guardarRutaBaseDatos(porDefecto);
        return;
    }
    seleccionarOTerminar();
}

bool msComprobarAcceso() {
    EstadoAplicacion& g = estadoAplicacion();
    try {
        g.gsClaveIntroducida.clear();
        if (g.gsClaveAcceso == QString::fromUtf16(kSinClave)) return true;
        g.gsClaveIntroducida = ui().askPassword();
        // Case-sensitive; no count of attempts, no message.
        return g.gsClaveAcceso == g.gsClaveIntroducida;
    } catch (...) {
        return false;
    }
}

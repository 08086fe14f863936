#include "accounts/mdoCuentas.h"

#include "base/AppState.h"
#include "base/Conversions.h"
#include "base/Despliegue.h"
#include "base/Error.h"
#include "base/Pantallas.h"
#include "base/UserInterface.h"
#include "db/Conexion.h"
#include "delivery/mdoSendRavion.h"

#include <QUrl>

using namespace Qt::StringLiterals;

int16_t msCanalPrincipal() {
    try {
        const QueryResult r = Conexion().query(u"select canal from canales where principal=1"_s);
        if (r.isEmpty()) return 0;
        return aEntero16(r.value(0, 0));
    } catch (const QuelmoError&) {
        return 0;
    }
}

void msRecarga() {
    try {
        const QueryResult r = Conexion().query(u"select * from canales where Principal=1"_s);
        if (r.isEmpty()) {
            ui().msgBox(u"No dispone de ninguna Cuenta en la aplicación"_s, Msg::Exclamation);
            return;
        }
        // A user name with "&" or a blank must reach the page whole.
        QString web = Despliegue::webSegura();
        while (web.endsWith(u'/')) web.chop(1);
        msAbrirUrl(web + u"/informacion/recarga_sms.php?u="_s +
                   QString::fromLatin1(QUrl::toPercentEncoding(textoDe(r.value(0, u"usuario"_s)))));
    } catch (const QuelmoError& e) {
        if (e.number() == ErrNum::ItemNotFound) msBaseNoValida();
    }
}

void msPrimeraVez() {
    try {
        const QueryResult r = Conexion().query(u"select * from canales where principal=1"_s);
        if (r.isEmpty()) {
            ui().showFirstRunSetup();
            return;
        }
        const QString usuario = textoDe(r.value(0, u"usuario"_s));
        const QString clave = textoDe(r.value(0, u"clave"_s));
        // One exchange per start refreshes the balance.
        if (!usuario.isEmpty() && !clave.isEmpty()) {
            SendAutCuenta(aEntero16(r.value(0, u"canal"_s)));
            return;
        }
        // An account without its credentials: the set-up completes it.
        Pantallas::abrir(u"frmNewCanal"_s);
        ui().showFirstRunSetup();
    } catch (const QuelmoError&) {
        // A database without the accounts table is caught by the start-up checks.
    }
}

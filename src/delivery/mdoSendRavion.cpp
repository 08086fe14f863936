#include "delivery/mdoSendRavion.h"

#include "app/AppState.h"
#include "app/Conversions.h"
#include "app/Error.h"
#include "app/Settings.h"
#include "app/mdoMain.h"
#include "import/mdoImport.h"

using namespace Qt::StringLiterals;

void SendMessage() {
    AppState& g = appState();
    try {
        // 1. Unset means off here (the main window shows it on).
        if (aEntero16(Settings::getSetting(u"Tr"_s, u"Activo"_s, u"0"_s)) != 1) return;
        // 2-4.
        g.gsVersionPlataforma.clear();
        g.log.clear();
        g.gbEnviando = true;
        // 5.
        const QString ruta = Settings::getSetting(u"ImportA"_s, u"Path"_s);
        QString lista = Settings::getSetting(u"Import"_s, u"Lista"_s, u"-1"_s);
        if (lista.isEmpty()) lista = u"-1"_s;
        const bool addContactos =
            aBooleano(Settings::getSetting(u"Import"_s, u"AddContactos"_s, u"false"_s));
        // 6. The flag goes up whether or not the file held anything.
        if (ruta.size() > 3) {
            msImportarFichero(ruta, false, true, lista, addContactos);
            g.gbImportado = true;
        }
        // 7-8. Ascending by account code; an account's failure stays in it.
        const QueryResult cuentas =
            g.Conexion.query(u"select canal from envios group by canal order by canal"_s);
        for (int i = 0; i < cuentas.recordCount(); ++i) {
            msEnviarLote(aEntero16(cuentas.value(i, 0)), g.gbImportado);
            ui().processEvents();
        }
        // 9.
        g.gbEnviando = false;
        g.gbImportado = false;
        // 10.
        msAvisoVersionLog();
    } catch (const QuelmoError& e) {
        // 11. A failure before step 9 leaves gbEnviando up until a later run.
        msLog(u"Error en SendMessage: "_s + e.description());
    } catch (const std::exception& e) {
        msLog(u"Error en SendMessage: "_s + QString::fromUtf8(e.what()));
    }
}

void msEnviarLote(int16_t /*canal*/, bool /*importado*/) {}

void msAvisoVersionLog() {}

int16_t msMaxLote() { return 25; }

QString msConsultarSaldo(const QString& /*usuario*/, const QString& /*clave*/, QString& /*host*/) {
    return u"-2"_s;
}

QString SendAutCuenta(int16_t /*canal*/) { return u"0"_s; }

void msAvisoVersion() {}

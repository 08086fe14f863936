#include "app/mdoMain.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Conversions.h"
#include "app/Error.h"
#include "app/Settings.h"
#include "db/mdoDB.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

QString directorioAplicacion() {
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(dir);
    return dir;
}

QString rutaBaseDefecto() {
    return directorioAplicacion() + u"/mensajes.db"_s;
}

QString rutaBaseVacia() {
    const QString junto = QCoreApplication::applicationDirPath();
    const QStringList candidatas = {
        junto + u"/../share/quelmo-sms/mensajes.db"_s,
        junto + u"/mensajes-vacia.db"_s,
        QStringLiteral(QUELMO_INSTALL_SHARE_DIR "/mensajes.db"),
    };
    for (const QString& c : candidatas)
        if (QFileInfo(c).isFile()) return QFileInfo(c).canonicalFilePath();
    return QString();
}

bool prepararBaseInicial() {
    const QString destino = rutaBaseDefecto();
    if (QFileInfo::exists(destino)) return true;
    const QString origen = rutaBaseVacia();
    if (origen.isEmpty() || !QFile::copy(origen, destino)) return false;
    QFile::setPermissions(destino, QFile::ReadOwner | QFile::WriteOwner);
    return true;
}

bool msAbrirBD(const QString& path) {
    AppState& g = appState();
    // 1. The share mode: SQLite connections share the file anyway, the
    // value is kept for what reads it.
    const QString modoTexto = Settings::getSetting(u"BD"_s, u"Mode"_s, u"16"_s);
    int32_t modo = 16;
    if (esNumerico(modoTexto)) {
        try {
            modo = aEntero32(modoTexto);
        } catch (const QuelmoError&) {
            modo = 16;
        }
    }
    // 3-6. Close the old connection and open the new one.
    g.Conexion.close();
    g.gsCadenaConexion = u"Data Source="_s + path;
    // 7. A failed open leaves the connection closed.
    if (!g.Conexion.open(path)) return false;
    // 8.
    Settings::saveSetting(u"BD"_s, u"Mode"_s, QString::number(modo));
    return true;
}

bool msValidarBD(const QString& path) {
    Database privada;
    if (!privada.open(path)) return false;
    // The columns that arrived last tell the current schema.
    try {
        privada.query(
            u"Select Remitente,remopc,tini,tfin,imptextos,movil from Canales where "
            u"Principal=1"_s);
        privada.query(u"SELECT * FROM Automaticos WHERE tareaProgramada=true"_s);
        privada.query(u"SELECT crem FROM HEnvios"_s);
    } catch (const DbError&) {
        return false;
    }
    return true;
}

namespace {
// After the selection screen: the file it left must be usable.
void seleccionarOTerminar() {
    ui().showSelectDatabase();
    const QString elegido = Settings::getSetting(u"BD"_s, u"Path"_s);
    if (!msValidarBD(elegido)) ui().terminateWithoutDatabase();
    // The screen leaves the connection on its file; make sure it is open.
    if (!appState().Conexion.isOpen() || appState().Conexion.path() != elegido) msAbrirBD(elegido);
}
}  // namespace

void msAbrirBaseInicial() {
    const QString porDefecto = rutaBaseDefecto();
    const QString guardada = Settings::getSetting(u"BD"_s, u"Path"_s);

    if (guardada.isEmpty()) {
        // 1. First run: an old-schema default file is not upgraded here; it
        // leads to the selection screen, which has its own upgrade path.
        if (msValidarBD(porDefecto)) {
            Settings::saveSetting(u"BD"_s, u"Path"_s, porDefecto);
            msAbrirBD(porDefecto);
        } else {
            seleccionarOTerminar();
        }
        return;
    }
    if (msAbrirBD(guardada)) {
        // 2. The saved file opened: upgrade it when it lacks a current column.
        if (!msValidarBD(guardada)) {
            msActualizarBD(guardada);
            msLog(u"Proceso de actualización de Base de Datos completado."_s);
        }
        Settings::saveSetting(u"BD"_s, u"Path"_s, guardada);
        return;
    }
    // 3. The saved file is gone or broken: silently the default file,
    // neither tested nor upgraded.
    if (msAbrirBD(porDefecto)) {
        Settings::saveSetting(u"BD"_s, u"Path"_s, porDefecto);
        return;
    }
    seleccionarOTerminar();
}

bool msComprobarAcceso() {
    AppState& g = appState();
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

QString msCifrarClave(const QString& text, bool encode) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const int codigo = c.unicode() + (encode ? 10 : -10);
        // Stored passwords are single-byte text.
        if (c.unicode() > 255 || codigo < 0 || codigo > 255)
            throw QuelmoError(u"Llamada a procedimiento o argumento no válido"_s,
                              ErrNum::InvalidProcedureCall);
        out.append(QChar(codigo));
    }
    return out;
}

void msAbrirUrl(const QString& target) {
    if (target.isEmpty()) return;
    ui().openUrl(target);
}

int16_t msCanalPrincipal() {
    try {
        const QueryResult r =
            appState().Conexion.query(u"select canal from canales where principal=1"_s);
        if (r.isEmpty()) return 0;
        return aEntero16(r.value(0, 0));
    } catch (const QuelmoError&) {
        return 0;
    }
}

QString marcaTiempoLog() {
    return Clock::now().toString(u"dd/MM/yyyy HH:mm:ss"_s);
}

QString msEscaparBuffer(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const int codigo = c.unicode();
        if (codigo < 32 || codigo > 127)
            out += u'<' + QString::number(codigo) + u'>';
        else
            out += c;
    }
    return out;
}

void msLog(const QString& text) {
    try {
        const QString t = text.startsWith(u"Buffer: "_s) ? msEscaparBuffer(text) : text;
        appState().log.append(marcaTiempoLog() + u" - "_s + t);
        // The yield that lets the user act during a transmitter run.
        ui().processEvents();
    } catch (...) {
    }
}

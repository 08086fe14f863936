#include "db/Conexion.h"

#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/RegistroActividad.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

BaseDatos& Conexion() {
    static BaseDatos conexion;
    // Logged from the event loop, not from inside the statement that found it.
    [[maybe_unused]] static const auto aviso =
        (conexion.avisarSiSePierde(),
         QObject::connect(
             &Avisos::instancia(), &Avisos::baseDatosPerdida, &Avisos::instancia(),
             [](const QString& ruta) { msLog(textoBaseDatosPerdida(ruta)); },
             Qt::QueuedConnection));
    return conexion;
}

QString textoBaseDatosPerdida(const QString& ruta) {
    return u"La base de datos "_s + ruta +
           u" ha sido borrada o sustituida por otro programa mientras estaba abierta. Para no "
           u"perder nada, Quelmo Mensajes SMS ha dejado de escribir en ella."_s;
}

QString& gsCadenaConexion() {
    static QString cadena;
    return cadena;
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
    // The share mode: SQLite connections share the file anyway, the
    // value is kept for what reads it.
    const int32_t modo = Ajustes::modoBaseDatos();
    Conexion().close();
    gsCadenaConexion() = u"Data Source="_s + path;
    // A failed open leaves the connection closed.
    if (!Conexion().open(path)) return false;
    Ajustes::guardarModoBaseDatos(modo);
    return true;
}

bool msValidarBD(const QString& path) {
    BaseDatos privada;
    if (!privada.open(path)) return false;
    // The columns that arrived last tell the current schema.
    try {
        privada.query(
            u"Select Remitente,remopc,tini,tfin,imptextos,movil from Canales where "
            u"Principal=1"_s);
        privada.query(u"SELECT * FROM Automaticos WHERE tareaProgramada=true"_s);
        privada.query(u"SELECT ProximaTarea, RevisarTarea FROM Automaticos LIMIT 0"_s);
        privada.query(u"SELECT crem FROM HEnvios"_s);
        privada.query(u"SELECT ClaveNombre FROM Abonados LIMIT 0"_s);
        privada.query(u"SELECT ClaveComentario FROM Abonados LIMIT 0"_s);
        privada.query(u"SELECT ClaveNombre, Destinatarios, ClaveUltima FROM Automaticos LIMIT 0"_s);
        privada.query(u"SELECT Filas FROM EnviosPorCanal LIMIT 0"_s);
    } catch (const ErrorBD&) {
        return false;
    }
    return true;
}

QString textoBaseNoValida() {
    return u"La Base de Datos Seleccionada no es válida\nPor favor seleccione la Base "
           u"de Datos correcta de Quelmo Mensajes"_s;
}

namespace {
void pedirSeleccion(const QString& aviso) {
    // Without a window, why the last file could not be used is all there is.
    const QString motivo = Conexion().motivoFallo();
    ui().seleccionarBaseDatos(u"(BD/Path: \""_s + Ajustes::rutaBaseDatos() + u"\")"_s +
                                  (motivo.isEmpty() ? QString() : u": "_s + motivo),
                              aviso);
}
}  // namespace

void msBaseNoValida() {
    pedirSeleccion(textoBaseNoValida());
}

void msMostrarSeleccionBD() {
    pedirSeleccion(QString());
}

int16_t msCanalPrincipal() {
    try {
        const ResultadoConsulta r =
            Conexion().query(u"select canal from canales where principal=1"_s);
        if (r.isEmpty()) return 0;
        return aEntero16(r.value(0, 0));
    } catch (const ErrorQuelmo&) {
        return 0;
    }
}

#include "delivery/Transporte.h"

#include "base/Despliegue.h"

#include <curl/curl.h>
#include <QFile>
#include <QRegularExpression>
#include <QUrl>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace Transporte {

namespace {

struct Destino {
    QByteArray* cuerpo;
    qsizetype maximo;
};

// Stops the transfer (by taking fewer bytes than given) at the limit.
size_t acumular(char* datos, size_t tam, size_t n, void* destino) {
    auto* d = static_cast<Destino*>(destino);
    if (d->cuerpo->size() + qsizetype(tam * n) > d->maximo) return 0;
    d->cuerpo->append(datos, qsizetype(tam * n));
    return tam * n;
}

bool iniciar() {
    static const bool iniciado = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return iniciado;
}

Fallo clasificar(CURLcode rc) {
    switch (rc) {
        case CURLE_OK:
            return Fallo::Ninguno;
        case CURLE_ABORTED_BY_CALLBACK:
            return Fallo::Abandonado;
        case CURLE_COULDNT_RESOLVE_HOST:
            return Fallo::Nombre;
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_PROXY:
            return Fallo::Proxy;
        case CURLE_COULDNT_CONNECT:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
            return Fallo::Conexion;
        case CURLE_OPERATION_TIMEDOUT:
            return Fallo::Tiempo;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
            return Fallo::Certificado;
        case CURLE_SSL_CONNECT_ERROR:
            return Fallo::Tls;
        case CURLE_WRITE_ERROR:
            return Fallo::Demasiado;
        default:
            return Fallo::Otro;
    }
}

QString entorno(const QString& nombre) {
    return QString::fromLocal8Bit(qgetenv(nombre.toLatin1().constData())).trimmed();
}

// The first of the environment's variables that is set.
QString entorno(const QStringList& nombres) {
    for (const QString& n : nombres)
        if (const QString v = entorno(n); !v.isEmpty()) return v;
    return QString();
}

// A no_proxy list: names or addresses separated by commas or blanks; "*"
// is every host, and a name covers the hosts below it as well.
bool excluido(const QString& host, const QString& lista) {
    static const QRegularExpression separador(u"[,\\s]+"_s);
    const QString h = host.toLower();
    for (QString e : lista.split(separador, Qt::SkipEmptyParts)) {
        e = e.toLower();
        if (e == u"*"_s) return true;
        while (e.startsWith(u'.')) e.remove(0, 1);
        if (e.startsWith(u'[') && e.endsWith(u']')) e = e.mid(1, e.size() - 2);
        if (!e.isEmpty() && (h == e || h.endsWith(u'.' + e))) return true;
    }
    return false;
}

QUrl direccion(const QString& url) {
    const QString t = url.trimmed();
    // The library takes an address without scheme as http.
    return QUrl(t.contains(u"://"_s) ? t : u"http://"_s + t);
}

// How a proxy is named in the log: never with its credentials.
QString nombreProxy(const QString& proxy) {
    return direccion(proxy).adjusted(QUrl::RemoveUserInfo | QUrl::StripTrailingSlash).toString();
}

// The deployment's authorities beside the system's store: the library's own
// bundle and the extra file, as one. False, with the reason, when the file
// can't be read: an exchange that was told to trust it must not go on
// without it.
bool leerAutoridades(CURL* curl, const QString& fichero, QByteArray& pem, QString& motivo) {
    QFile extra(fichero);
    if (!extra.open(QIODevice::ReadOnly)) {
        motivo = u"no se pudo leer el fichero de autoridades de certificación "_s + fichero +
                 u" ("_s + extra.errorString() + u')';
        return false;
    }
    char* sistema = nullptr;
    curl_easy_getinfo(curl, CURLINFO_CAINFO, &sistema);
    if (sistema) {
        QFile f(QString::fromLocal8Bit(sistema));
        if (f.open(QIODevice::ReadOnly)) pem = f.readAll() + '\n';
    }
    pem += extra.readAll();
    return true;
}

// Through a proxy, what the proxy said is its own: the answer to the tunnel
// of an https exchange, the 403 and 407 it gives in place of a plain
// exchange's reply, a connection to it that could not be made, and a
// tunnel that it never opened.
void culparProxy(Respuesta& r, CURLcode rc, long tunel, bool segura) {
    const long estado = tunel >= 300 ? tunel : (!segura ? r.estado : 0);
    const bool sinTunel = segura && tunel == 0 && rc != CURLE_OK &&
                          rc != CURLE_OPERATION_TIMEDOUT && rc != CURLE_ABORTED_BY_CALLBACK;
    if (estado == 407 || estado == 403 || tunel >= 300) {
        r.estadoProxy = estado;
        r.fallo = estado == 407 ? Fallo::ProxyCredenciales : Fallo::Proxy;
    } else if (rc == CURLE_COULDNT_CONNECT || rc == CURLE_COULDNT_RESOLVE_PROXY || sinTunel) {
        r.fallo = Fallo::Proxy;
    }
}

}  // namespace

Peticion peticion(const QString& url, const QByteArray& cuerpo) {
    Peticion p;
    p.url = url;
    p.cuerpo = cuerpo;
    p.segundosConexion = Despliegue::segundosConexion();
    p.segundosTotal = Despliegue::segundosTotal();
    p.proxy = Despliegue::proxy();
    p.sinProxy = Despliegue::sinProxy();
    p.autoridades = Despliegue::autoridadesCA();
    return p;
}

bool esSegura(const QString& url) {
    return url.trimmed().startsWith(u"https://"_s, Qt::CaseInsensitive);
}

QString proxyPara(const QString& url, const QString& proxy, const QString& sinProxy) {
    const QUrl u = direccion(url);
    const QString esquema = u.scheme().toLower();
    QString elegido;
    if (!proxy.isEmpty()) {
        if (proxy.compare(u"directo"_s, Qt::CaseInsensitive) == 0) return QString();
        elegido = proxy;
    } else {
        const QString nombre = esquema + u"_proxy"_s;
        QStringList nombres{nombre};
        if (esquema != u"http"_s) nombres << nombre.toUpper();
        nombres << u"all_proxy"_s << u"ALL_PROXY"_s;
        elegido = entorno(nombres);
    }
    if (elegido.isEmpty()) return QString();
    const QString lista =
        sinProxy.isEmpty() ? entorno(QStringList{u"no_proxy"_s, u"NO_PROXY"_s}) : sinProxy;
    return excluido(u.host(), lista) ? QString() : elegido;
}

Respuesta enviar(const Peticion& p) {
    Respuesta r;
    CURL* curl = iniciar() ? curl_easy_init() : nullptr;
    CURLM* multi = curl ? curl_multi_init() : nullptr;
    if (!multi) {
        if (curl) curl_easy_cleanup(curl);
        r.textoLibreria = u"no se pudo preparar la conexión"_s;
        return r;
    }
    const QByteArray destinoUrl = p.url.trimmed().toUtf8();
    const QString proxy = proxyPara(p.url, p.proxy, p.sinProxy);
    const QByteArray proxyUrl = proxy.toUtf8();
    if (!proxy.isEmpty()) r.proxy = nombreProxy(proxy);
    QByteArray autoridades;
    if (!p.autoridades.isEmpty() &&
        !leerAutoridades(curl, p.autoridades, autoridades, r.textoLibreria)) {
        curl_easy_cleanup(curl);
        curl_multi_cleanup(multi);
        r.fallo = Fallo::Certificado;
        return r;
    }
    const QByteArray tipo = "Content-Type: " + p.tipo;
    char error[CURL_ERROR_SIZE] = {};
    Destino destino{&r.cuerpo, p.maximo};
    curl_slist* cabeceras = curl_slist_append(nullptr, tipo.constData());
    // Large batches: no "Expect: 100-continue" round trip; except through a
    // proxy in plain http, which may refuse or ask for credentials before
    // it reads a body: waiting for its word keeps that word from being lost
    // to a connection reset over the unread body.
    const bool esperarPermiso = !proxy.isEmpty() && !esSegura(p.url);
    cabeceras = curl_slist_append(cabeceras, esperarPermiso ? "Expect: 100-continue" : "Expect:");
    curl_easy_setopt(curl, CURLOPT_URL, destinoUrl.constData());
    // Never another protocol, and never a redirect (which could lead an
    // https exchange to a plain one).
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 0L);
    // The library's defaults, said here so that no build can loosen them.
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);
    if (!autoridades.isEmpty()) {
        curl_blob blob{autoridades.data(), size_t(autoridades.size()), CURL_BLOB_NOCOPY};
        curl_easy_setopt(curl, CURLOPT_CAINFO_BLOB, &blob);
    }
    // Our choice, already made: an empty proxy keeps the library from
    // reading the environment again, and no exclusions apply on top.
    curl_easy_setopt(curl, CURLOPT_PROXY, proxyUrl.constData());
    curl_easy_setopt(curl, CURLOPT_NOPROXY, "");
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, cabeceras);
    // A proxy answers within a round trip; not every platform behind it
    // says "100 Continue", so the body goes anyway soon after.
    curl_easy_setopt(curl, CURLOPT_EXPECT_100_TIMEOUT_MS, 250L);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, p.cuerpo.constData());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(p.cuerpo.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &acumular);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &destino);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, error);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, long(p.segundosConexion));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, long(p.segundosTotal));
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_multi_add_handle(multi, curl);

    // Driven in short polls, so that a cancellation ends the transfer
    // within a tenth of a second whatever the platform does.
    CURLcode rc = CURLE_OK;
    bool terminado = false;
    while (!terminado) {
        if (p.cancelacion.cancelada()) {
            rc = CURLE_ABORTED_BY_CALLBACK;
            break;
        }
        int activos = 0;
        const CURLMcode mc = curl_multi_perform(multi, &activos);
        if (mc != CURLM_OK) {
            rc = CURLE_FAILED_INIT;
            std::snprintf(error, sizeof error, "%s", curl_multi_strerror(mc));
            break;
        }
        int pendientes = 0;
        while (CURLMsg* m = curl_multi_info_read(multi, &pendientes)) {
            if (m->msg == CURLMSG_DONE) {
                rc = m->data.result;
                terminado = true;
            }
        }
        if (!terminado) curl_multi_poll(multi, nullptr, 0, 100, nullptr);
    }
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &r.estado);
    long tunel = 0;
    curl_easy_getinfo(curl, CURLINFO_HTTP_CONNECTCODE, &tunel);
    curl_multi_remove_handle(multi, curl);
    curl_slist_free_all(cabeceras);
    curl_easy_cleanup(curl);
    curl_multi_cleanup(multi);

    r.fallo = clasificar(rc);
    if (rc != CURLE_OK)
        r.textoLibreria = QString::fromUtf8(error[0] ? error : curl_easy_strerror(rc));
    else if (r.estado < 200 || r.estado > 299)
        r.fallo = Fallo::Estado;
    if (!proxy.isEmpty()) culparProxy(r, rc, tunel, esSegura(p.url));
    return r;
}

bool culpaDeLaRed(const Respuesta& r) {
    switch (r.fallo) {
        case Fallo::Nombre:
        case Fallo::Conexion:
        case Fallo::Tiempo:
        case Fallo::Otro:
            return true;
        default:
            return false;
    }
}

QString descripcion(const Respuesta& r) {
    QString linea;
    switch (r.fallo) {
        case Fallo::Ninguno:
            return QString();
        case Fallo::Abandonado:
            linea = u"Se abandonó la conexión con la plataforma"_s;
            break;
        case Fallo::Nombre:
            linea = u"No se pudo resolver el nombre de la plataforma"_s;
            break;
        case Fallo::Conexion:
            linea = u"No se pudo conectar con la plataforma"_s;
            break;
        case Fallo::Tiempo:
            linea = u"Se agotó el tiempo de espera de la plataforma"_s;
            break;
        case Fallo::Proxy:
            linea = r.estadoProxy ? u"El proxy %1 rechazó la petición (estado HTTP %2)"_s.arg(
                                        r.proxy, QString::number(r.estadoProxy))
                                  : u"No se pudo conectar con el proxy %1"_s.arg(r.proxy);
            break;
        case Fallo::ProxyCredenciales:
            linea = u"El proxy %1 pide credenciales (estado HTTP 407)"_s.arg(r.proxy);
            break;
        case Fallo::Certificado:
            linea = u"No se pudo verificar el certificado de la plataforma"_s;
            break;
        case Fallo::Tls:
            linea = u"Falló la conexión segura con la plataforma"_s;
            break;
        case Fallo::Estado:
            return u"La plataforma respondió con el estado HTTP "_s + QString::number(r.estado);
        case Fallo::Demasiado:
            linea = u"La respuesta de la plataforma supera el límite"_s;
            break;
        case Fallo::Otro:
            linea = u"Falló la conexión con la plataforma"_s;
            break;
    }
    if (!r.textoLibreria.isEmpty()) linea += u": "_s + r.textoLibreria;
    return linea;
}

}  // namespace Transporte

#include "delivery/Transporte.h"

#include "base/Despliegue.h"

#include <curl/curl.h>
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

}  // namespace

Peticion peticion(const QString& url, const QByteArray& cuerpo) {
    Peticion p;
    p.url = url;
    p.cuerpo = cuerpo;
    p.segundosConexion = Despliegue::segundosConexion();
    p.segundosTotal = Despliegue::segundosTotal();
    return p;
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
    const QByteArray direccion = p.url.toUtf8();
    const QByteArray tipo = "Content-Type: " + p.tipo;
    char error[CURL_ERROR_SIZE] = {};
    Destino destino{&r.cuerpo, p.maximo};
    curl_slist* cabeceras = curl_slist_append(nullptr, tipo.constData());
    // Large batches: no "Expect: 100-continue" round trip.
    cabeceras = curl_slist_append(cabeceras, "Expect:");
    curl_easy_setopt(curl, CURLOPT_URL, direccion.constData());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, cabeceras);
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
    curl_multi_remove_handle(multi, curl);
    curl_slist_free_all(cabeceras);
    curl_easy_cleanup(curl);
    curl_multi_cleanup(multi);

    r.fallo = clasificar(rc);
    if (rc != CURLE_OK)
        r.textoLibreria = QString::fromUtf8(error[0] ? error : curl_easy_strerror(rc));
    else if (r.estado < 200 || r.estado > 299)
        r.fallo = Fallo::Estado;
    return r;
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
            linea = u"No se pudo usar el proxy"_s;
            break;
        case Fallo::ProxyCredenciales:
            linea = u"El proxy pide credenciales"_s;
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

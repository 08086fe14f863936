#include "delivery/Registro.h"

#include "base/Ajustes.h"
#include "base/Despliegue.h"

#include <curl/curl.h>
#include <QUrl>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

size_t acumular(char* datos, size_t tam, size_t n, void* destino) {
    static_cast<QByteArray*>(destino)->append(datos, qsizetype(tam * n));
    return tam * n;
}

QByteArray cuerpo(const SolicitudRegistro& s) {
    QByteArray c;
    auto poner = [&c](const char* clave, const QString& valor) {
        if (!c.isEmpty()) c += '&';
        c += clave;
        c += '=';
        c += QUrl::toPercentEncoding(valor);
    };
    poner("nombre", s.nombre);
    poner("email", s.email);
    poner("movil", s.movil);
    poner("usuario", s.usuario);
    poner("clave", s.clave);
    poner("condiciones", s.condiciones ? u"1"_s : u"0"_s);
    return c;
}

RespuestaRegistro leer(const QByteArray& respuesta) {
    RespuestaRegistro r;
    QXmlStreamReader x(respuesta);
    if (!x.readNextStartElement() || x.name() != u"registro"_s) {
        r.comentario = u"Respuesta no válida de la plataforma"_s;
        return r;
    }
    r.aceptado = x.attributes().value(u"resultado"_s) == u"1"_s;
    r.motivo = x.attributes().value(u"motivo"_s).toString();
    while (x.readNextStartElement()) {
        if (x.name() == u"comentario"_s)
            r.comentario = x.readElementText();
        else
            x.skipCurrentElement();
    }
    if (x.hasError()) {
        r.aceptado = false;
        r.comentario = u"Respuesta no válida de la plataforma"_s;
        return r;
    }
    r.conectado = true;
    return r;
}

}  // namespace

QString direccionRegistro() {
    QString base = Despliegue::plataforma();
    if (!base.endsWith(u'/')) base += u'/';
    return Ajustes::getSetting(u"Despliegue"_s, u"Registro"_s, base + u"registro/alta"_s);
}

RespuestaRegistro msRegistrarUsuario(const SolicitudRegistro& s) {
    RespuestaRegistro r;
    static const bool iniciado = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    CURL* curl = iniciado ? curl_easy_init() : nullptr;
    if (!curl) {
        r.comentario = u"No se puede conectar con la plataforma"_s;
        return r;
    }
    const QByteArray datos = cuerpo(s);
    const QByteArray direccion = direccionRegistro().toUtf8();
    QByteArray respuesta;
    char error[CURL_ERROR_SIZE] = {};
    curl_slist* cabeceras = curl_slist_append(
        nullptr, "Content-Type: application/x-www-form-urlencoded; charset=UTF-8");
    curl_easy_setopt(curl, CURLOPT_URL, direccion.constData());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, cabeceras);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, datos.constData());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(datos.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &acumular);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &respuesta);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, error);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, long(Despliegue::segundosConexion()));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, long(Despliegue::segundosTotal()));
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    const CURLcode rc = curl_easy_perform(curl);
    long estado = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &estado);
    curl_slist_free_all(cabeceras);
    curl_easy_cleanup(curl);
    if (rc != CURLE_OK) {
        r.comentario = QString::fromUtf8(error[0] ? error : curl_easy_strerror(rc));
        return r;
    }
    if (estado < 200 || estado > 299) {
        r.comentario = u"La plataforma respondió con el estado HTTP "_s + QString::number(estado);
        return r;
    }
    return leer(respuesta);
}

#include "delivery/Registro.h"

#include "base/Ajustes.h"
#include "base/Despliegue.h"
#include "delivery/Intercambio.h"
#include "delivery/Transporte.h"

#include <QUrl>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

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
    return Despliegue::registro();
}

QCoro::Task<RespuestaRegistro> msRegistrarUsuario(SolicitudRegistro s,
                                                  Transporte::Cancelacion cancelacion) {
    Transporte::Peticion p = Transporte::peticion(direccionRegistro(), cuerpo(s));
    p.cancelacion = cancelacion;
    Transporte::Respuesta respuesta;
    co_await Intercambio::enHilo(Intercambio::Clase::Consulta, p.cancelacion,
                                 [&] { respuesta = Transporte::enviar(p); });
    if (!respuesta.bien()) {
        RespuestaRegistro r;
        r.comentario = Transporte::descripcion(respuesta);
        co_return r;
    }
    co_return leer(respuesta.cuerpo);
}

#include "delivery/qmXMLSend.h"

#include "base/Despliegue.h"
#include "base/Error.h"

#include <QElapsedTimer>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

using namespace Qt::StringLiterals;

namespace qmXMLSend {

void Coleccion::Add(const QVariant& Key, const QString& Destino, const QString& Mensaje) {
    qmXMLSend::Item it;
    it.Key = Key.toString();
    it.Destino = Destino;
    it.Mensaje = Mensaje;
    m_items.append(it);
}

void Coleccion::AddContacto(const QString& indice, const QString& codigo, const QString& alias,
                            const QString& comentario) {
    m_contactos.append({indice, codigo, alias, comentario});
}

qmXMLSend::Item& Coleccion::Item(int i) {
    if (i < 1 || i > m_items.size()) throw ErrorQuelmo(u"Subíndice fuera del intervalo"_s, 9);
    return m_items[i - 1];
}

namespace {

// A parser turns a raw carriage return into a line feed; as a character
// reference it arrives as it was typed.
void escribirTexto(QXmlStreamWriter& w, const QString& texto) {
    qsizetype desde = 0;
    for (qsizetype cr = texto.indexOf(u'\r'); cr >= 0; cr = texto.indexOf(u'\r', desde)) {
        w.writeCharacters(texto.mid(desde, cr - desde));
        w.writeEntityReference(u"#13"_s);
        desde = cr + 1;
    }
    w.writeCharacters(texto.mid(desde));
}

}  // namespace

QByteArray documentoPeticion(const XMLSendClass& c, bool lista) {
    QByteArray doc;
    doc.reserve(256 + c.XMLMensajes.Count() * 160);
    QXmlStreamWriter w(&doc);
    w.writeStartDocument();
    w.writeStartElement(u"peticion"_s);
    w.writeAttribute(u"tipo"_s, lista ? u"lista"_s : u"mensajes"_s);
    w.writeAttribute(u"version"_s, u"1"_s);
    w.writeStartElement(u"autentificacion"_s);
    w.writeTextElement(u"usuario"_s, c.usuario);
    w.writeTextElement(u"clave"_s, c.clave);
    w.writeTextElement(u"remitente"_s, c.Remitente);
    w.writeTextElement(u"app"_s, c.App);
    w.writeEndElement();
    if (lista) {
        w.writeStartElement(u"lista"_s);
        w.writeAttribute(u"tag"_s, c.ltag);
        w.writeAttribute(u"pass"_s, c.Lpass);
        w.writeAttribute(u"borrar"_s, c.Lborrar);
        w.writeAttribute(u"nborrar"_s, c.nborrar);
        w.writeAttribute(u"resp"_s, c.Lresp);
        w.writeAttribute(u"pri"_s, c.Lpri);
        w.writeAttribute(u"acc"_s, c.Lacc);
        for (const Contacto& k : c.XMLMensajes.contactos()) {
            w.writeStartElement(u"contacto"_s);
            w.writeAttribute(u"indice"_s, k.indice);
            w.writeAttribute(u"codigo"_s, k.codigo);
            w.writeAttribute(u"alias"_s, k.alias);
            w.writeAttribute(u"comentario"_s, k.comentario);
            w.writeEndElement();
        }
        w.writeEndElement();
    }
    w.writeStartElement(u"mensajes"_s);
    w.writeAttribute(u"todo"_s, c.EnviarTodo ? u"1"_s : u"0"_s);
    int n = 0;
    for (const Item& it : c.XMLMensajes.items()) {
        w.writeStartElement(u"mensaje"_s);
        w.writeAttribute(u"n"_s, QString::number(++n));
        w.writeAttribute(u"clave"_s, it.Key);
        w.writeAttribute(u"destino"_s, it.Destino);
        if (!c.Origen.isEmpty()) w.writeAttribute(u"ref"_s, c.Origen + u'/' + it.Key);
        escribirTexto(w, it.Mensaje);
        w.writeEndElement();
    }
    w.writeEndElement();
    w.writeEndElement();
    w.writeEndDocument();
    return doc;
}

namespace {

[[noreturn]] void respuestaNoValida(const QString& motivo) {
    throw ErrorQuelmo(u"Respuesta no válida de la plataforma: "_s + motivo, ErrNum::Plataforma);
}

}  // namespace

void leerRespuesta(XMLSendClass& c, const QByteArray& respuesta) {
    Autentificacion a;
    c.RXAvisos.clear();
    QVector<Item>& items = c.XMLMensajes.items();
    for (Item& item : items) item.SinResultado = true;
    QXmlStreamReader r(respuesta);
    bool raiz = false, cabecera = false;
    while (r.readNextStartElement()) {
        if (!raiz) {
            if (r.name() != u"respuesta"_s)
                respuestaNoValida(u"se esperaba <respuesta> y llegó <"_s + r.name() + u'>');
            raiz = true;
            continue;  // step into the root's children
        }
        if (r.name() == u"autentificacion"_s) {
            cabecera = true;
            const auto at = r.attributes();
            a.Resultado = at.value(u"resultado"_s).toString();
            a.saldo = at.value(u"saldo"_s).toString();
            a.Movil = at.value(u"movil"_s).toString();
            a.Version = at.value(u"version"_s).toString();
            while (r.readNextStartElement()) {
                if (r.name() == u"comentario"_s)
                    a.Comentario = r.readElementText();
                else if (r.name() == u"traza"_s)
                    a.AuTrace = r.readElementText();
                else
                    r.skipCurrentElement();
            }
        } else if (r.name() == u"mensajes"_s) {
            while (r.readNextStartElement()) {
                if (r.name() != u"mensaje"_s) {
                    r.skipCurrentElement();
                    continue;
                }
                bool ok = false;
                const QString nTexto = r.attributes().value(u"n"_s).toString();
                const int n = nTexto.toInt(&ok);
                const bool aceptado = r.attributes().value(u"resultado"_s) == u"1"_s;
                const QString comentario = r.readElementText();
                // What we did not send can't be ours: the rest of the reply
                // still stands.
                if (!ok || n < 1 || n > items.size()) {
                    c.RXAvisos
                        << u"La plataforma devolvió el resultado de un mensaje que no se envió "
                           u"(n=%1), se descarta"_s.arg(nTexto.left(20));
                    continue;
                }
                items[n - 1].Resultado = aceptado;
                items[n - 1].Comentario = comentario;
                items[n - 1].SinResultado = false;
            }
        } else if (r.name() == u"lista"_s) {
            const auto at = r.attributes();
            a.CADD = at.value(u"cadd"_s).toString();
            a.CUP = at.value(u"cup"_s).toString();
            a.CERR = at.value(u"cerr"_s).toString();
            r.skipCurrentElement();
        } else {
            r.skipCurrentElement();
        }
    }
    if (r.hasError()) respuestaNoValida(r.errorString());
    if (!raiz || !cabecera) respuestaNoValida(u"falta la cabecera <autentificacion>"_s);
    // An accepted exchange with no word is still an answer: keep the header
    // apart from a missing reply.
    c.RXAutentificacion = a;
}

namespace {

// The client over the program's one transport: one POST per exchange.
class ClienteHttp : public XMLSendClass {
  public:
    // The limits are read here, on the caller's thread: the exchange itself
    // runs on another one and reads no settings.
    ClienteHttp() : m_plantilla(Transporte::peticion(QString(), QByteArray())) {}

    void SendXML(QString& nn, QString& ff) override { intercambio(false, nn, ff); }
    void SendXMLLista(QString& nn, QString& ff) override { intercambio(true, nn, ff); }

  private:
    void intercambio(bool lista, QString& nn, QString& ff) {
        RXAutentificacion = Autentificacion();
        RXXML.clear();
        RXAvisos.clear();
        QElapsedTimer reloj;
        reloj.start();
        const QByteArray doc = documentoPeticion(*this, lista);
        Transporte::Peticion p = m_plantilla;
        p.url = url;
        p.cuerpo = SendParam.toUtf8() + doc.toPercentEncoding();
        p.maximo = kMaximoRespuesta;
        p.cancelacion = cancelacion;
        nsDocumento = reloj.nsecsElapsed();
        reloj.restart();

        RXTransporte = Transporte::enviar(p);
        const Transporte::Respuesta& r = RXTransporte;
        nsHttp = reloj.nsecsElapsed();
        reloj.restart();

        nn = QString::number(r.estado);
        ff = r.textoLibreria;
        if (r.fallo == Transporte::Fallo::Demasiado)
            throw ErrorQuelmo(u"La respuesta de la plataforma supera el límite de %1 MB"_s.arg(
                                  kMaximoRespuesta / (1024 * 1024)),
                              ErrNum::Plataforma);
        if (r.fallo == Transporte::Fallo::Estado) {
            RXXML = QString::fromUtf8(r.cuerpo);
            throw ErrorQuelmo(Transporte::descripcion(r), ErrNum::Plataforma);
        }
        // No reply (refused, dropped, timed out, given up): the caller sees
        // an empty Resultado and tells the user about the connection.
        if (!r.bien()) return;
        RXXML = QString::fromUtf8(r.cuerpo);
        leerRespuesta(*this, r.cuerpo);
        nsRespuesta = reloj.nsecsElapsed();
    }

    const Transporte::Peticion m_plantilla;
};

}  // namespace

std::unique_ptr<XMLSendClass> crear() {
    return std::make_unique<ClienteHttp>();
}

}  // namespace qmXMLSend

#include "delivery/qmXMLSend.h"

#include "base/Despliegue.h"
#include "base/Error.h"

#include <curl/curl.h>
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

// Stops the transfer (by taking fewer bytes than given) at the limit.
size_t acumular(char* datos, size_t tam, size_t n, void* destino) {
    auto* respuesta = static_cast<QByteArray*>(destino);
    if (respuesta->size() + qsizetype(tam * n) > kMaximoRespuesta) return 0;
    respuesta->append(datos, qsizetype(tam * n));
    return tam * n;
}

// The libcurl client: one blocking POST per exchange.
class ClienteCurl : public XMLSendClass {
  public:
    ClienteCurl() : m_curl(curl_easy_init()) {
        if (!m_curl)
            throw ErrorQuelmo(u"No se puede crear el objeto qmXMLSend.XMLSendClass"_s,
                              ErrNum::Plataforma);
    }
    ~ClienteCurl() override { curl_easy_cleanup(m_curl); }

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
        char* escapado = curl_easy_escape(m_curl, doc.constData(), int(doc.size()));
        QByteArray cuerpo = SendParam.toUtf8();
        cuerpo.append(escapado);
        curl_free(escapado);

        nsDocumento = reloj.nsecsElapsed();
        reloj.restart();
        QByteArray respuesta;
        char error[CURL_ERROR_SIZE] = {};
        const QByteArray direccion = url.toUtf8();
        curl_slist* cabeceras = curl_slist_append(
            nullptr, "Content-Type: application/x-www-form-urlencoded; charset=UTF-8");
        // Large batches: no "Expect: 100-continue" round trip.
        cabeceras = curl_slist_append(cabeceras, "Expect:");
        curl_easy_setopt(m_curl, CURLOPT_URL, direccion.constData());
        curl_easy_setopt(m_curl, CURLOPT_HTTPHEADER, cabeceras);
        curl_easy_setopt(m_curl, CURLOPT_POSTFIELDS, cuerpo.constData());
        curl_easy_setopt(m_curl, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(cuerpo.size()));
        curl_easy_setopt(m_curl, CURLOPT_WRITEFUNCTION, &acumular);
        curl_easy_setopt(m_curl, CURLOPT_WRITEDATA, &respuesta);
        curl_easy_setopt(m_curl, CURLOPT_ERRORBUFFER, error);
        curl_easy_setopt(m_curl, CURLOPT_CONNECTTIMEOUT, long(Despliegue::segundosConexion()));
        curl_easy_setopt(m_curl, CURLOPT_TIMEOUT, long(Despliegue::segundosTotal()));
        curl_easy_setopt(m_curl, CURLOPT_NOSIGNAL, 1L);
        const CURLcode rc = curl_easy_perform(m_curl);
        long estado = 0;
        curl_easy_getinfo(m_curl, CURLINFO_RESPONSE_CODE, &estado);
        curl_slist_free_all(cabeceras);
        nsHttp = reloj.nsecsElapsed();
        reloj.restart();

        nn = QString::number(estado);
        ff = rc == CURLE_OK ? QString()
                            : QString::fromUtf8(error[0] ? error : curl_easy_strerror(rc));
        if (rc == CURLE_WRITE_ERROR)
            throw ErrorQuelmo(u"La respuesta de la plataforma supera el límite de %1 MB"_s.arg(
                                  kMaximoRespuesta / (1024 * 1024)),
                              ErrNum::Plataforma);
        // No reply (refused, dropped, timed out): the caller sees an empty
        // Resultado and tells the user about the connection.
        if (rc != CURLE_OK) return;
        RXXML = QString::fromUtf8(respuesta);
        if (estado < 200 || estado > 299)
            throw ErrorQuelmo(
                u"La plataforma respondió con el estado HTTP "_s + QString::number(estado),
                ErrNum::Plataforma);
        leerRespuesta(*this, respuesta);
        nsRespuesta = reloj.nsecsElapsed();
    }

    CURL* m_curl;
};

}  // namespace

std::unique_ptr<XMLSendClass> crear() {
    static const bool iniciado = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    if (!iniciado)
        throw ErrorQuelmo(u"No se puede crear el objeto qmXMLSend.XMLSendClass"_s,
                          ErrNum::Plataforma);
    return std::make_unique<ClienteCurl>();
}

}  // namespace qmXMLSend

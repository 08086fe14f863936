#pragma once

#include "delivery/Transporte.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>
#include <memory>

// The platform client: the one way this program talks to the messaging
// platform. A fresh client serves one exchange and is released after it.
// The wire format is described in docs/platform-protocol.md.
namespace qmXMLSend {

// One outgoing item and, after the exchange, what the platform said of it.
struct Item {
    QString Key;  // as given to Add, read back as text
    QString Destino;
    QString Mensaje;
    bool Resultado = false;
    QString Comentario;
    // The reply read said nothing of this item.
    bool SinResultado = false;
};

// One contact of a published list.
struct Contacto {
    QString indice;
    QString codigo;
    QString alias;
    QString comentario;
};

class Coleccion {
  public:
    // Key: a number or a text; it reads back as text.
    void Add(const QVariant& Key, const QString& Destino, const QString& Mensaje);
    void AddContacto(const QString& indice, const QString& codigo, const QString& alias,
                     const QString& comentario);
    int Count() const { return int(m_items.size()); }
    // Counting from 1, in order of insertion.
    qmXMLSend::Item& Item(int i);
    const QVector<qmXMLSend::Item>& items() const { return m_items; }
    QVector<qmXMLSend::Item>& items() { return m_items; }
    const QVector<Contacto>& contactos() const { return m_contactos; }

  private:
    QVector<qmXMLSend::Item> m_items;
    QVector<Contacto> m_contactos;
};

// The reply header. Every member reads as empty text until a reply came.
struct Autentificacion {
    QString Resultado;  // "1" accepted, empty no reply, anything else refused
    QString Comentario;
    QString saldo;
    QString Movil;
    QString Version;
    QString AuTrace;
    QString CADD, CUP, CERR;
};

class XMLSendClass {
  public:
    virtual ~XMLSendClass() = default;

    QString clave;
    QString usuario;
    QString Remitente;
    QString App;
    QString url;
    // The origin of the items' references: with an item's key, a reference
    // that no other database gives. Empty: the items go without one.
    QString Origen;
    bool EnviarTodo = true;
    QString SendParam = QStringLiteral("xml=");
    // List publication only.
    QString ltag, Lpass, Lborrar, nborrar, Lresp, Lpri, Lacc;

    Coleccion XMLMensajes;
    Autentificacion RXAutentificacion;
    QString RXXML;  // raw reply, for the debug lines
    // What the reading of the reply passed over, one line each, for the
    // caller to log once the results are written.
    QStringList RXAvisos;
    // What the transport said of the last exchange: what failed, and the
    // library's words, for the line that names the cause.
    Transporte::Respuesta RXTransporte;
    // Cancelled from the window's thread to give the exchange up; the
    // exchange then comes back as one that got no reply.
    Transporte::Cancelacion cancelacion;

    // One exchange with the platform; it blocks, so callers run it through
    // Intercambio, and it touches neither the log nor the database. Comes
    // back normally with an empty RXAutentificacion.Resultado when no
    // connection could be made, it timed out or it was given up; throws
    // ErrorQuelmo for an HTTP error status or a reply that is not a valid
    // document. nn gets the HTTP status, ff the transport's error text.
    virtual void SendXML(QString& nn, QString& ff) = 0;
    // The same exchange for a list publication.
    virtual void SendXMLLista(QString& nn, QString& ff) = 0;

    // Where the last exchange spent its time, in nanoseconds.
    qint64 nsDocumento = 0, nsHttp = 0, nsRespuesta = 0;
};

// The largest reply read: a larger one fails the exchange.
inline constexpr qsizetype kMaximoRespuesta = 16 * 1024 * 1024;

// Creates a client, reading the deployment's limits on the caller's
// thread; throws ErrorQuelmo when none can be made.
std::unique_ptr<XMLSendClass> crear();

// The document of a request and the reading of a reply, apart from the
// transport so that their cost can be measured on its own.
QByteArray documentoPeticion(const XMLSendClass& cliente, bool lista);
// Fills RXAutentificacion and the items' results; throws ErrorQuelmo when
// the reply is not a valid document. A result for an item that was not
// sent is passed over with a line in RXAvisos; an item without a result is
// marked SinResultado.
void leerRespuesta(XMLSendClass& cliente, const QByteArray& respuesta);

}  // namespace qmXMLSend

#pragma once

#include <QByteArray>
#include <QString>
#include <atomic>
#include <memory>

// The one HTTP transport of the program: every exchange with the platform
// (messages, balance, lists, sign-up) is one POST through here. It blocks
// the thread that calls it, so it is called off the window's thread (see
// Intercambio), and it reads no settings and writes no log: what it needs
// is read beforehand into the request, on the caller's thread.
namespace Transporte {

// Asked from another thread to give an exchange up; the transfer notices
// within a tenth of a second.
class Cancelacion {
  public:
    Cancelacion() : m_bandera(std::make_shared<std::atomic<bool>>(false)) {}
    void cancelar() const { m_bandera->store(true); }
    bool cancelada() const { return m_bandera->load(); }
    bool operator==(const Cancelacion& otra) const { return m_bandera == otra.m_bandera; }

  private:
    std::shared_ptr<std::atomic<bool>> m_bandera;
};

// What failed, so that the words can name it.
enum class Fallo {
    Ninguno,
    Abandonado,         // given up on our side (stop, switch off, screen closed)
    Nombre,             // the platform's name could not be resolved
    Conexion,           // the connection was refused or dropped
    Tiempo,             // the time ran out
    Proxy,              // the proxy could not be reached, or refused
    ProxyCredenciales,  // the proxy asked for credentials
    Certificado,        // the platform's certificate could not be verified
    Tls,                // the secure connection failed otherwise
    Estado,             // the platform answered with an HTTP error status
    Demasiado,          // the reply was larger than the limit
    Otro,
};

struct Peticion {
    QString url;
    QByteArray cuerpo;
    QByteArray tipo = "application/x-www-form-urlencoded; charset=UTF-8";
    int segundosConexion = 10;
    int segundosTotal = 60;
    qsizetype maximo = 16 * 1024 * 1024;
    Cancelacion cancelacion;
    // The deployment's word on proxies and authorities (see Despliegue).
    QString proxy;
    QString sinProxy;
    QString autoridades;
};

struct Respuesta {
    Fallo fallo = Fallo::Otro;
    long estado = 0;  // the HTTP status, 0 when none came
    QByteArray cuerpo;
    QString textoLibreria;  // the transport library's own words
    QString proxy;          // the proxy it went through, without credentials; empty if none
    long estadoProxy = 0;   // the proxy's HTTP status, when it answered for itself
    bool bien() const { return fallo == Fallo::Ninguno; }
};

// A request with the deployment's limits, proxy and authorities; read on
// the caller's thread.
Peticion peticion(const QString& url, const QByteArray& cuerpo);

// True for an address that must travel over verified TLS: "https://" in any case.
bool esSegura(const QString& url);

// The proxy that an address goes through, empty for none. The deployment's
// `proxy` wins ("directo": none); else the environment as the transport
// library reads it: http_proxy (lower case only, as an upper-case
// HTTP_PROXY can be set by a web server from a request's header), then for
// https https_proxy or HTTPS_PROXY, then all_proxy or ALL_PROXY. A host
// named by `sinProxy`, else by no_proxy or NO_PROXY, goes direct. Chosen
// here rather than inside the library so that a refusal can be laid at
// the proxy's door.
QString proxyPara(const QString& url, const QString& proxy, const QString& sinProxy);

// One POST; never throws.
Respuesta enviar(const Peticion& p);

// True when the platform could not be reached for a reason of the network
// (name, connection, time), where "revise su conexión a Internet" is the
// right advice; a proxy, a certificate or a reply are not.
bool culpaDeLaRed(const Respuesta& r);

// One Spanish line that names what failed, with the library's own words
// behind it; empty for a reply that came.
QString descripcion(const Respuesta& r);

}  // namespace Transporte

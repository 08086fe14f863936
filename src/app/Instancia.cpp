#include "app/Instancia.h"

#include "app/Arranque.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
constexpr char kPeticion[] = "mostrar\n";
constexpr char kVentana[] = "ventana\n";
constexpr char kSinVentana[] = "sin-ventana\n";
// A socket's path has room for 107 bytes on Linux.
constexpr qsizetype kLargoRutaSocket = 100;
}  // namespace

Instancia::Instancia(Papel papel, QObject* parent)
    : QObject(parent), m_papel(papel), m_bloqueo(rutaBloqueoInstancia()) {}

Instancia::~Instancia() {
    // Removes the socket's file while the lock is still held.
    delete m_servidor;
}

QString Instancia::nombreServidor() {
    const QString ruta = directorioAplicacion() + u"/quelmo-sms.socket"_s;
    if (QFile::encodeName(ruta).size() <= kLargoRutaSocket) return ruta;
    // A very deep data directory: a name of its own in the temporary folder.
    const QByteArray huella =
        QCryptographicHash::hash(ruta.toUtf8(), QCryptographicHash::Sha1).toHex().left(20);
    return u"quelmo-sms-"_s + QString::fromLatin1(huella);
}

namespace {

// Why nothing can be written in `carpeta`, as the system says it; empty
// when a file can be created and written there.
QString motivoSinEscritura(const QString& carpeta) {
    if (!QDir().mkpath(carpeta)) return u"no se puede crear la carpeta"_s;
    QFile prueba(carpeta + u"/.quelmo-escritura"_s);
    QString motivo;
    if (!prueba.open(QIODevice::WriteOnly | QIODevice::Truncate) || prueba.write("0\n", 2) != 2 ||
        !prueba.flush())
        motivo = prueba.errorString();
    prueba.close();
    prueba.remove();
    return motivo;
}

}  // namespace

Instancia::Toma Instancia::adquirir() {
    const QString carpeta = directorioAplicacion();
    QDir().mkpath(carpeta);
    if (!adquirirInstanciaUnica(m_bloqueo)) {
        // Only a lock another process holds means another copy: a folder
        // that can't take the lock is a failure the user or the service
        // manager must see.
        if (m_bloqueo.error() == QLockFile::LockFailedError) return Toma::OtraEnMarcha;
        QString motivo = motivoSinEscritura(carpeta);
        if (motivo.isEmpty()) motivo = u"no se puede crear el fichero de bloqueo"_s;
        m_motivo = u"No se puede usar la carpeta de datos "_s + carpeta + u": "_s + motivo;
        return Toma::SinCarpeta;
    }
    m_servidor = new QLocalServer(this);
    m_servidor->setSocketOptions(QLocalServer::UserAccessOption);
    // Holding the lock, any socket left at the name is a killed program's.
    QLocalServer::removeServer(nombreServidor());
    connect(m_servidor, &QLocalServer::newConnection, this, &Instancia::atender);
    // Without the socket the program still runs; a second start then only
    // learns that it can't reach it.
    m_servidor->listen(nombreServidor());
    return Toma::Tomada;
}

void Instancia::atender() {
    while (QLocalSocket* s = m_servidor->nextPendingConnection()) {
        connect(s, &QLocalSocket::disconnected, s, &QObject::deleteLater);
        connect(s, &QLocalSocket::readyRead, this, [this, s] {
            if (!s->canReadLine()) return;
            const QByteArray peticion = s->readLine();
            if (peticion != kPeticion) {
                s->disconnectFromServer();
                return;
            }
            if (m_papel == Papel::Ventana) {
                s->write(kVentana);
                Q_EMIT ventanaPedida();
            } else {
                s->write(kSinVentana);
            }
            s->flush();
            s->disconnectFromServer();
        });
    }
}

Instancia::Respuesta Instancia::pedirVentana(int esperaMs) {
    const QDeadlineTimer plazo(esperaMs);
    QLocalSocket s;
    // The running program takes its lock before it listens: give it time.
    for (;;) {
        s.connectToServer(nombreServidor());
        if (s.waitForConnected(int(qMax<qint64>(1, plazo.remainingTime())))) break;
        if (plazo.hasExpired()) return Respuesta::SinRespuesta;
        // espera-justificada: a second start, before it has any window or loop.
        QThread::msleep(50);
    }
    s.write(kPeticion);
    if (!s.waitForBytesWritten(int(qMax<qint64>(1, plazo.remainingTime()))))
        return Respuesta::SinRespuesta;
    while (!s.canReadLine()) {
        if (plazo.hasExpired() || !s.waitForReadyRead(int(qMax<qint64>(1, plazo.remainingTime()))))
            return Respuesta::SinRespuesta;
    }
    const QByteArray respuesta = s.readLine();
    if (respuesta == kVentana) return Respuesta::VentanaMostrada;
    if (respuesta == kSinVentana) return Respuesta::SinVentana;
    return Respuesta::SinRespuesta;
}

Hecho Instancia::cederAlPrimero() {
    switch (pedirVentana()) {
        case Respuesta::VentanaMostrada:
            break;
        case Respuesta::SinVentana:
            // The headless transmitter holds the user's data: the window
            // can only come once it has stopped.
            return Hecho::no(
                u"Quelmo Mensajes SMS ya está en marcha sin ventana: el transmisor "
                u"funciona en segundo plano, normalmente como servicio del usuario.\n\n"
                u"Para abrir la ventana, detenga antes el transmisor con la orden\n\n"
                u"systemctl --user stop quelmo-sms-transmisor\n\n"
                u"y vuelva a abrir Quelmo Mensajes SMS."_s,
                Msg::Information);
        case Respuesta::SinRespuesta:
            return Hecho::no(
                u"Quelmo Mensajes SMS ya está en marcha para este usuario, pero no "
                u"responde.\n\nEspere un momento y vuelva a abrirlo."_s,
                Msg::Exclamation);
    }
    return {};
}

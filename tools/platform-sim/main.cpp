// sms-platform-sim: a stand-in for the messaging platform on 127.0.0.1, for
// tests and for the demo. It speaks the protocol of
// docs/platform-protocol.md at the platform's servlet path.
#include <httplib.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QSettings>
#include <QStringList>
#include <QUrlQuery>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr char kRuta[] = "/servlet/quelmoMessage.servlet.Servlet";
constexpr char kRutaRegistro[] = "/registro/alta";

const char kAyuda[] =
    "Uso: sms-platform-sim [--port PUERTO] [--config FICHERO] [--registro FICHERO]\n"
    "\n"
    "Simula la plataforma de mensajería en http://127.0.0.1:PUERTO/servlet/\n"
    "quelmoMessage.servlet.Servlet para las pruebas y la demostración, y el alta\n"
    "de usuarios nuevos en http://127.0.0.1:PUERTO/registro/alta.\n"
    "\n"
    "  --port PUERTO        puerto de escucha (0 = uno libre; por defecto 8080)\n"
    "  --config FICHERO     configuración: cuentas, versión anunciada, números\n"
    "                       rechazados, fallos (ver tools/platform-sim/ejemplo.ini)\n"
    "  --registro FICHERO   añade cada mensaje aceptado y cada alta como una línea JSON\n"
    "                       (sustituye a la clave 'registro' de la configuración)\n"
    "  --help               muestra esta ayuda\n"
    "\n"
    "Al arrancar escribe \"Escuchando en http://127.0.0.1:PUERTO/\" en la salida.\n";

struct Cuenta {
    QString clave;
    QString movil;
    long long saldo = 0;
    bool activa = true;
    bool remitentePropio = true;
};

// A web list: number -> alias and comment.
using ListaWeb = QMap<QString, QPair<QString, QString>>;

struct Configuracion {
    QHash<QString, Cuenta> cuentas;  // by user name
    QString version;
    QStringList rechazados;
    QString registro;
    // The balance a new user gets at sign-up.
    long long saldoRegistro = 10;
    // Fault injection: ninguno | corte | malformado | error500, for the first
    // `veces` requests (0 = all); `retrasoMs` before every answer.
    QString fallo = u"ninguno"_s;
    int veces = 0;
    int retrasoMs = 0;
    // The trace of every reply repeats the request as it arrived.
    bool eco = false;
};

Configuracion leerConfiguracion(const QString& ruta) {
    Configuracion c;
    if (ruta.isEmpty()) return c;
    QSettings s(ruta, QSettings::IniFormat);
    for (const QString& grupo : s.childGroups()) {
        s.beginGroup(grupo);
        if (grupo == u"plataforma"_s) {
            c.version = s.value(u"version"_s).toString().trimmed();
            for (const QString& n : s.value(u"rechazados"_s).toStringList())
                if (!n.trimmed().isEmpty()) c.rechazados << n.trimmed();
            // A relative record path is taken beside the configuration.
            const QString registro = s.value(u"registro"_s).toString();
            if (!registro.isEmpty())
                c.registro = QFileInfo(ruta).absoluteDir().absoluteFilePath(registro);
            c.fallo = s.value(u"fallo"_s, u"ninguno"_s).toString().trimmed();
            c.veces = s.value(u"veces"_s, 0).toInt();
            c.retrasoMs = s.value(u"retraso_ms"_s, 0).toInt();
            c.eco = s.value(u"eco"_s, false).toBool();
            c.saldoRegistro = s.value(u"saldo_registro"_s, 10).toLongLong();
        } else if (grupo.startsWith(u"cuenta"_s)) {
            Cuenta k;
            const QString usuario = s.value(u"usuario"_s).toString();
            k.clave = s.value(u"clave"_s).toString();
            k.movil = s.value(u"movil"_s).toString();
            k.saldo = s.value(u"saldo"_s, 0).toLongLong();
            k.activa = s.value(u"activa"_s, true).toBool();
            k.remitentePropio = s.value(u"remitente"_s, true).toBool();
            if (!usuario.isEmpty()) c.cuentas.insert(usuario, k);
        }
        s.endGroup();
    }
    return c;
}

struct Peticion {
    QString tipo, usuario, clave, remitente, app;
    struct Mensaje {
        QString n, clave, destino, texto, ref;
    };
    QVector<Mensaje> mensajes;
    QString tag, nborrar, acc;
    struct Contacto {
        QString codigo, alias, comentario;
    };
    QVector<Contacto> contactos;
};

bool leerPeticion(const QByteArray& xml, Peticion& p, QString& error) {
    QXmlStreamReader r(xml);
    if (!r.readNextStartElement() || r.name() != u"peticion"_s) {
        error = u"se esperaba <peticion>"_s;
        return false;
    }
    p.tipo = r.attributes().value(u"tipo"_s).toString();
    while (r.readNextStartElement()) {
        if (r.name() == u"autentificacion"_s) {
            while (r.readNextStartElement()) {
                const QString nombre = r.name().toString();
                const QString valor = r.readElementText();
                if (nombre == u"usuario"_s)
                    p.usuario = valor;
                else if (nombre == u"clave"_s)
                    p.clave = valor;
                else if (nombre == u"remitente"_s)
                    p.remitente = valor;
                else if (nombre == u"app"_s)
                    p.app = valor;
            }
        } else if (r.name() == u"mensajes"_s) {
            while (r.readNextStartElement()) {
                Peticion::Mensaje m;
                m.n = r.attributes().value(u"n"_s).toString();
                m.clave = r.attributes().value(u"clave"_s).toString();
                m.destino = r.attributes().value(u"destino"_s).toString();
                m.ref = r.attributes().value(u"ref"_s).toString();
                m.texto = r.readElementText();
                p.mensajes.append(m);
            }
        } else if (r.name() == u"lista"_s) {
            const auto a = r.attributes();
            p.tag = a.value(u"tag"_s).toString();
            p.nborrar = a.value(u"nborrar"_s).toString();
            p.acc = a.value(u"acc"_s).toString();
            while (r.readNextStartElement()) {
                const auto c = r.attributes();
                p.contactos.append({c.value(u"codigo"_s).toString(), c.value(u"alias"_s).toString(),
                                    c.value(u"comentario"_s).toString()});
                r.skipCurrentElement();
            }
        } else {
            r.skipCurrentElement();
        }
    }
    if (r.hasError()) {
        error = r.errorString();
        return false;
    }
    return true;
}

bool numeroValido(const QString& n) {
    if (n.size() < 6 || !n.startsWith(u"00"_s)) return false;
    for (const QChar ch : n)
        if (ch < u'0' || ch > u'9') return false;
    return true;
}

class Plataforma {
  public:
    explicit Plataforma(Configuracion c) : m_conf(std::move(c)) {}

    // Returns the reply document; `fallo` gets the fault to inject, if any.
    QByteArray atender(const QByteArray& xml, QString& fallo) {
        std::lock_guard<std::mutex> bloqueo(m_mutex);
        ++m_peticiones;
        m_peticion = QString::fromUtf8(xml);
        fallo = (m_conf.veces == 0 || m_peticiones <= m_conf.veces) ? m_conf.fallo : u"ninguno"_s;
        Peticion p;
        QString error;
        if (!leerPeticion(xml, p, error)) return rechazo(u"Petición no válida: "_s + error);
        const auto it = m_conf.cuentas.find(p.usuario);
        if (it == m_conf.cuentas.end() || it->clave != p.clave)
            return rechazo(u"Usuario o clave incorrectos"_s);
        Cuenta& cuenta = *it;
        if (!cuenta.activa)
            return rechazo(u"Para enviar mensajes es necesario que su cuenta esté Activa"_s);

        Respuesta r;
        r.cuenta = &cuenta;
        if (p.tipo == u"lista"_s) {
            publicar(p, r);
            r.comentario = u"Lista publicada"_s;
        } else if (p.mensajes.size() == 1 && p.mensajes[0].texto == u"getsaldo"_s) {
            r.comentario = u"Usuario autentificado"_s;
        } else {
            enviar(p, cuenta, r);
            r.comentario = u"Envío recibido"_s;
            if (!p.remitente.trimmed().isEmpty() && !cuenta.remitentePropio)
                r.comentario = u"Remitente NO Aceptado, se usa el remitente por defecto"_s;
        }
        return respuesta(r);
    }

  private:
    struct Resultado {
        QString n;
        bool aceptado;
        QString comentario;
    };
    struct Respuesta {
        Cuenta* cuenta = nullptr;
        QString comentario;
        QVector<Resultado> resultados;
        bool lista = false;
        int cadd = 0, cup = 0, cerr = 0;
    };

    void enviar(const Peticion& p, Cuenta& cuenta, Respuesta& r) {
        QFile registro(m_conf.registro);
        const bool registrar =
            !m_conf.registro.isEmpty() && registro.open(QIODevice::Append | QIODevice::Text);
        for (const Peticion::Mensaje& m : p.mensajes) {
            Resultado res{m.n, false, QString()};
            // A reference already taken for this account: the first outcome
            // again, nothing sent or charged, the repeat recorded apart.
            const QString visto = p.usuario + u'\n' + m.ref;
            if (!m.ref.isEmpty() && m_tomados.contains(visto)) {
                res = {m.n, true, m_tomados.value(visto)};
                if (registrar) {
                    QJsonObject o;
                    o[u"duplicado"_s] = true;
                    o[u"usuario"_s] = p.usuario;
                    o[u"ref"_s] = m.ref;
                    registro.write(QJsonDocument(o).toJson(QJsonDocument::Compact) + '\n');
                }
                r.resultados.append(res);
                continue;
            }
            if (m.destino == u"ENVIO_SIMULADO"_s) {
                res = {m.n, true, u"Envío simulado"_s};
            } else if (!numeroValido(m.destino)) {
                res.comentario = u"Número de destino no válido"_s;
            } else if (m_conf.rechazados.contains(m.destino)) {
                res.comentario = u"Número rechazado por la plataforma"_s;
            } else if (cuenta.saldo <= 0) {
                res.comentario = u"Saldo insuficiente"_s;
            } else {
                --cuenta.saldo;
                res = {m.n, true, u"Mensaje aceptado"_s};
            }
            if (res.aceptado && !m.ref.isEmpty()) m_tomados.insert(visto, res.comentario);
            if (res.aceptado && registrar) {
                QJsonObject o;
                o[u"hora"_s] = QDateTime::currentDateTime().toString(Qt::ISODate);
                o[u"usuario"_s] = p.usuario;
                o[u"remitente"_s] = p.remitente;
                o[u"app"_s] = p.app;
                o[u"clave"_s] = m.clave;
                o[u"destino"_s] = m.destino;
                o[u"mensaje"_s] = m.texto;
                registro.write(QJsonDocument(o).toJson(QJsonDocument::Compact) + '\n');
            }
            r.resultados.append(res);
        }
    }

    void publicar(const Peticion& p, Respuesta& r) {
        r.lista = true;
        ListaWeb& lista = m_listas[p.usuario + u'\n' + p.tag];
        if (p.nborrar == u"1"_s) lista.clear();
        for (const Peticion::Contacto& c : p.contactos) {
            if (!numeroValido(c.codigo)) {
                ++r.cerr;
                continue;
            }
            (lista.contains(c.codigo) ? r.cup : r.cadd)++;
            lista.insert(c.codigo, {c.alias, c.comentario});
        }
    }

    QByteArray rechazo(const QString& comentario) {
        Respuesta r;
        r.comentario = comentario;
        return respuesta(r, u"0"_s);
    }

    QByteArray respuesta(const Respuesta& r, const QString& resultado = u"1"_s) {
        QByteArray doc;
        QXmlStreamWriter w(&doc);
        w.writeStartDocument();
        w.writeStartElement(u"respuesta"_s);
        w.writeStartElement(u"autentificacion"_s);
        w.writeAttribute(u"resultado"_s, resultado);
        if (r.cuenta) {
            w.writeAttribute(u"saldo"_s, QString::number(r.cuenta->saldo));
            w.writeAttribute(u"movil"_s, r.cuenta->movil);
        }
        if (!m_conf.version.isEmpty()) w.writeAttribute(u"version"_s, m_conf.version);
        w.writeTextElement(u"comentario"_s, r.comentario);
        w.writeTextElement(u"traza"_s, m_conf.eco
                                           ? m_peticion
                                           : u"sim peticion "_s + QString::number(m_peticiones));
        w.writeEndElement();
        if (!r.resultados.isEmpty()) {
            w.writeStartElement(u"mensajes"_s);
            for (const Resultado& res : r.resultados) {
                w.writeStartElement(u"mensaje"_s);
                w.writeAttribute(u"n"_s, res.n);
                w.writeAttribute(u"resultado"_s, res.aceptado ? u"1"_s : u"0"_s);
                w.writeCharacters(res.comentario);
                w.writeEndElement();
            }
            w.writeEndElement();
        }
        if (r.lista) {
            w.writeStartElement(u"lista"_s);
            w.writeAttribute(u"cadd"_s, QString::number(r.cadd));
            w.writeAttribute(u"cup"_s, QString::number(r.cup));
            w.writeAttribute(u"cerr"_s, QString::number(r.cerr));
            w.writeEndElement();
        }
        w.writeEndElement();
        w.writeEndDocument();
        return doc;
    }

  public:
    // A sign-up form: creates the account in memory, or says why not.
    QByteArray registrar(const QHash<QString, QString>& f) {
        std::lock_guard<std::mutex> bloqueo(m_mutex);
        const QString usuario = f.value(u"usuario"_s).trimmed();
        const QString movil = movilEspanol(f.value(u"movil"_s));
        if (f.value(u"condiciones"_s) != u"1"_s)
            return respuestaRegistro(u"condiciones"_s,
                                     u"Debe aceptar las condiciones del servicio"_s);
        if (usuario.isEmpty() || f.value(u"clave"_s).isEmpty())
            return respuestaRegistro(u"datos"_s, u"Faltan el usuario o la contraseña"_s);
        if (m_conf.cuentas.contains(usuario))
            return respuestaRegistro(u"usuario"_s,
                                     u"El nombre de usuario ya está en uso, elija otro"_s);
        if (movil.isEmpty())
            return respuestaRegistro(u"movil"_s,
                                     u"El número de móvil no es un móvil español válido"_s);
        Cuenta c;
        c.clave = f.value(u"clave"_s);
        c.movil = movil;
        c.saldo = m_conf.saldoRegistro;
        m_conf.cuentas.insert(usuario, c);
        QFile registro(m_conf.registro);
        if (!m_conf.registro.isEmpty() && registro.open(QIODevice::Append | QIODevice::Text)) {
            QJsonObject o;
            o.insert(u"alta"_s, usuario);
            o.insert(u"nombre"_s, f.value(u"nombre"_s));
            o.insert(u"email"_s, f.value(u"email"_s));
            o.insert(u"movil"_s, movil);
            registro.write(QJsonDocument(o).toJson(QJsonDocument::Compact) + '\n');
        }
        return respuestaRegistro(QString(), u"Alta realizada"_s);
    }

  private:
    // A Spanish mobile number in international form, empty if it is none.
    static QString movilEspanol(QString n) {
        n.remove(u' ');
        if (n.startsWith(u'+')) n = u"00"_s + n.mid(1);
        if (n.size() == 9) n = u"0034"_s + n;
        static const QRegularExpression movil(u"^0034[67][0-9]{8}$"_s);
        return movil.match(n).hasMatch() ? n : QString();
    }
    static QByteArray respuestaRegistro(const QString& motivo, const QString& comentario) {
        QByteArray doc;
        QXmlStreamWriter w(&doc);
        w.writeStartDocument();
        w.writeStartElement(u"registro"_s);
        w.writeAttribute(u"resultado"_s, motivo.isEmpty() ? u"1"_s : u"0"_s);
        if (!motivo.isEmpty()) w.writeAttribute(u"motivo"_s, motivo);
        w.writeTextElement(u"comentario"_s, comentario);
        w.writeEndElement();
        w.writeEndDocument();
        return doc;
    }

    std::mutex m_mutex;
    Configuracion m_conf;
    QHash<QString, ListaWeb> m_listas;
    // Account and reference of every item taken, with its comment.
    QHash<QString, QString> m_tomados;
    int m_peticiones = 0;
    QString m_peticion;
};

// The form parameter "xml" of a url-encoded body.
QByteArray parametroXml(QByteArray cuerpo) {
    cuerpo.replace('+', ' ');
    for (const QByteArray& par : cuerpo.split('&'))
        if (par.startsWith("xml=")) return QByteArray::fromPercentEncoding(par.mid(4));
    return QByteArray();
}

// The fields of a url-encoded form.
QHash<QString, QString> formulario(QByteArray cuerpo) {
    QHash<QString, QString> f;
    cuerpo.replace('+', ' ');
    for (const QByteArray& par : cuerpo.split('&')) {
        const qsizetype igual = par.indexOf('=');
        if (igual < 0) continue;
        f.insert(QString::fromUtf8(QByteArray::fromPercentEncoding(par.left(igual))),
                 QString::fromUtf8(QByteArray::fromPercentEncoding(par.mid(igual + 1))));
    }
    return f;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    int puerto = 8080;
    QString config, registro;
    for (int i = 1; i < args.size(); ++i) {
        const QString& a = args[i];
        const bool hayValor = i + 1 < args.size();
        if (a == u"--help"_s || a == u"-h"_s) {
            std::fputs(kAyuda, stdout);
            return 0;
        } else if (a == u"--port"_s && hayValor) {
            bool ok = false;
            puerto = args[++i].toInt(&ok);
            if (!ok || puerto < 0 || puerto > 65535) {
                std::fprintf(stderr, "Puerto no válido: %s\n", qPrintable(args[i]));
                return 2;
            }
        } else if (a == u"--config"_s && hayValor) {
            config = args[++i];
        } else if (a == u"--registro"_s && hayValor) {
            registro = args[++i];
        } else {
            std::fprintf(stderr, "Argumento no reconocido: %s\n\n%s", qPrintable(a), kAyuda);
            return 2;
        }
    }
    if (!config.isEmpty() && !QFile::exists(config)) {
        std::fprintf(stderr, "No existe el fichero de configuración: %s\n", qPrintable(config));
        return 2;
    }
    Configuracion conf = leerConfiguracion(config);
    if (!registro.isEmpty()) conf.registro = registro;
    const int retrasoMs = conf.retrasoMs;
    Plataforma plataforma(std::move(conf));

    httplib::Server servidor;
    // The body is read here rather than by the server, whose own form parsing
    // refuses url-encoded bodies above a few kilobytes: a batch is larger.
    servidor.Post(kRuta, [&](const httplib::Request&, httplib::Response& res,
                             const httplib::ContentReader& lector) {
        QByteArray cuerpo;
        lector([&](const char* datos, size_t n) {
            cuerpo.append(datos, qsizetype(n));
            return true;
        });
        QString fallo;
        const QByteArray doc = plataforma.atender(parametroXml(cuerpo), fallo);
        if (retrasoMs > 0) std::this_thread::sleep_for(std::chrono::milliseconds(retrasoMs));
        if (fallo == u"error500"_s) {
            res.status = 500;
            res.set_content("Error interno del servidor", "text/plain; charset=UTF-8");
        } else if (fallo == u"malformado"_s) {
            res.set_content("<respuesta><autentificacion resultado=\"1\" saldo=",
                            "text/xml; charset=UTF-8");
        } else if (fallo == u"enorme"_s) {
            // A reply past any sane size: the client must refuse it.
            res.set_content(doc.toStdString() + std::string(17 * 1024 * 1024, ' '),
                            "text/xml; charset=UTF-8");
        } else if (fallo == u"extraviado"_s) {
            // One result more than the request had items.
            QByteArray extra = doc;
            extra.replace("</mensajes>",
                          "<mensaje n=\"9999\" resultado=\"1\">Ajeno</mensaje></mensajes>");
            res.set_content(extra.toStdString(), "text/xml; charset=UTF-8");
        } else if (fallo == u"ausente"_s) {
            // The last item's result left out: the item was taken all the same.
            QString falta = QString::fromUtf8(doc);
            falta.remove(QRegularExpression(u"<mensaje [^>]*>[^<]*</mensaje>(?=</mensajes>)"_s));
            res.set_content(falta.toStdString(), "text/xml; charset=UTF-8");
        } else if (fallo == u"saldo_texto"_s) {
            // A balance that is no number.
            QString extra = QString::fromUtf8(doc);
            extra.replace(QRegularExpression(u" saldo=\"[^\"]*\""_s), u" saldo=\"abc\""_s);
            res.set_content(extra.toStdString(), "text/xml; charset=UTF-8");
        } else if (fallo == u"corte"_s) {
            // Headers go out, then the connection closes without a body.
            res.set_content_provider(1000, "text/xml; charset=UTF-8",
                                     [](size_t, size_t, httplib::DataSink&) { return false; });
        } else {
            res.set_content(doc.toStdString(), "text/xml; charset=UTF-8");
        }
    });

    servidor.Post(kRutaRegistro, [&](const httplib::Request&, httplib::Response& res,
                                     const httplib::ContentReader& lector) {
        QByteArray cuerpo;
        lector([&](const char* datos, size_t n) {
            cuerpo.append(datos, qsizetype(n));
            return true;
        });
        res.set_content(plataforma.registrar(formulario(cuerpo)).toStdString(),
                        "text/xml; charset=UTF-8");
    });

    const int real = puerto == 0 ? servidor.bind_to_any_port("127.0.0.1")
                                 : (servidor.bind_to_port("127.0.0.1", puerto) ? puerto : -1);
    if (real < 0) {
        std::fprintf(stderr, "No se puede escuchar en 127.0.0.1:%d\n", puerto);
        return 1;
    }
    std::printf("Escuchando en http://127.0.0.1:%d/\n", real);
    std::fflush(stdout);
    return servidor.listen_after_bind() ? 0 : 1;
}

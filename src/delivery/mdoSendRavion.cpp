#include "delivery/mdoSendRavion.h"

#include "base/ActivityLog.h"
#include "base/AppState.h"
#include "base/Avisos.h"
#include "base/Cifrado.h"
#include "base/Clock.h"
#include "base/Conversions.h"
#include "base/Despliegue.h"
#include "base/Error.h"
#include "base/Interruptor.h"
#include "base/Settings.h"
#include "base/UserInterface.h"
#include "db/Conexion.h"
#include "delivery/qmXMLSend.h"
#include "import/mdoImport.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QThread>

using namespace Qt::StringLiterals;

void SendMessage() {
    AppState& g = appState();
    try {
        if (!Interruptor::instancia().paraEnvio()) return;
        // 2-4.
        g.gsVersionPlataforma.clear();
        g.log.clear();
        g.gbEnviando = true;
        // 5.
        const QString ruta = Settings::getSetting(u"ImportA"_s, u"Path"_s);
        QString lista = Settings::getSetting(u"Import"_s, u"Lista"_s, u"-1"_s);
        if (lista.isEmpty()) lista = u"-1"_s;
        const bool addContactos =
            aBooleano(Settings::getSetting(u"Import"_s, u"AddContactos"_s, u"false"_s));
        // 6. The flag goes up whether or not the file held anything.
        if (ruta.size() > 3) {
            msImportarFichero(ruta, false, true, lista, addContactos);
            g.gbImportado = true;
        }
        // 7-8. Ascending by account code; an account's failure stays in it.
        const QueryResult cuentas =
            Conexion().query(u"select canal from envios group by canal order by canal"_s);
        for (int i = 0; i < cuentas.recordCount(); ++i) {
            msEnviarLote(aEntero16(cuentas.value(i, 0)), g.gbImportado);
            ui().processEvents();
        }
        // 9.
        g.gbEnviando = false;
        g.gbImportado = false;
        // 10.
        msAvisoVersionLog();
    } catch (const QuelmoError& e) {
        // 11. A failure before step 9 leaves gbEnviando up until a later run.
        msLog(u"Error en SendMessage: "_s + e.description());
    } catch (const std::exception& e) {
        msLog(u"Error en SendMessage: "_s + QString::fromUtf8(e.what()));
    }
}

namespace {

const QString kSimulado = u"ENVIO_SIMULADO"_s;
// Numbers that reach no telephone: a user tries the program on them
// without spending credit.
const QStringList kNumerosSimulados = {u"0034111111111"_s, u"0034222222222"_s, u"0034333333333"_s,
                                       u"0034444444444"_s, u"0034555555555"_s, u"0034666666666"_s,
                                       u"0034777777777"_s, u"0034888888888"_s, u"0034999999999"_s};

MedidaLote gMedida;

// Read anew at each place that asks: the user may switch it during a run.
bool depuracion() {
    return Settings::getSetting(u"Tr"_s, u"Debug"_s) == u"RXXML"_s;
}

// Digits with an optional sign and blanks around them; "1e5" or "6.2"
// are no telephone numbers.
bool destinoNumerico(const QString& destino) {
    const QString t = destino.trimmed();
    int i = (t.startsWith(u'+') || t.startsWith(u'-')) ? 1 : 0;
    if (i >= t.size()) return false;
    for (; i < t.size(); ++i)
        if (t[i] < u'0' || t[i] > u'9') return false;
    return true;
}

// Paces exchanges to at most one a second: waits until the second noted
// now has passed. On the wall clock, not the program's clock, which tests
// pin to an instant.
void pausaEntreEnvios() {
    const QDateTime ahora = QDateTime::currentDateTime();
    const QDateTime marca = ahora.addMSecs(-ahora.time().msec());
    while (marca.secsTo(QDateTime::currentDateTime()) <= 0) QThread::msleep(50);
}

// What the platform's comment says, compared in upper case.
bool comentarioDice(const QString& comentario, const QString& texto) {
    return comentario.toUpper().contains(texto.toUpper());
}

const QString kTextoRemitente =
    u"Su Remitente Personalizado no ha sido aceptado.\n\n"
    "Para utilizar un remitente pesonalizado alternativo, envíe un SMS al 5303 con el texto:\n"
    "   REMITENTE  usuario  texto_remitente\n"
    "Sustituya 'usuario' por su nombre de usuario y \n"
    "'texto_remitente' por el texto que desea como remitente."_s;

// The sender stored back after an exchange: the account's mobile number
// when it sends under it, else its own text; always with a trailing blank.
QString remitenteAGuardar(const QueryResult& cuenta, const QString& remitente) {
    const QString r =
        numeroDe(cuenta.value(0, u"remopc"_s)) == 1 ? appState().MovilCuenta.right(9) : remitente;
    return r + u' ';
}

// The platform's version code when it is newer than this release, else 0.
// A code that is not a 16-bit number throws.
int16_t versionNueva() {
    const QString v = appState().gsVersionPlataforma.trimmed();
    if (v.isEmpty()) return 0;
    const int16_t plataforma = aEntero16(v);
    return plataforma > versionCodigo() ? plataforma : 0;
}

}  // namespace

const MedidaLote& medidaUltimoLote() {
    return gMedida;
}

void msPonerUrl(qmXMLSend::XMLSendClass& cliente, const QString& host) {
    cliente.url = host + (host.endsWith(u'/') ? QString() : u"/"_s) +
                  u"servlet/quelmoMessage.servlet.Servlet"_s;
    if (cliente.url.left(7).toUpper() != u"HTTP://"_s) cliente.url = u"HTTP://"_s + cliente.url;
}

int16_t msMaxLote() {
    int16_t lote = 25;
    try {
        const QueryResult r = Conexion().query(u"Select maxlote from opciones where id=1"_s);
        if (r.recordCount() == 1) lote = aEntero16(r.value(0, 0));
        if (lote > 500 || lote < 1) lote = 25;
    } catch (const QuelmoError&) {
        lote = 25;
    }
    return lote;
}

void msEnviarLote(int16_t canal, bool importado) {
    AppState& g = appState();
    Database& db = Conexion();
    gMedida = MedidaLote();
    QElapsedTimer reloj;
    reloj.start();
    try {
        // 1-3.
        g.giMaxLote = msMaxLote();
        const QueryResult lote =
            db.query(u"Select * from envios where canal = ? limit ?"_s, {canal, g.giMaxLote});
        if (lote.recordCount() == 0) return;
        // 4. The rows wait, untouched, for an account.
        const QueryResult cuenta = db.query(u"Select * from canales where canal = ?"_s, {canal});
        if (cuenta.recordCount() < 1) {
            msLog(u"No existen Cuentas definidas para estos mensajes, envios cancelados ..."_s);
            return;
        }
        // 5. The stored sender carries a trailing blank.
        const QString remitente = textoDe(cuenta.value(0, u"Remitente"_s)).trimmed();
        const QString tini = textoDe(cuenta.value(0, u"tini"_s));
        const QString tfin = textoDe(cuenta.value(0, u"tfin"_s));
        const bool imptextos = numeroDe(cuenta.value(0, u"imptextos"_s)) != 0;
        const QString nombre = textoDe(cuenta.value(0, u"Nombre"_s));
        gMedida.lectura = reloj.nsecsElapsed();
        // 6.
        QString linea = u"Enviando "_s + QString::number(lote.recordCount()) +
                        u" mensajes con Cuenta  "_s + nombre;
        if (!remitente.isEmpty()) linea += u" Usando remitente: "_s + remitente;
        msLog(linea);
        // 7-8.
        if (depuracion()) msLog(u"Creando Objetos para el envio"_s);
        const std::unique_ptr<qmXMLSend::XMLSendClass> cliente = qmXMLSend::crear();
        if (depuracion()) msLog(u"Objetos Creados, Configurando propiedades"_s);
        cliente->clave = msCifrarClave(textoDe(cuenta.value(0, u"clave"_s)), false);
        cliente->usuario = textoDe(cuenta.value(0, u"usuario"_s));
        cliente->Remitente = remitente;
        cliente->App = identificacionAplicacion();
        msPonerUrl(*cliente, textoDe(cuenta.value(0, u"Host"_s)));
        cliente->EnviarTodo = true;
        cliente->SendParam = u"xml="_s;
        // 9-19.
        if (depuracion()) msLog(u"Cargando Mensajes"_s);
        reloj.restart();
        const int colId = lote.columnIndex(u"Id"_s);
        const int colMensaje = lote.columnIndex(u"Mensaje"_s);
        const int colAbonado = lote.columnIndex(u"Abonado"_s);
        for (int fila = 0; fila < lote.recordCount(); ++fila) {
            // 10. The run's flag decides, not the row's origin.
            const QString mensaje = textoDe(lote.value(fila, colMensaje));
            const QString texto = (importado && !imptextos) ? mensaje : tini + mensaje + tfin;
            // 11-12.
            QString destino = textoDe(lote.value(fila, colAbonado)).trimmed();
            if (!destinoNumerico(destino)) {
                msLog(u"El Destino [ "_s + destino + u" ] no es válido, envío no realizado"_s);
                continue;
            }
            // 13-15.
            if (destino.startsWith(u'+')) destino = u"00"_s + destino.mid(1);
            if (!destino.startsWith(u"00"_s)) destino = u"0034"_s + destino;
            if (kNumerosSimulados.contains(destino)) destino = kSimulado;
            // 16-17. Only the first piece carries the row's Id as it is.
            const QString id = textoDe(lote.value(fila, colId));
            // Lengths and cuts count characters, so a character outside the
            // basic plane is never split in two.
            const QList<uint> caracteres = texto.toUcs4();
            const qsizetype largo = caracteres.size();
            if (largo < 161) {
                cliente->XMLMensajes.Add(id, destino, texto);
            } else {
                const qsizetype n = largo / 150 + (largo % 150 ? 1 : 0);
                for (qsizetype i = 1, desde = 0; desde < largo; ++i, desde += 150) {
                    const QList<uint> trozo = caracteres.mid(desde, 150);
                    const QString parte =
                        u'(' + QString::number(i) + u'-' + QString::number(n) + u") "_s +
                        QString::fromUcs4(reinterpret_cast<const char32_t*>(trozo.constData()),
                                          trozo.size());
                    const QString clave = i == 1 ? id : u'X' + QString::number(i) + u'X' + id;
                    cliente->XMLMensajes.Add(clave, destino, parte);
                }
            }
            // 18.
            if (depuracion()) msLog(u"Cargado Mensaje: "_s + texto + u", para: "_s + destino);
        }
        gMedida.carga = reloj.nsecsElapsed();
        // 20.
        reloj.restart();
        pausaEntreEnvios();
        gMedida.pausa = reloj.nsecsElapsed();
        // 21-22. A batch of bad destinations makes no exchange.
        if (depuracion())
            msLog(u"Total Mensajes: "_s + QString::number(cliente->XMLMensajes.Count()));
        if (cliente->XMLMensajes.Count() > 0) {
            // 23-24.
            QString nn, ff;
            cliente->SendXML(nn, ff);
            gMedida.documento = cliente->nsDocumento;
            gMedida.http = cliente->nsHttp;
            gMedida.respuesta = cliente->nsRespuesta;
            const qmXMLSend::Autentificacion& rx = cliente->RXAutentificacion;
            if (depuracion()) {
                msLog(u"Autentificacion: "_s + rx.Resultado);
                msLog(u"Comentario: "_s + rx.Comentario);
                msLog(u"Saldo: "_s + rx.saldo);
                msLog(u"Valor nn: "_s + nn);
                msLog(u"Valor ff: "_s + ff);
                msLog(u"Valor AuTrace: "_s + rx.AuTrace);
            }
            // 25.
            const QString r = rx.Resultado.trimmed();
            if (r != u"1"_s) {
                // 26. Refused or not reached: no row changes.
                if (r.isEmpty())
                    msLog(
                        u"Error de conexión. Imposible conectar con Quelmo Mensajes, revise su conexión a Internet"_s);
                else
                    msLog(u"Acceso Denegado, causa: "_s +
                          (rx.Comentario.isEmpty() ? u" Desconocida....."_s : rx.Comentario));
                if (comentarioDice(rx.Comentario, u"su cuenta esté Activa"_s) ||
                    comentarioDice(rx.Comentario, u"cuenta esta Activa"_s) ||
                    comentarioDice(rx.Comentario, u"ACTIVE"_s))
                    ui().msgBox(rx.Comentario, Msg::Exclamation, u"Su cuenta no está Activa"_s);
            } else {
                // 27-31. Each item's history row and outbox change stand or
                // fall together; the whole result shares one disk sync.
                reloj.restart();
                const QVariant canalCuenta = cuenta.value(0, 0);
                const QString crem =
                    remitente.isEmpty() ? nombre : nombre + u" ("_s + remitente + u')';
                QStringList lineas;
                db.begin();
                try {
                    for (int i = 1; i <= cliente->XMLMensajes.Count(); ++i) {
                        const qmXMLSend::Item& item = cliente->XMLMensajes.Item(i);
                        const bool aceptado = item.Destino == kSimulado || item.Resultado;
                        const bool parte1 = !item.Key.startsWith(u'X');
                        db.savepoint(u"item"_s);
                        try {
                            if (aceptado) {
                                db.exec(
                                    u"insert into HEnvios (Abonado,Registro,Mensaje,Resultado,Canal,crem) Values (?,?,?,?,?,?)"_s,
                                    {item.Destino, Clock::now(), item.Mensaje, item.Comentario,
                                     canalCuenta, crem});
                                if (parte1)
                                    db.exec(u"delete from envios where id = ?"_s,
                                            {item.Key.toLongLong()});
                            } else if (parte1) {
                                db.exec(
                                    u"Update envios set registro = ?, intento = intento-1 where id = ?"_s,
                                    {Clock::now(), item.Key.toLongLong()});
                            }
                            db.release(u"item"_s);
                        } catch (const QuelmoError&) {
                            db.rollbackTo(u"item"_s);
                            db.release(u"item"_s);
                            throw;
                        }
                        lineas << item.Comentario + u" Para el "_s + item.Destino + u" -> "_s +
                                      item.Mensaje
                               << u"Su saldo en estos momentos es de : "_s + rx.saldo +
                                      u" Mensajes"_s;
                    }
                    db.commit();
                } catch (const QuelmoError&) {
                    // Items handled before the failure stay handled.
                    db.commit();
                    for (const QString& l : std::as_const(lineas)) msLog(l);
                    throw;
                }
                // The log yields to the screens: only after the commit.
                for (const QString& l : std::as_const(lineas)) msLog(l);
                // 32-34.
                g.MovilCuenta = rx.Movil;
                if (!esNumerico(rx.saldo))
                    throw QuelmoError(
                        u"Saldo no válido en la respuesta de la plataforma: '"_s + rx.saldo + u'\'',
                        ErrNum::Platform);
                db.exec(u"Update canales set saldo=?, Remitente=?, movil=? Where canal = ?"_s,
                        {rx.saldo.trimmed(), remitenteAGuardar(cuenta, remitente), g.MovilCuenta,
                         canal});
                gMedida.escritura = reloj.nsecsElapsed();
                // 35.
                Q_EMIT Avisos::instancia().cuentasCambiadas();
                if (comentarioDice(rx.Comentario, u"Remitente NO Aceptado"_s))
                    ui().msgBox(kTextoRemitente, Msg::Exclamation, u"Remitente no aceptado"_s);
            }
            // 36.
            g.gsVersionPlataforma = rx.Version;
            g.gsSaldoCuenta = rx.saldo;
        }
        // 37-38.
        if (depuracion()) msLog(cliente->RXXML);
    } catch (const QuelmoError& e) {
        // 39.
        msLog(u"Se ha producido un error en el proceso de envio, Cod: "_s +
              QString::number(e.number()) + u", Descripcion: "_s + e.description());
    }
}

void msAvisoVersionLog() {
    if (versionNueva() == 0) return;
    msLog(u"ATENCION: Existe una versión nueva de Quelmo Mensajes SMS, acceda a "_s +
          Despliegue::web() + u" para descargarla."_s);
}

QString msConsultarSaldo(const QString& usuario, const QString& clave, QString& host) {
    AppState& g = appState();
    try {
        // 1-5. A balance query names no sender and no application.
        const std::unique_ptr<qmXMLSend::XMLSendClass> cliente = qmXMLSend::crear();
        cliente->clave = clave;
        cliente->usuario = usuario;
        if (host.isEmpty()) host = Despliegue::plataforma();
        msPonerUrl(*cliente, host);
        cliente->EnviarTodo = true;
        cliente->SendParam = u"xml="_s;
        cliente->XMLMensajes.Add(0, u"xxx"_s, u"getsaldo"_s);
        // 6-7.
        msLog(u"Conectando con Usuario: '"_s + usuario + u"' ...."_s);
        QString nn, ff;
        cliente->SendXML(nn, ff);
        // 8. No reply has no number: it ends as a failure.
        const qmXMLSend::Autentificacion& rx = cliente->RXAutentificacion;
        const int16_t resultado = aEntero16(rx.Resultado);
        const QString saldo = rx.saldo;
        const QString comentario = rx.Comentario;
        g.gsVersionPlataforma = rx.Version;
        g.MovilCuenta = rx.Movil;
        // 9-10.
        msAvisoVersion();
        if (resultado == 1) {
            msLog(comentario + u"    Saldo Disponible: "_s + saldo + u" SMS"_s);
            return saldo;
        }
        msLog(comentario);
        return u"-1"_s;
    } catch (const QuelmoError&) {
        // 11.
        msLog(u"Error de conexión. Revise el estado de su conexión a Internet."_s);
        return u"-2"_s;
    }
}

QString SendAutCuenta(int16_t canal) {
    try {
        QString resultado = u"0"_s;
        const QueryResult cuenta =
            Conexion().query(u"Select * from canales where canal = ?"_s, {canal});
        if (cuenta.recordCount() == 1) {
            const QString clave = msCifrarClave(textoDe(cuenta.value(0, u"clave"_s)), false);
            msLog(u"Preparando conexión para Cuenta '"_s + textoDe(cuenta.value(0, u"Nombre"_s)) +
                  u"' ..."_s);
            QString host = textoDe(cuenta.value(0, u"Host"_s));
            resultado = msConsultarSaldo(textoDe(cuenta.value(0, u"usuario"_s)), clave, host);
            // A refused or failed query keeps the stored balance and sender.
            if (resultado != u"-2"_s && resultado != u"-1"_s)
                Conexion().exec(
                    u"Update canales set saldo=?, Remitente=?, movil=? Where canal = ?"_s,
                    {resultado,
                     remitenteAGuardar(cuenta, textoDe(cuenta.value(0, u"Remitente"_s)).trimmed()),
                     appState().MovilCuenta, canal});
        }
        return resultado;
    } catch (const QuelmoError& e) {
        msLog(u"Error en SendAutCuenta: "_s + e.description());
        return QString();
    }
}

void msAvisoVersion() {
    const int16_t nueva = versionNueva();
    if (nueva == 0) return;
    const QString web = Despliegue::web();
    const QString codigo = QString::number(nueva);
    msLog(u"ATENCION: Existe una versión nueva de Quelmo Mensajes SMS "_s + codigo +
          u", acceda a "_s + web + u" para descargarla."_s);
    const int respuesta = ui().msgBox(
        u"Existe una versión nueva de Quelmo Mensajes SMS\n\n"
        "¿Sesea descargarse la instalación de la nueva versión "_s +
            codigo +
            u"?\n\n"
            "Puede acceder usted si lo desea a nuestra página \n"
            "para ver todas las novedades que incorpora la nueva versión\n\n"
            "     "_s +
            web + u"/quelmo_sms.php"_s,
        Msg::YesNoCancel + Msg::Exclamation);
    if (respuesta == Msg::Yes)
        msAbrirUrl(web + u"/download/Quelmo_Mensajes_SMS.zip"_s);
    else if (respuesta == Msg::No)
        msAbrirUrl(web + u"/quelmo_sms.php"_s);
}

#include "delivery/mdoSendRavion.h"

#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/Despliegue.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/Interruptor.h"
#include "base/RegistroActividad.h"
#include "base/Reloj.h"
#include "base/SecretoOculto.h"
#include "db/Conexion.h"
#include "db/Identidad.h"
#include "db/Transaccion.h"
#include "delivery/Intercambio.h"
#include "delivery/Lote.h"
#include "delivery/qmXMLSend.h"
#include "import/mdoImport.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTime>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

// Batches of this run that could not be delivered.
int g_lotesSinEntregar = 0;
// The watched file failed in this run.
bool g_importacionFallida = false;
// Why the last balance query failed.
QString g_causaFallo;

// A code that can name an account: the outbox may hold anything an older
// program or another tool wrote there.
std::optional<int16_t> codigoCuenta(const QVariant& valor) {
    if (valor.isNull()) return std::nullopt;
    bool ok = false;
    const qlonglong n = valor.toLongLong(&ok);
    if (!ok || n < 0 || n > 255) return std::nullopt;
    return int16_t(n);
}

bool quedanFilas(int16_t canal) {
    return numeroDe(Conexion()
                        .query(u"select exists(select 1 from envios where canal = ?)"_s, {canal})
                        .value(0, 0)) != 0;
}

}  // namespace

namespace {

// The watched file's messages join the outbox before the batches are read.
QCoro::Task<> importarFicheroVigilado(EstadoAplicacion& g) {
    // The watch takes the list and contact option of the manual import.
    const QString ruta = Ajustes::rutaImportacion(Ajustes::Importacion::Vigilada);
    QString lista = Ajustes::listaImportacion(Ajustes::Importacion::Mensajes, u"-1"_s);
    if (lista.isEmpty()) lista = u"-1"_s;
    const bool addContactos = Ajustes::anadirContactos(Ajustes::Importacion::Mensajes);
    // The flag goes up whether or not the file held anything.
    if (ruta.size() <= 3) co_return;
    // Whatever the file does, the outbox goes out after it.
    try {
        g_importacionFallida =
            (co_await msImportarFichero(ruta, false, true, lista, addContactos)).fallido;
    } catch (const std::exception& e) {
        msLog(u"Error importando fichero "_s + ruta + u" :: " + QString::fromLocal8Bit(e.what()));
        g_importacionFallida = true;
    }
    g.gbImportado = true;
}

// The accounts with rows in the outbox, ascending by code; rows under a
// code that names no account are said and left where they are.
QList<int16_t> cuentasConMensajes() {
    QList<int16_t> canales;
    const ResultadoConsulta cuentas =
        Conexion().query(u"select canal from envios group by canal order by canal"_s);
    for (int i = 0; i < cuentas.recordCount(); ++i) {
        const std::optional<int16_t> canal = codigoCuenta(cuentas.value(i, 0));
        if (canal) {
            canales << *canal;
            continue;
        }
        msLog(u"Hay mensajes sin una cuenta válida (cuenta: "_s +
              (cuentas.value(i, 0).isNull() ? u"vacía"_s : textoDe(cuentas.value(i, 0))) +
              u"); se dejan en la bandeja de salida sin enviar"_s);
    }
    return canales;
}

}  // namespace

QCoro::Task<bool> SendMessage() {
    EstadoAplicacion& g = estadoAplicacion();
    // A run never overlaps itself: it would send the same rows again.
    if (g.gbEnviando) co_return false;
    bool lleno = false;
    try {
        if (!Interruptor::instancia().paraEnvio()) co_return false;
        g_lotesSinEntregar = 0;
        g_importacionFallida = false;
        g.gsVersionPlataforma.clear();
        g.log.clear();
        g.gbEnviando = true;
        // Down on every way out, or the window could never close.
        const auto bajar = qScopeGuard([&g] {
            g.gbEnviando = false;
            g.gbImportado = false;
        });
        co_await importarFicheroVigilado(g);
        const QList<int16_t> canales = cuentasConMensajes();
        // Every account's batch is under way at once, each paced on its
        // own; an account's failure stays in it.
        std::vector<QCoro::Task<int>> lotes;
        lotes.reserve(canales.size());
        for (const int16_t canal : canales) lotes.push_back(msEnviarLote(canal, g.gbImportado));
        for (qsizetype i = 0; i < canales.size(); ++i) {
            const int entregadas = co_await lotes[size_t(i)];
            if (entregadas > 0 && entregadas >= g.giMaxLote && quedanFilas(canales[i]))
                lleno = true;
        }
        g.gbEnviando = false;
        g.gbImportado = false;
        msAvisoVersionLog();
    } catch (const ErrorQuelmo& e) {
        msLog(u"Error en SendMessage: "_s + e.description());
    } catch (const std::exception& e) {
        msLog(u"Error en SendMessage: "_s + QString::fromUtf8(e.what()));
    }
    co_return lleno;
}

namespace {

// Read anew at each place that asks: the user may switch it during a run.
bool depuracion() {
    return Ajustes::depurarRespuestas();
}

// What the platform's comment says, compared in upper case.
bool comentarioDice(const QString& comentario, const QString& texto) {
    return comentario.toUpper().contains(texto.toUpper());
}

const QString kTextoAbandonado =
    u"Envío interrumpido al detener el transmisor: los mensajes siguen en la bandeja de "
    u"salida y se enviarán con la misma referencia"_s;

const QString kTextoRemitente =
    u"Su Remitente Personalizado no ha sido aceptado.\n\n"
    "Para utilizar un remitente pesonalizado alternativo, envíe un SMS al 5303 con el texto:\n"
    "   REMITENTE  usuario  texto_remitente\n"
    "Sustituya 'usuario' por su nombre de usuario y \n"
    "'texto_remitente' por el texto que desea como remitente."_s;

// The platform's version code when it is newer than this release, else 0.
// A code that is not a 16-bit number throws.
int16_t versionNueva() {
    const QString v = estadoAplicacion().gsVersionPlataforma.trimmed();
    if (v.isEmpty()) return 0;
    const int16_t plataforma = aEntero16(v);
    return plataforma > versionCodigo() ? plataforma : 0;
}

void anunciarLote(int filas, const Lote::Cuenta& cuenta) {
    QString linea =
        u"Enviando "_s + QString::number(filas) + u" mensajes con Cuenta  "_s + cuenta.nombre;
    if (!cuenta.remitente.isEmpty()) linea += u" Usando remitente: "_s + cuenta.remitente;
    msLog(linea);
}

std::unique_ptr<qmXMLSend::XMLSendClass> clientePara(const Lote::Cuenta& cuenta) {
    if (depuracion()) msLog(u"Creando Objetos para el envio"_s);
    std::unique_ptr<qmXMLSend::XMLSendClass> cliente = qmXMLSend::crear();
    if (depuracion()) msLog(u"Objetos Creados, Configurando propiedades"_s);
    cliente->clave = msCifrarClave(cuenta.clave, false);
    cliente->usuario = cuenta.usuario;
    cliente->Remitente = cuenta.remitente;
    cliente->App = identificacionAplicacion();
    msPonerUrl(*cliente, cuenta.host);
    cliente->EnviarTodo = true;
    cliente->SendParam = u"xml="_s;
    return cliente;
}

// The rows' items; a row without a telephone number stays in the outbox.
void cargarItems(qmXMLSend::Coleccion& items, const ResultadoConsulta& lote,
                 const Lote::Cuenta& cuenta, bool importado) {
    if (depuracion()) msLog(u"Cargando Mensajes"_s);
    const int colId = lote.columnIndex(u"Id"_s);
    const int colMensaje = lote.columnIndex(u"Mensaje"_s);
    const int colAbonado = lote.columnIndex(u"Abonado"_s);
    for (int fila = 0; fila < lote.recordCount(); ++fila) {
        const QString texto =
            Lote::textoCompleto(textoDe(lote.value(fila, colMensaje)), cuenta, importado);
        const QString destino = Lote::normalizarDestino(textoDe(lote.value(fila, colAbonado)));
        if (destino.isEmpty()) {
            msLog(u"El Destino [ "_s + textoDe(lote.value(fila, colAbonado)).trimmed() +
                  u" ] no es válido, envío no realizado"_s);
            continue;
        }
        for (const Lote::Pieza& p : Lote::cortarTexto(textoDe(lote.value(fila, colId)), texto))
            items.Add(p.clave, destino, p.texto);
        if (depuracion()) msLog(u"Cargado Mensaje: "_s + texto + u", para: "_s + destino);
    }
}

QStringList lineasDepuracion(const qmXMLSend::Autentificacion& rx, const QString& nn,
                             const QString& ff) {
    return {u"Autentificacion: "_s + rx.Resultado,
            u"Comentario: "_s + rx.Comentario,
            u"Saldo: "_s + rx.saldo,
            u"Valor nn: "_s + nn,
            u"Valor ff: "_s + ff,
            u"Valor AuTrace: "_s + rx.AuTrace};
}

// Refused or not reached: no row changes. The old words where they hold,
// then the line that names what failed.
void avisarRechazo(const qmXMLSend::Autentificacion& rx, const Transporte::Respuesta& t) {
    if (rx.Resultado.trimmed().isEmpty()) {
        const QString causa = Transporte::descripcion(t);
        if (causa.isEmpty() || Transporte::culpaDeLaRed(t))
            msLog(
                u"Error de conexión. Imposible conectar con Quelmo Mensajes, revise su conexión a Internet"_s);
        if (!causa.isEmpty()) msLog(causa);
    } else
        msLog(u"Acceso Denegado, causa: "_s +
              (rx.Comentario.isEmpty() ? u" Desconocida....."_s : rx.Comentario));
    if (comentarioDice(rx.Comentario, u"su cuenta esté Activa"_s) ||
        comentarioDice(rx.Comentario, u"cuenta esta Activa"_s) ||
        comentarioDice(rx.Comentario, u"ACTIVE"_s))
        ui().aviso(rx.Comentario, Msg::Exclamation, u"Su cuenta no está Activa"_s);
}

// What an exchange left to say once the database is free again: the log
// yields to the screens, and a screen must not write inside our transaction.
struct Desenlace {
    QStringList depuracion;
    QStringList avisos;  // what the reading of the reply passed over
    QStringList lineas;
    bool aceptado = false;
    bool abandonado = false;  // given up on our side: the rows wait as they were
    int entregadas = 0;       // rows that left the outbox
};

// The write lock for an exchange's results, taken without stopping the
// window: short tries with a timer between them. Another
// program holding the database (a script's --send, a sqlite3 shell) delays
// the record and never loses it. Null when the transmitter was stopped
// meanwhile: the rows then go again under the same references, which the
// platform answers without sending twice.
QCoro::Task<std::unique_ptr<Transaccion>> tomarEscritura(BaseDatos& db) {
    const int espera = db.espera();
    bool avisado = false;
    for (;;) {
        db.establecerEspera(50);
        try {
            auto transaccion = std::make_unique<Transaccion>(db);
            db.establecerEspera(espera);
            co_return transaccion;
        } catch (const ErrorBD&) {
            db.establecerEspera(espera);
            if (!db.lastWasBusy()) throw;
        }
        // A large change of ours being stored is no other program.
        if (!avisado && !db.retenida()) {
            msLog(
                u"La base de datos está ocupada por otro programa: el resultado del envío se "
                u"guardará en cuanto quede libre"_s);
            avisado = true;
        }
        if (!co_await Intercambio::pausa(Intercambio::Clase::Envio, 100))
            co_return std::unique_ptr<Transaccion>();
    }
}

// The exchange off the window's thread, then its results in one short
// write transaction: the lock is never held while the platform thinks. A
// row the user deleted meanwhile was still taken by the platform: its
// history row is written and nothing goes twice; rows added meanwhile wait
// for the next run.
QCoro::Task<Desenlace> intercambiar(BaseDatos& db, qmXMLSend::XMLSendClass& cliente,
                                    const Lote::Cuenta& cuenta, int16_t canal, MedidaLote& medida,
                                    QString ruta) {
    Desenlace d;
    QString nn, ff;
    co_await Intercambio::enHilo(Intercambio::Clase::Envio, cliente.cancelacion,
                                 [&] { cliente.SendXML(nn, ff); });
    medida.documento = cliente.nsDocumento;
    medida.http = cliente.nsHttp;
    medida.respuesta = cliente.nsRespuesta;
    const qmXMLSend::Autentificacion& rx = cliente.RXAutentificacion;
    if (depuracion()) d.depuracion = lineasDepuracion(rx, nn, ff);
    d.avisos = cliente.RXAvisos;
    if (cliente.RXTransporte.fallo == Transporte::Fallo::Abandonado) {
        d.abandonado = true;
        co_return d;
    }
    if (rx.Resultado.trimmed() != u"1"_s) co_return d;
    d.aceptado = true;
    // The results belong to the file the rows came from: with another one
    // open now (or none), they wait there and go again under the same
    // references.
    if (db.path() != ruta || !db.isOpen()) {
        d.aceptado = false;
        d.abandonado = true;
        co_return d;
    }

    QElapsedTimer reloj;
    reloj.start();
    const std::unique_ptr<Transaccion> transaccion = co_await tomarEscritura(db);
    if (!transaccion) {
        d.aceptado = false;
        d.abandonado = true;
        co_return d;
    }
    const QString crem = Lote::remitenteHistorial(cuenta);
    try {
        QStringList sinResultado;
        for (const qmXMLSend::Item& item : std::as_const(cliente.XMLMensajes.items())) {
            // Nothing said of it, nothing known: its row stays as it was and
            // goes again under the same reference.
            if (item.SinResultado) {
                sinResultado << item.Key;
                continue;
            }
            if (Lote::aplicarResultado(db, item, cuenta.canal, crem)) ++d.entregadas;
            d.lineas << item.Comentario + u" Para el "_s + item.Destino + u" -> "_s + item.Mensaje
                     << u"Su saldo en estos momentos es de : "_s + rx.saldo + u" Mensajes"_s;
        }
        if (!sinResultado.isEmpty())
            d.avisos << u"La plataforma no devolvió el resultado de %1 mensajes (claves: %2), "
                        u"se dejan en la bandeja de salida"_s.arg(sinResultado.size())
                            .arg(sinResultado.mid(0, 10).join(u", "_s) +
                                 (sinResultado.size() > 10 ? u", ..."_s : QString()));
        estadoAplicacion().MovilCuenta = rx.Movil;
        // A balance that is no number leaves the items' results standing;
        // the caller reports it.
        if (esNumerico(rx.saldo))
            Lote::actualizarCuenta(
                db, canal, rx.saldo,
                Lote::remitenteAGuardar(cuenta.remopc, cuenta.remitente, rx.Movil), rx.Movil);
    } catch (const ErrorQuelmo&) {
        // Items handled before the failure stay handled.
        transaccion->commit();
        for (const QString& l : std::as_const(d.depuracion)) msLog(l);
        for (const QString& l : std::as_const(d.avisos)) msLog(l);
        for (const QString& l : std::as_const(d.lineas)) msLog(l);
        throw;
    }
    transaccion->commit();
    medida.escritura = reloj.nsecsElapsed();
    co_return d;
}

}  // namespace

QString msConEsquema(const QString& host) {
    // A host named https must never be reached in clear.
    if (host.left(7).toUpper() == u"HTTP://"_s || Transporte::esSegura(host)) return host;
    return u"HTTP://"_s + host;
}

void msPonerUrl(qmXMLSend::XMLSendClass& cliente, const QString& host) {
    cliente.url = msConEsquema(host + (host.endsWith(u'/') ? QString() : u"/"_s) +
                               u"servlet/quelmoMessage.servlet.Servlet"_s);
}

int16_t msMaxLote() {
    int16_t lote = 25;
    try {
        const ResultadoConsulta r = Conexion().query(u"Select maxlote from opciones where id=1"_s);
        if (r.recordCount() == 1) lote = aEntero16(r.value(0, 0));
        if (lote > 500 || lote < 1) lote = 25;
    } catch (const ErrorQuelmo&) {
        lote = 25;
    }
    return lote;
}

QCoro::Task<int> msEnviarLote(int16_t canal, bool importado, MedidaLote* medidaLote) {
    EstadoAplicacion& g = estadoAplicacion();
    BaseDatos& db = Conexion();
    MedidaLote medida;
    const auto entregar = qScopeGuard([&] {
        if (medidaLote) *medidaLote = medida;
    });
    QElapsedTimer reloj;
    reloj.start();
    int entregadas = 0;
    // Up to the last line about the batch, the debug lines included.
    std::optional<SecretoOculto> oculta;
    try {
        g.giMaxLote = msMaxLote();
        const ResultadoConsulta lote = Lote::leerFilas(db, canal, g.giMaxLote);
        if (lote.recordCount() == 0) co_return 0;
        // The rows wait, untouched, for an account.
        const std::optional<Lote::Cuenta> cuenta = Lote::leerCuenta(db, canal);
        if (!cuenta) {
            ++g_lotesSinEntregar;
            msLog(u"No existen Cuentas definidas para estos mensajes, envios cancelados ..."_s);
            co_return 0;
        }
        medida.lectura = reloj.nsecsElapsed();
        anunciarLote(lote.recordCount(), *cuenta);
        const std::unique_ptr<qmXMLSend::XMLSendClass> cliente = clientePara(*cuenta);
        oculta.emplace(cliente->clave);
        // The file the rows came from and its identity, read with them: a
        // resend (after a crash or a stop) carries the same references,
        // which the platform answers without sending again, and the results
        // go nowhere but into that file.
        cliente->Origen = identidadBase(db);
        const QString ruta = db.path();
        reloj.restart();
        cargarItems(cliente->XMLMensajes, lote, *cuenta, importado);
        medida.carga = reloj.nsecsElapsed();
        reloj.restart();
        if (!co_await Lote::pausaEntreEnvios() || db.path() != ruta) {
            msLog(kTextoAbandonado);
            co_return 0;
        }
        medida.pausa = reloj.nsecsElapsed();
        if (depuracion())
            msLog(u"Total Mensajes: "_s + QString::number(cliente->XMLMensajes.Count()));
        // A batch of bad destinations makes no exchange.
        if (cliente->XMLMensajes.Count() > 0) {
            const Desenlace d = co_await intercambiar(db, *cliente, *cuenta, canal, medida, ruta);
            entregadas = d.entregadas;
            const qmXMLSend::Autentificacion& rx = cliente->RXAutentificacion;
            for (const QString& l : d.depuracion) msLog(l);
            for (const QString& l : d.avisos) msLog(l);
            if (d.abandonado) {
                msLog(kTextoAbandonado);
                co_return 0;
            }
            if (!d.aceptado) {
                ++g_lotesSinEntregar;
                avisarRechazo(rx, cliente->RXTransporte);
            } else {
                // The results are stored; their lines come at the next turn
                // of the loop, so a large batch holds the window for its
                // writes or its lines, never both at once.
                co_await Intercambio::pausa(Intercambio::Clase::Envio, 0);
                for (const QString& l : d.lineas) msLog(l);
                if (!esNumerico(rx.saldo))
                    throw ErrorQuelmo(
                        u"Saldo no válido en la respuesta de la plataforma: '"_s + rx.saldo + u'\'',
                        ErrNum::Plataforma);
                Q_EMIT Avisos::instancia().cuentasCambiadas();
                if (comentarioDice(rx.Comentario, u"Remitente NO Aceptado"_s))
                    ui().aviso(kTextoRemitente, Msg::Exclamation, u"Remitente no aceptado"_s);
            }
            g.gsVersionPlataforma = rx.Version;
            g.gsSaldoCuenta = rx.saldo;
        }
        if (depuracion()) msLog(cliente->RXXML);
    } catch (const ErrorQuelmo& e) {
        ++g_lotesSinEntregar;
        msLog(u"Se ha producido un error en el proceso de envio, Cod: "_s +
              QString::number(e.number()) + u", Descripcion: "_s + e.description());
        // The engine's words are English; the user can act on these.
        if (const auto* bd = dynamic_cast<const ErrorBD*>(&e); bd && !bd->causa().isEmpty())
            msLog(u"No se pudo escribir en la base de datos: "_s + bd->causa() +
                  u". Los mensajes siguen en la bandeja de salida"_s);
        co_return 0;
    }
    co_return entregadas;
}

void msAvisoVersionLog() {
    if (versionNueva() == 0) return;
    msLog(u"ATENCION: Existe una versión nueva de Quelmo Mensajes SMS, acceda a "_s +
          Despliegue::web() + u" para descargarla."_s);
}

QCoro::Task<Saldo> msConsultarSaldo(QString usuario, QString clave, QString host,
                                    Transporte::Cancelacion cancelacion) {
    EstadoAplicacion& g = estadoAplicacion();
    const SecretoOculto oculta(clave);
    g_causaFallo.clear();
    Transporte::Respuesta transporte;
    try {
        // A balance query names no sender and no application.
        const std::unique_ptr<qmXMLSend::XMLSendClass> cliente = qmXMLSend::crear();
        cliente->cancelacion = cancelacion;
        cliente->clave = clave;
        cliente->usuario = usuario;
        if (host.isEmpty()) host = Despliegue::plataforma();
        msPonerUrl(*cliente, host);
        cliente->EnviarTodo = true;
        cliente->SendParam = u"xml="_s;
        cliente->XMLMensajes.Add(0, u"xxx"_s, u"getsaldo"_s);
        msLog(u"Conectando con Usuario: '"_s + usuario + u"' ...."_s);
        QString nn, ff;
        try {
            co_await Intercambio::enHilo(Intercambio::Clase::Consulta, cliente->cancelacion,
                                         [&] { cliente->SendXML(nn, ff); });
        } catch (const ErrorQuelmo&) {
            transporte = cliente->RXTransporte;
            throw;
        }
        transporte = cliente->RXTransporte;
        // No reply has no number: it ends as a failure.
        const qmXMLSend::Autentificacion& rx = cliente->RXAutentificacion;
        const int16_t resultado = aEntero16(rx.Resultado);
        const QString saldo = rx.saldo;
        const QString comentario = rx.Comentario;
        g.gsVersionPlataforma = rx.Version;
        g.MovilCuenta = rx.Movil;
        msAvisoVersion();
        if (resultado == 1) {
            msLog(comentario + u"    Saldo Disponible: "_s + saldo + u" SMS"_s);
            co_return Saldo{Saldo::Estado::Conocido, saldo};
        }
        msLog(comentario);
        co_return Saldo{Saldo::Estado::Denegado, {}};
    } catch (const ErrorQuelmo& e) {
        // The old words where they hold, then what failed.
        g_causaFallo = Transporte::descripcion(transporte);
        if (g_causaFallo.isEmpty() || Transporte::culpaDeLaRed(transporte))
            msLog(u"Error de conexión. Revise el estado de su conexión a Internet."_s);
        if (g_causaFallo.isEmpty()) g_causaFallo = e.description();
        msLog(g_causaFallo);
        co_return Saldo{Saldo::Estado::Fallido, {}};
    }
}

QString msCausaFallo() {
    return g_causaFallo;
}

int msLotesSinEntregar() {
    return g_lotesSinEntregar;
}

bool msImportacionFallida() {
    return g_importacionFallida;
}

QCoro::Task<Saldo> SendAutCuenta(int16_t canal, Transporte::Cancelacion cancelacion) {
    try {
        Saldo resultado{Saldo::Estado::SinCuenta, {}};
        const ResultadoConsulta cuenta =
            Conexion().query(u"Select * from canales where canal = ?"_s, {canal});
        if (cuenta.recordCount() == 1) {
            const QString clave = msCifrarClave(textoDe(cuenta.value(0, u"clave"_s)), false);
            msLog(u"Preparando conexión para Cuenta '"_s + textoDe(cuenta.value(0, u"Nombre"_s)) +
                  u"' ..."_s);
            QString host = textoDe(cuenta.value(0, u"Host"_s));
            resultado = co_await msConsultarSaldo(textoDe(cuenta.value(0, u"usuario"_s)), clave,
                                                  host, cancelacion);
            // The screen that asked has closed: nothing is stored for it.
            if (cancelacion.cancelada()) co_return Saldo{};
            // A refused or failed query keeps the stored balance and sender.
            if (resultado.conocido())
                Lote::actualizarCuenta(
                    Conexion(), canal, resultado.creditos,
                    Lote::remitenteAGuardar(cuenta.value(0, u"remopc"_s),
                                            textoDe(cuenta.value(0, u"Remitente"_s)).trimmed(),
                                            estadoAplicacion().MovilCuenta),
                    estadoAplicacion().MovilCuenta);
        }
        co_return resultado;
    } catch (const ErrorQuelmo& e) {
        msLog(u"Error en SendAutCuenta: "_s + e.description());
        co_return Saldo{};
    }
}

void msAvisoVersion() {
    const int16_t nueva = versionNueva();
    if (nueva == 0) return;
    const QString web = Despliegue::web();
    const QString codigo = QString::number(nueva);
    msLog(u"ATENCION: Existe una versión nueva de Quelmo Mensajes SMS "_s + codigo +
          u", acceda a "_s + web + u" para descargarla."_s);
    // Asked without holding the caller: the query's result is stored
    // whether or not the user answers.
    ui().preguntar(
        u"Existe una versión nueva de Quelmo Mensajes SMS\n\n"
        "¿Sesea descargarse la instalación de la nueva versión "_s +
            codigo +
            u"?\n\n"
            "Puede acceder usted si lo desea a nuestra página \n"
            "para ver todas las novedades que incorpora la nueva versión\n\n"
            "     "_s +
            web + u"/quelmo_sms.php"_s,
        Msg::YesNoCancel + Msg::Exclamation, QString(), [web](int respuesta) {
            if (respuesta == Msg::Yes)
                msAbrirUrl(web + u"/download/Quelmo_Mensajes_SMS.zip"_s);
            else if (respuesta == Msg::No)
                msAbrirUrl(web + u"/quelmo_sms.php"_s);
        });
}

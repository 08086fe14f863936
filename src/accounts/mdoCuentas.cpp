#include "accounts/mdoCuentas.h"

#include "base/Avisos.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/Despliegue.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/Movil.h"
#include "base/RegistroActividad.h"
#include "db/Conexion.h"
#include "db/Transaccion.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

const QString kDenegada =
    u"Autentificación Denegada, Revise Usuario y Contraseña y que su Cuenta esté Activada."_s;

void avisarCambio() {
    msAvisarCuentas();
}

bool sinCredenciales(const ResultadoConsulta& r) {
    return textoDe(r.value(0, u"usuario"_s)).isEmpty() || textoDe(r.value(0, u"clave"_s)).isEmpty();
}

// What the editor's hidden message-count field writes: the default when
// empty or zero.
QVariant maxmenNuevo(const QString& maxmen) {
    const QString t = maxmen.trimmed();
    if (t.isEmpty() || (esNumerico(t) && aNumero(t) == 0)) return 160;
    return t;
}

QString remitenteDe(const DatosCuenta& d) {
    // Policy 1 sends from the mobile number the platform holds for the user.
    if (d.remopc == 1) return Movil::remitente(estadoAplicacion().MovilCuenta);
    return d.remitente;
}

// A balance the platform did not give is unknown, never a number.
QVariant saldoConocido(const Saldo& saldo) {
    return saldo.conocido() && esNumerico(saldo.creditos) && numeroDe(saldo.creditos) >= 0
               ? QVariant(saldo.creditos)
               : QVariant();
}

}  // namespace

QString msTextoDenegada() {
    return kDenegada;
}

QString msAvisoSinVerificar() {
    return u"No se pudo verificar la cuenta con la plataforma. Se ha guardado tal como la "
           u"escribió y se comprobará en el próximo envío.\n"_s +
           msCausaFallo();
}

QString msUrlRecarga(const QString& usuario) {
    // A user name with "&" or a blank must reach the page whole.
    QString web = Despliegue::webSegura();
    while (web.endsWith(u'/')) web.chop(1);
    return web + u"/informacion/recarga_sms.php?u="_s +
           QString::fromLatin1(QUrl::toPercentEncoding(usuario));
}

Hecho msRecarga() {
    try {
        const ResultadoConsulta r = Conexion().query(u"select * from canales where Principal=1"_s);
        if (r.isEmpty())
            return Hecho::no(u"No dispone de ninguna Cuenta en la aplicación"_s, Msg::Exclamation);
        msAbrirUrl(msUrlRecarga(textoDe(r.value(0, u"usuario"_s))));
    } catch (const ErrorQuelmo& e) {
        if (e.number() == ErrNum::ItemNotFound) msBaseNoValida();
    }
    return {};
}

void msMostrarAltaCuenta() {
    ui().altaCuenta();
}

QCoro::Task<> msPrimeraVez() {
    try {
        const ResultadoConsulta r = Conexion().query(u"select * from canales where principal=1"_s);
        if (r.isEmpty()) {
            msMostrarAltaCuenta();
            co_return;
        }
        // One exchange per start refreshes the balance.
        if (!sinCredenciales(r)) {
            co_await SendAutCuenta(aEntero16(r.value(0, u"canal"_s)));
            co_return;
        }
        // A principal account without its credentials is completed in the
        // editor; only if it stays unusable does the set-up come.
        ui().completarCuentaPrincipal();
        const ResultadoConsulta despues =
            Conexion().query(u"select * from canales where principal=1"_s);
        if (despues.isEmpty() || sinCredenciales(despues)) msMostrarAltaCuenta();
    } catch (const ErrorQuelmo&) {
        // A database without the accounts table is caught by the start-up checks.
    }
}

// ---- the list of accounts ---------------------------------------------------

ResultadoConsulta msAbrirCuentas() {
    ResultadoConsulta r = Conexion().query(u"select * from canales order by canal asc"_s);
    // Every column the list shows must be there, even with no row.
    for (const QString& c :
         {u"Nombre"_s, u"Remitente"_s, u"Principal"_s, u"saldo"_s, u"usuario"_s, u"canal"_s})
        if (r.columnIndex(c) < 0) throw ErrorBD(u"Falta la columna "_s + c, ErrNum::ItemNotFound);
    return r;
}

int msFilaDeCuenta(const ResultadoConsulta& cuentas, const QString& nombre) {
    if (nombre.isEmpty()) return -1;
    const int col = cuentas.columnIndex(u"Nombre"_s);
    if (col < 0) return -1;
    for (int f = 0; f < cuentas.recordCount(); ++f)
        if (textoDe(cuentas.value(f, col)) == nombre) return f;
    return -1;
}

void msComprobarPrincipal() {
    try {
        BaseDatos& db = Conexion();
        const long long cuentas = numeroDe(db.query(u"Select Count(*) from canales"_s).value(0, 0));
        if (cuentas == 1) {
            db.exec(u"Update canales set principal=1"_s);
            return;
        }
        const long long principales =
            numeroDe(db.query(u"Select Count(*) from canales where principal=1"_s).value(0, 0));
        // More than one principal is left as it stands.
        if (principales == 0 && cuentas >= 2)
            db.exec(
                u"UPDATE canales SET principal = 1 WHERE canal IN (select MIN(canal) from canales)"_s);
    } catch (const ErrorQuelmo&) {
        // The rule is retried at the next change of accounts; the change
        // itself already stands.
    }
}

void msAvisarCuentas() {
    Q_EMIT Avisos::instancia().cuentasCambiadas();
}

int msSiguienteCanal() {
    const ResultadoConsulta r = Conexion().query(u"select max(canal) from canales"_s);
    if (r.isEmpty() || r.value(0, 0).isNull()) return 0;
    return int(numeroDe(r.value(0, 0))) + 1;
}

void msHacerPrincipal(int16_t canal) {
    try {
        // Both or neither: a failure half-way must not leave no principal.
        Transaccion t(Conexion());
        Conexion().exec(u"Update Canales set principal=0"_s);
        Conexion().exec(u"Update Canales set principal=1 Where Canal = ?"_s, {canal});
        t.commit();
    } catch (const ErrorQuelmo& e) {
        msLog(u"No se pudo establecer la Cuenta Principal: "_s + e.description());
    }
    avisarCambio();
}

namespace {

// Messages waiting in the outbox for an account.
long long enBandeja(int16_t canal) {
    return numeroDe(
        Conexion().query(u"Select Count(*) from envios where Canal = ?"_s, {canal}).value(0, 0));
}

Hecho enBandejaNoSeElimina(long long n) {
    return Hecho::no(u"Imposible eliminar esta Cuenta.\nHay "_s + QString::number(n) +
                         (n == 1 ? u" mensaje"_s : u" mensajes"_s) +
                         u" en la Bandeja de Salida esperando a ser enviados con esta Cuenta. "
                         u"Envíelos o elimínelos antes de eliminar la Cuenta."_s,
                     Msg::Critical);
}

}  // namespace

Hecho msPuedeEliminarCuenta(int16_t canal) {
    // Contacts hold an account back, and so do messages waiting in the
    // outbox: a new account takes the highest code plus one, and would
    // otherwise send them with its own credit and sender.
    const long long contactos = numeroDe(
        Conexion().query(u"Select Count(*) from abonados where canal = ?"_s, {canal}).value(0, 0));
    if (contactos > 0)
        return Hecho::no(
            u"Imposible eliminar esta Cuenta.\nPara eliminar una Cuenta, no deben de "
            u"existir Contactos asociados a  la Cuenta ."_s,
            Msg::Critical);
    if (const long long n = enBandeja(canal); n > 0) return enBandejaNoSeElimina(n);
    return {};
}

Hecho msEliminarCuenta(int16_t canal) {
    if (Hecho puede = msPuedeEliminarCuenta(canal); !puede) return puede;
    try {
        // Checked again in the one statement: a script may have queued a
        // message for it since the check.
        const int borradas = Conexion().exec(
            u"delete from canales where canal = ? and not exists "
            u"(select 1 from envios where Canal = ?)"_s,
            {canal, canal});
        if (borradas == 0) {
            if (const long long n = enBandeja(canal); n > 0) return enBandejaNoSeElimina(n);
            // Gone already: nothing was deleted, nothing to tell.
            return {};
        }
    } catch (const ErrorBD& e) {
        return Hecho::no(e.description(), Msg::OkOnly);
    }
    msComprobarPrincipal();
    avisarCambio();
    return {};
}

QCoro::Task<Hecho> msVerSaldo(int16_t canal, Transporte::Cancelacion cancelacion) {
    const Saldo r = co_await SendAutCuenta(canal, cancelacion);
    if (cancelacion.cancelada()) co_return Hecho();
    avisarCambio();
    if (r.estado == Saldo::Estado::Denegado)
        co_return Hecho::no(kDenegada, Msg::Critical | Msg::DefaultButton2);
    if (r.estado == Saldo::Estado::Fallido)
        co_return Hecho::no(
            u"Error de conexión. Imposible conectar con Quelmo Mensajes, revise su conexión a "
            u"Internet.\n"_s +
                msCausaFallo(),
            Msg::Critical | Msg::DefaultButton2);
    co_return Hecho();
}

// ---- the account editor -----------------------------------------------------

QString msHostPlataforma() {
    QString h = Despliegue::plataforma().trimmed();
    // Only the plain scheme goes: an https address stays one.
    if (h.startsWith(u"http://"_s, Qt::CaseInsensitive)) h = h.mid(7);
    while (h.endsWith(u'/')) h.chop(1);
    return h;
}

DatosCuenta msCuentaNueva() {
    DatosCuenta d;
    d.host = msHostPlataforma();
    return d;
}

DatosCuenta msLeerCuenta(int16_t canal) {
    DatosCuenta d;
    d.puerto.clear();
    const ResultadoConsulta r =
        Conexion().query(u"select * from canales where canal = ?"_s, {canal});
    if (r.isEmpty()) return d;
    auto texto = [&](const QString& c) { return textoDe(r.value(0, c)); };
    d.nombre = texto(u"Nombre"_s);
    d.host = texto(u"host"_s);
    d.puerto = texto(u"puerto"_s);
    d.usuario = texto(u"usuario"_s);
    d.clave = msCifrarClave(texto(u"clave"_s), false);
    d.remopc = int(numeroDe(r.value(0, u"remopc"_s)));
    d.movil = Movil::remitente(texto(u"Movil"_s));
    d.remitente = d.remopc == 1 ? d.movil : texto(u"Remitente"_s);
    d.tini = texto(u"tini"_s);
    d.tfin = texto(u"tfin"_s);
    d.importacion = numeroDe(r.value(0, u"imptextos"_s)) != 0;
    // The message count is never read back: every save writes the default.
    return d;
}

QCoro::Task<Saldo> msVerificarCuenta(QString usuario, QString clave,
                                     Transporte::Cancelacion cancelacion) {
    // A number left from an earlier exchange must not be stored with this
    // account when the platform can't be reached.
    estadoAplicacion().MovilCuenta.clear();
    co_return co_await msConsultarSaldo(usuario, clave, QString(), cancelacion);
}

Hecho msGuardarCuenta(DatosCuenta& d, bool edicion, int16_t canal, Saldo saldo) {
    const bool sinVerificar = saldo.estado == Saldo::Estado::Fallido;
    // Kept against the platform's word: no credit is known to it.
    if (saldo.estado == Saldo::Estado::Denegado) saldo = Saldo{Saldo::Estado::Conocido, u"0"_s};
    if (d.puerto.isEmpty())
        return Hecho::no(u"Valor no valido para el parametro PUERTO REMOTO"_s, Msg::OkOnly);
    if (d.host.isEmpty())
        return Hecho::no(u"Valor no valido para el parametro HOST REMOTO"_s, Msg::OkOnly);
    const int remopc = d.remopc < 0 ? 0 : d.remopc;
    try {
        const QString clave = msCifrarClave(d.clave, true);
        QString movil = estadoAplicacion().MovilCuenta;
        // Unreached, the platform said nothing of the number: the stored
        // one stands (and with it a sender taken from it).
        if (sinVerificar && edicion) {
            movil = textoDe(Conexion()
                                .query(u"select Movil from canales where canal = ?"_s, {canal})
                                .value(0, 0));
            estadoAplicacion().MovilCuenta = movil;
        }
        if (edicion) {
            d.host = msConEsquema(d.host);
            Conexion().exec(
                u"Update Canales set nombre = ?, MaxMen = ?, Host = ?, Puerto = 80, Usuario = ?, "
                u"Clave = ?, Remitente = ?, remopc = ?, tini = ?, tfin = ?, imptextos = ?, "
                u"Movil = ? Where canal = ?"_s,
                {d.nombre, d.maxmen, QString(d.host).remove(u'\''), d.usuario, clave,
                 remitenteDe(d), remopc, d.tini, d.tfin, d.importacion ? 1 : 0, movil, canal});
        } else {
            // A new account's host stays as typed until its first edit.
            Conexion().exec(
                u"Insert into Canales (Canal,Nombre,maxmen,Puerto,usuario,clave,Host,Saldo,"
                u"Principal,Remitente,remopc,tini,tfin,imptextos,Movil) "
                u"Values (?,?,?,80,?,?,?,?,0,?,?,?,?,?,?)"_s,
                {canal, d.nombre, maxmenNuevo(d.maxmen), d.usuario, clave, d.host,
                 saldoConocido(saldo), remitenteDe(d), remopc, d.tini, d.tfin,
                 d.importacion ? 1 : 0, movil});
        }
    } catch (const ErrorQuelmo& e) {
        return Hecho::no(u"Encontrado Error: "_s + e.description(), Msg::Exclamation);
    }
    avisarCambio();
    return {};
}

// ---- first-run set-up -------------------------------------------------------

QString msComprobarDatosIniciales(const QString& usuario, const QString& clave,
                                  const QString& clave2) {
    // The passwords are compared first: three empty fields pass it.
    if (clave != clave2)
        return u"Los datos insertados en los campos Contraseña no coinciden, inserte de nuevo la "
               u"Contraseña"_s;
    if (usuario.isEmpty()) return u"Debe dar valor al campo USUARIO"_s;
    if (clave.isEmpty()) return u"Debe dar valor al campo CONTRASEÑA"_s;
    return QString();
}

namespace {

// Writes the first-run account row (principal, fixed defaults, code max+1
// or 0): Hecha, or why the row was not written.
AltaInicial NewChannel(const Saldo& saldo, const QString& usuario, const QString& clave) {
    try {
        BaseDatos& db = Conexion();
        const ResultadoConsulta r = db.query(u"Select max(canal)+1 from canales"_s);
        const QVariant canal =
            r.isEmpty() || r.value(0, 0).isNull() ? QVariant(0) : QVariant(numeroDe(r.value(0, 0)));
        db.exec(
            u"Insert into Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,Principal,"
            u"Remitente,remopc,movil) Values (?,?,160,80,?,?,?,?,1,'',0,?)"_s,
            {canal, QString(u"Cuenta_"_s + usuario), msConEsquema(msHostPlataforma()), usuario,
             msCifrarClave(clave, true), saldoConocido(saldo), estadoAplicacion().MovilCuenta});
        return AltaInicial::Hecha;
    } catch (const ErrorBD&) {
        // A statement the file can't take means a database of the wrong kind.
        return AltaInicial::BaseNoValida;
    } catch (const ErrorQuelmo&) {
        return AltaInicial::FalloBase;
    }
}

}  // namespace

QCoro::Task<Resultado<AltaInicial>> msAltaInicial(QString usuario, QString clave, QString clave2,
                                                  Transporte::Cancelacion cancelacion) {
    const QString falta = msComprobarDatosIniciales(usuario, clave, clave2);
    if (!falta.isEmpty()) co_return Hecho::no(falta, Msg::Critical);
    estadoAplicacion().MovilCuenta.clear();
    const Saldo saldo = co_await msConsultarSaldo(usuario, clave, QString(), cancelacion);
    if (cancelacion.cancelada()) co_return AltaInicial::Abandonada;
    // Unreached is not refused: the account is written, but not called a success.
    if (saldo.estado == Saldo::Estado::Denegado)
        co_return Hecho::no(kDenegada.chopped(1) + u", verifique sus datos"_s, Msg::Critical);
    if (const AltaInicial escrita = NewChannel(saldo, usuario, clave);
        escrita != AltaInicial::Hecha)
        co_return escrita;
    avisarCambio();
    co_return saldo.estado == Saldo::Estado::Fallido ? AltaInicial::SinVerificar
                                                     : AltaInicial::Hecha;
}

QCoro::Task<Resultado<QString>> msAnadirCuentaRegistrada(QString usuario, QString clave,
                                                         Transporte::Cancelacion cancelacion) {
    estadoAplicacion().MovilCuenta.clear();
    const QVariant saldo =
        saldoConocido(co_await msConsultarSaldo(usuario, clave, QString(), cancelacion));
    try {
        BaseDatos& db = Conexion();
        const bool primera = db.query(u"select canal from canales where principal=1"_s).isEmpty();
        db.exec(
            u"Insert into Canales (Canal,Nombre,maxmen,Puerto,Host,usuario,clave,Saldo,Principal,"
            u"Remitente,remopc,tini,tfin,imptextos,movil) "
            u"Values (?,?,160,80,?,?,?,?,?,'',0,'','',0,?)"_s,
            {msSiguienteCanal(), QString(u"Cuenta_"_s + usuario), msConEsquema(msHostPlataforma()),
             usuario, msCifrarClave(clave, true), saldo, primera ? 1 : 0,
             estadoAplicacion().MovilCuenta});
    } catch (const ErrorQuelmo& e) {
        co_return Hecho::no(u"Encontrado Error: "_s + e.description(), Msg::Exclamation);
    }
    avisarCambio();
    // Signed up a moment ago: a failed query only means the balance is not known yet.
    co_return saldo.isNull() ? u""_s : saldo.toString();
}

#include "accounts/mdoCuentas.h"

#include "base/Avisos.h"
#include "base/Cifrado.h"
#include "base/Conversiones.h"
#include "base/Despliegue.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/Movil.h"
#include "base/Pantallas.h"
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
const QString kBaseNoValida =
    u"La Base de Datos Seleccionada no es válida\nPor favor seleccione la Base de Datos "
    u"correcta de Quelmo Mensajes"_s;
constexpr int kPregunta = Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2;

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

// Said when the platform could not be reached (as opposed to a refusal):
// what the user typed is kept, and the next exchange tells.
void avisarSinVerificar() {
    ui().msgBox(
        u"No se pudo verificar la cuenta con la plataforma. Se ha guardado tal como la escribió "
        u"y se comprobará en el próximo envío.\n"_s +
            msCausaFallo(),
        Msg::Exclamation);
}

// A balance the platform did not give is unknown, never a number.
QVariant saldoConocido(const Saldo& saldo) {
    return saldo.conocido() && esNumerico(saldo.creditos) && numeroDe(saldo.creditos) >= 0
               ? QVariant(saldo.creditos)
               : QVariant();
}

}  // namespace

QString msUrlRecarga(const QString& usuario) {
    // A user name with "&" or a blank must reach the page whole.
    QString web = Despliegue::webSegura();
    while (web.endsWith(u'/')) web.chop(1);
    return web + u"/informacion/recarga_sms.php?u="_s +
           QString::fromLatin1(QUrl::toPercentEncoding(usuario));
}

void msRecarga() {
    try {
        const ResultadoConsulta r = Conexion().query(u"select * from canales where Principal=1"_s);
        if (r.isEmpty()) {
            ui().msgBox(u"No dispone de ninguna Cuenta en la aplicación"_s, Msg::Exclamation);
            return;
        }
        msAbrirUrl(msUrlRecarga(textoDe(r.value(0, u"usuario"_s))));
    } catch (const ErrorQuelmo& e) {
        if (e.number() == ErrNum::ItemNotFound) msBaseNoValida();
    }
}

void msMostrarAltaCuenta() {
    Pantallas::abrirOAvisar(u"frmTipoRegistro"_s,
                            u"[pantalla] No hay una cuenta principal utilizable; sin ventana no se "
                            u"puede configurar una cuenta."_s);
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
        Pantallas::abrir(u"frmNewCanal.Principal"_s);
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

void msHacerPrincipal(int16_t canal, const QString& nombre) {
    if (ui().msgBox(
            u"Quiere establecer la Cuenta '"_s + nombre + u"' como Cuenta Principal de Envío?"_s,
            kPregunta) != Msg::Yes)
        return;
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

void avisarEnBandeja(long long n) {
    ui().msgBox(u"Imposible eliminar esta Cuenta.\nHay "_s + QString::number(n) +
                    (n == 1 ? u" mensaje"_s : u" mensajes"_s) +
                    u" en la Bandeja de Salida esperando a ser enviados con esta Cuenta. "
                    u"Envíelos o elimínelos antes de eliminar la Cuenta."_s,
                Msg::Critical);
}

}  // namespace

bool msEliminarCuenta(int16_t canal) {
    // Contacts hold an account back, and so do messages waiting in the
    // outbox: a new account takes the highest code plus one, and would
    // otherwise send them with its own credit and sender.
    const long long contactos = numeroDe(
        Conexion().query(u"Select Count(*) from abonados where canal = ?"_s, {canal}).value(0, 0));
    if (contactos > 0) {
        ui().msgBox(
            u"Imposible eliminar esta Cuenta.\nPara eliminar una Cuenta, no deben de "
            u"existir Contactos asociados a  la Cuenta ."_s,
            Msg::Critical);
        return false;
    }
    if (const long long n = enBandeja(canal); n > 0) {
        avisarEnBandeja(n);
        return false;
    }
    if (ui().msgBox(u"Esta a punto de eliminar una Cuenta de la aplicación, esta seguro ?"_s,
                    kPregunta) != Msg::Yes)
        return false;
    try {
        // Checked again in the one statement: a script may have queued a
        // message for it while the question was open.
        const int borradas = Conexion().exec(
            u"delete from canales where canal = ? and not exists "
            u"(select 1 from envios where Canal = ?)"_s,
            {canal, canal});
        if (borradas == 0) {
            if (const long long n = enBandeja(canal); n > 0) avisarEnBandeja(n);
            return false;
        }
    } catch (const ErrorBD& e) {
        ui().msgBox(e.description());
        return false;
    }
    msComprobarPrincipal();
    avisarCambio();
    return true;
}

QCoro::Task<> msVerSaldo(int16_t canal, Transporte::Cancelacion cancelacion) {
    const Saldo r = co_await SendAutCuenta(canal, cancelacion);
    if (cancelacion.cancelada()) co_return;
    if (r.estado == Saldo::Estado::Denegado)
        ui().msgBox(kDenegada, Msg::Critical | Msg::DefaultButton2);
    else if (r.estado == Saldo::Estado::Fallido)
        ui().msgBox(
            u"Error de conexión. Imposible conectar con Quelmo Mensajes, revise su conexión a "
            u"Internet.\n"_s +
                msCausaFallo(),
            Msg::Critical | Msg::DefaultButton2);
    avisarCambio();
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

QCoro::Task<Guardado> msGuardarCuenta(DatosCuenta& d, bool edicion, int16_t canal,
                                      Transporte::Cancelacion cancelacion) {
    // A number left from an earlier exchange must not be stored with this
    // account when the platform can't be reached.
    estadoAplicacion().MovilCuenta.clear();
    Saldo saldo = co_await msConsultarSaldo(d.usuario, d.clave, QString(), cancelacion);
    // The editor was closed while the platform was asked: nothing is saved.
    if (cancelacion.cancelada()) co_return Guardado::Descartada;
    const bool sinVerificar = saldo.estado == Saldo::Estado::Fallido;
    if (saldo.estado == Saldo::Estado::Denegado) {
        // Kept against the platform's word: no credit is known to it.
        saldo = Saldo{Saldo::Estado::Conocido, u"0"_s};
        if (ui().msgBox(kDenegada + u"\n¿Desea guardar la cuenta de todas formas?"_s,
                        Msg::YesNo | Msg::Critical | Msg::DefaultButton2) != Msg::Yes)
            co_return Guardado::Descartada;
    }
    if (d.puerto.isEmpty()) {
        ui().msgBox(u"Valor no valido para el parametro PUERTO REMOTO"_s);
        co_return Guardado::Incompleta;
    }
    if (d.host.isEmpty()) {
        ui().msgBox(u"Valor no valido para el parametro HOST REMOTO"_s);
        co_return Guardado::Incompleta;
    }
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
        ui().msgBox(u"Encontrado Error: "_s + e.description(), Msg::Exclamation);
        co_return Guardado::Incompleta;
    }
    if (sinVerificar) avisarSinVerificar();
    avisarCambio();
    co_return Guardado::Guardada;
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

bool NewChannel(const Saldo& saldo, const QString& usuario, const QString& clave) {
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
        return true;
    } catch (const ErrorBD&) {
        // A statement the file can't take means a database of the wrong kind.
        ui().msgBox(kBaseNoValida, Msg::Critical);
        return false;
    } catch (const ErrorQuelmo&) {
        return false;
    }
}

QCoro::Task<AltaInicial> msAltaInicial(QString usuario, QString clave, QString clave2,
                                       Transporte::Cancelacion cancelacion) {
    const QString falta = msComprobarDatosIniciales(usuario, clave, clave2);
    if (!falta.isEmpty()) {
        ui().msgBox(falta, Msg::Critical);
        co_return AltaInicial::Invalida;
    }
    estadoAplicacion().MovilCuenta.clear();
    const Saldo saldo = co_await msConsultarSaldo(usuario, clave, QString(), cancelacion);
    if (cancelacion.cancelada()) co_return AltaInicial::Invalida;
    // Unreached is not refused: the account is written, but not called a success.
    if (saldo.estado == Saldo::Estado::Denegado) {
        ui().msgBox(kDenegada.chopped(1) + u", verifique sus datos"_s, Msg::Critical);
        co_return AltaInicial::Invalida;
    }
    if (!NewChannel(saldo, usuario, clave)) {
        ui().msgBox(u"No pudo completarse con éxito la configuración, verifique los datos"_s,
                    Msg::Critical);
        msMostrarSeleccionBD();
        co_return AltaInicial::FalloBase;
    }
    if (saldo.estado == Saldo::Estado::Fallido) {
        avisarSinVerificar();
        avisarCambio();
        co_return AltaInicial::SinVerificar;
    }
    ui().msgBox(
        u"Se completó con éxito la configuración.\nSu Cuenta está dada de alta en la "
        u"aplicación\nPuede acceder a la configuración de cuentas para personalizar su "
        u"cuenta"_s,
        Msg::Information);
    avisarCambio();
    co_return AltaInicial::Hecha;
}

QCoro::Task<QString> msAnadirCuentaRegistrada(QString usuario, QString clave,
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
        ui().msgBox(u"Encontrado Error: "_s + e.description(), Msg::Exclamation);
        co_return QString();
    }
    avisarCambio();
    // Signed up a moment ago: a failed query only means the balance is not known yet.
    co_return saldo.isNull() ? u""_s : saldo.toString();
}

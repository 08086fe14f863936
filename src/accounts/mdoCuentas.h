#pragma once

#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "delivery/Transporte.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <cstdint>

struct Saldo;

// The routines of the accounts held on the platform: which exist, which is
// principal, how one is stored after the platform was asked about it, and
// how the first one comes about. The account screens call these and hold
// no SQL of their own.

// Opens the platform's recharge page for the principal account's user.
void msRecarga();
// At start and when the compose screen finds no account: leads a user
// without a usable principal account to its set-up, or refreshes its
// balance with one exchange.
QCoro::Task<> msPrimeraVez();
// The first-run account set-up, shown modally; without windows a line on
// standard error says that it could not be shown.
void msMostrarAltaCuenta();

// ---- the list of accounts ---------------------------------------------------

// Every account, in code order. Throws ErrorBD when the open database lacks
// the table or a column the list shows.
ResultadoConsulta msAbrirCuentas();
// The row of the first account (in the result's order) named `nombre`, -1
// when none: the list's lines are tied to their accounts by name alone.
int msFilaDeCuenta(const ResultadoConsulta& cuentas, const QString& nombre);
// Keeps one principal account as soon as one exists: the only account is
// principal; with several and none principal, the lowest code becomes it.
// Failures are passed over.
void msComprobarPrincipal();
// The code a new account gets: the highest plus one (holes stay), 0 for the
// first.
int msSiguienteCanal();
// Tells the screens that show accounts to read them again.
void msAvisarCuentas();
// Asks, and on yes makes `canal` the one principal account.
void msHacerPrincipal(int16_t canal, const QString& nombre);
// Refuses while contacts use the account, else asks and deletes it; then
// the principal rule. True when it was deleted.
bool msEliminarCuenta(int16_t canal);
// Asks the platform for the account's balance (stored by SendAutCuenta) and
// says in a box when it refused or could not be reached; nothing when
// `cancelacion` gave it up (the screen closed).
QCoro::Task<> msVerSaldo(int16_t canal, Transporte::Cancelacion cancelacion = {});
// The platform's recharge page for a user, with the name percent-encoded.
QString msUrlRecarga(const QString& usuario);

// ---- the account editor -----------------------------------------------------

// What the editor shows and saves of one account.
struct DatosCuenta {
    QString nombre;
    QString host;
    QString puerto = QStringLiteral("80");
    QString usuario;
    QString clave;    // in clear
    int remopc = -1;  // sender policy 0, 1, 2; -1 none chosen yet
    QString remitente;
    QString tini;
    QString tfin;
    QString movil;  // the last nine digits, shown beside policy 1
    bool importacion = false;
    QString maxmen = QStringLiteral("160");
};

// A new account's fields: the platform's message host, port 80.
DatosCuenta msCuentaNueva();
// The stored account as the editor shows it; nullopt-like empty name and
// host when the code is unknown.
DatosCuenta msLeerCuenta(int16_t canal);
// The platform's message host, without a plain scheme or trailing slash;
// an https address keeps its scheme.
QString msHostPlataforma();

enum class Guardado {
    Guardada,    // stored; the editor closes
    Descartada,  // the platform refused and the user chose not to keep it; closes
    Incompleta,  // a field is missing, told in a box; the editor stays
};
// Verifies the user at the platform, then inserts (`edicion` false) or
// updates the account `canal`. In edit mode a host without scheme gains
// "HTTP://", written back into `datos` as well (which must outlive the
// task). Given up through `cancelacion`, nothing is saved.
QCoro::Task<Guardado> msGuardarCuenta(DatosCuenta& datos, bool edicion, int16_t canal,
                                      Transporte::Cancelacion cancelacion = {});

// ---- first-run set-up -------------------------------------------------------

// The first check of the first-run form that fails, as its message; empty
// when all pass.
QString msComprobarDatosIniciales(const QString& usuario, const QString& clave,
                                  const QString& clave2);
// Writes the first-run account row (principal, fixed defaults, code max+1 or
// 0). False when the database refused it; a database of the wrong kind is
// told in a box.
bool NewChannel(const Saldo& saldo, const QString& usuario, const QString& clave);

enum class AltaInicial {
    Hecha,         // account written and the success told; the form closes
    SinVerificar,  // the platform could not be reached: written, and said so; closes
    Invalida,      // a check failed or the platform refused; the form stays
    FalloBase,     // the row could not be written; the database selection opened
};
// What the first-run form's "Aceptar" does: checks, verification, the row.
QCoro::Task<AltaInicial> msAltaInicial(QString usuario, QString clave, QString clave2,
                                       Transporte::Cancelacion cancelacion = {});

// After the platform signed a new user up: asks for the new account's
// balance and writes its row, principal when no account is principal yet.
// The balance stored (empty when unknown), or a null string when the row
// could not be written.
QCoro::Task<QString> msAnadirCuentaRegistrada(QString usuario, QString clave,
                                              Transporte::Cancelacion cancelacion = {});

#pragma once

#include "base/Hecho.h"
#include "db/BaseDatos.h"
#include "db/Conexion.h"
#include "delivery/Transporte.h"
#include "delivery/mdoSendRavion.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <cstdint>

// The routines of the accounts held on the platform: which exist, which is
// principal, how one is stored after the platform was asked about it, and
// how the first one comes about. The account screens call these and hold
// no SQL of their own. A routine says why it refused (a Hecho) and the
// screen that called it tells the user; the questions before a change are
// the screen's to ask. Only the screens start-up can't go on without (the
// first-run set-up, the principal account's editor) are asked of the user
// interface.

// Opens the platform's recharge page for the principal account's user;
// refused when there is no principal account.
Hecho msRecarga();
// At start and when the compose screen finds no account: leads a user
// without a usable principal account to its set-up, or refreshes its
// balance with one exchange.
QCoro::Task<> msPrimeraVez();
// The first-run account set-up, asked of the user interface (modal with a
// window; a line on standard error without one).
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
// Makes `canal` the one principal account; a failure is logged.
void msHacerPrincipal(int16_t canal);
// Why the account can't be deleted (contacts use it, messages wait for it
// in the outbox), done when it can: the screen asks this before its
// question.
Hecho msPuedeEliminarCuenta(int16_t canal);
// Deletes the account unless msPuedeEliminarCuenta refuses (checked again),
// then the principal rule.
Hecho msEliminarCuenta(int16_t canal);
// Asks the platform for the account's balance (stored by SendAutCuenta);
// refused when the platform refused or could not be reached. Done when
// `cancelacion` gave it up (the screen closed).
QCoro::Task<Hecho> msVerSaldo(int16_t canal, Transporte::Cancelacion cancelacion = {});
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

// The platform's refusal of a user and password.
QString msTextoDenegada();
// What the user is told when the platform could not be reached (as opposed
// to a refusal): what was typed is kept, and the next exchange tells.
QString msAvisoSinVerificar();

// Asks the platform about the user before the account is saved; the
// mobile number it gives is kept for msGuardarCuenta.
QCoro::Task<Saldo> msVerificarCuenta(QString usuario, QString clave,
                                     Transporte::Cancelacion cancelacion = {});
// Inserts (`edicion` false) or updates the account `canal` after
// msVerificarCuenta gave `saldo` (a refused user is stored with no credit).
// In edit mode a host without scheme gains "HTTP://", written back into
// `datos` as well. Refused when the port or the host is missing or the
// database fails.
Hecho msGuardarCuenta(DatosCuenta& datos, bool edicion, int16_t canal, Saldo saldo);

// ---- first-run set-up -------------------------------------------------------

// The first check of the first-run form that fails, as its message; empty
// when all pass.
QString msComprobarDatosIniciales(const QString& usuario, const QString& clave,
                                  const QString& clave2);
enum class AltaInicial {
    Hecha,         // account written; the form closes
    SinVerificar,  // the platform could not be reached: written all the same; closes
    Abandonada,    // given up through the cancellation; nothing written
    FalloBase,     // the row could not be written
    BaseNoValida,  // the file refused the row: a database of the wrong kind
};
// What the first-run form's "Aceptar" does: checks, verification, the
// principal account's row (fixed defaults, code max+1 or 0). Refused when a
// check fails or the platform refuses the user.
QCoro::Task<Resultado<AltaInicial>> msAltaInicial(QString usuario, QString clave, QString clave2,
                                                  Transporte::Cancelacion cancelacion = {});

// After the platform signed a new user up: asks for the new account's
// balance and writes its row, principal when no account is principal yet.
// The balance stored (empty when unknown); refused when the row could not
// be written.
QCoro::Task<Resultado<QString>> msAnadirCuentaRegistrada(QString usuario, QString clave,
                                                         Transporte::Cancelacion cancelacion = {});

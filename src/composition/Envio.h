#pragma once

#include "db/BaseDatos.h"
#include "db/ListaPaginada.h"

#include <QString>
#include <QStringList>
#include <QVector>
#include <cstdint>
#include <functional>
#include <optional>

// The compose screen's routines that work on the database alone: the
// accounts and contacts it offers, the add loop with its destination rules,
// and the reading and changing of the outbox. A routine that changes the
// outbox emits Avisos::bandejaCambiada.

// One account as the compose screen's combo shows it.
struct CuentaEnvio {
    int canal = 0;
    // "Nombre   (saldo Créditos)", then "  Remitente: x" when it has one.
    QString texto;
    // The characters that the account's opening and closing texts add.
    int largoTextos = 0;
    bool principal = false;
};
// Every account, in the table's order. Throws ErrorQuelmo; ItemNotFound
// means a database of another generation.
QVector<CuentaEnvio> leerCuentasEnvio();

// Where a reading of the contacts in the lists' order stands.
struct LecturaContactos {
    // Contacts whose key for the lists' order is not worked out yet
    // come first, by row.
    bool sinClave = true;
    QString clave;
    qlonglong fila = 0;
    bool terminada = false;
};
// The next contacts in the lists' order, each as two cells (alias, number)
// added to `celdas`, for about `ms` milliseconds, on the index of that
// order: half a million contacts are read over several turns of the event
// loop rather than sorted in one. What the recipient box offers, and the
// picker's list of contacts.
void leerContactosEnOrden(LecturaContactos& lectura, QVector<QString>& celdas, qint64 ms);

// The option that limits sending to contacts; false when it can't be read.
bool leerSoloContactos();

// The number of the contact whose alias is `elemento` exactly as it stands
// (blanks count, case doesn't), trimmed; empty when there is none or the
// element is blank.
QString msBuscarAlias(const QString& elemento);

// What an add leaves: the refused elements joined by ";" (every refusal
// has its log line); when the write failed, nothing went in, every element
// is given back, and `fallo` says why.
using AlAgregar = std::function<void(const QString& rechazados, const ErrorBD* fallo)>;
// Splits `destinos` at ";" and puts one outbox row per accepted element,
// with `texto` as typed and account `canal`: all of them or none, in one
// transaction written over turns of the event loop, however many the
// picker chose. A small add ends before this returns.
void agregarMensajes(const QString& destinos, const QString& texto, bool soloContactos,
                     int64_t canal, AlAgregar alTerminar);

// The character counter: "(n)" and the note about the account's texts.
QString textoContador(int caracteres, const QString& nota);
// What the counter counts of a text: a line break goes out as CR LF, two
// characters, however the box holds it.
int largoMensaje(const QString& texto);
// Whether a text holds nothing but blanks (a text of line breaks is sent).
bool soloBlancos(const QString& texto);
inline constexpr int kLargoUnSms = 160;

// The outbox as the list shows it, the rows whose account exists, in the
// order they came: Id, date "dd/MM hh:mm:ss", destination, account (with
// its sender in brackets), text.
ListaPaginada::Definicion definicionBandeja();

// An outbox row taken back to be composed again.
struct MensajeRetirado {
    QString destino;
    QString texto;
};
// Reads outbox row `id` and deletes it; none when the row is gone. Throws
// ErrorQuelmo when reading or deleting fails (the row then stays).
std::optional<MensajeRetirado> retirarDeBandeja(const QString& id);
// Deletes outbox row `id`. Throws ErrorQuelmo on failure.
void borrarDeBandeja(const QString& id);
// Deletes every row of the outbox over turns of the event loop, whole or
// not at all; `alTerminar` is told of the failure, if any.
void vaciarBandeja(std::function<void(const ErrorBD* fallo)> alTerminar);

#pragma once

#include "db/BaseDatos.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <QTime>
#include <QVariant>
#include <QVector>
#include <cstdint>
#include <functional>
#include <optional>

namespace qmXMLSend {
struct Item;
}

// The steps of one batch of the outbox, each callable on its own: what
// msEnviarLote strings together around the exchange with the platform.
namespace Lote {

// What a batch reads of its account.
struct Cuenta {
    QVariant canal;  // as stored: the history rows carry it
    QString nombre;
    QString remitente;  // without the trailing blank it is stored with
    QString tini, tfin;
    bool imptextos = false;
    QVariant remopc;  // 1: the account sends under its mobile number
    QString usuario;
    QString clave;  // in clear
    QString host;
};

// One item of the exchange: a row's text, or one piece of a long one.
struct Pieza {
    QString clave;
    QString texto;
    bool operator==(const Pieza&) const = default;
};

// The account's outbox rows, at most `maximo`.
ResultadoConsulta leerFilas(BaseDatos& db, int16_t canal, int maximo);
// The account, or nothing when no account has that code.
std::optional<Cuenta> leerCuenta(BaseDatos& db, int16_t canal);

// The text a row sends: the account's start and end texts around it, except
// in an imported run of an account that leaves imported texts alone. The
// run's flag decides, not the row's origin.
QString textoCompleto(const QString& mensaje, const Cuenta& cuenta, bool importado);

// The number as the platform takes it: "00" and the country code in front,
// or the simulated mark for the numbers that reach no telephone. Empty when
// the text is no telephone number.
QString normalizarDestino(const QString& abonado);

// Up to 160 characters go as one item under the row's Id; a longer text is
// cut into pieces of 150 characters, each headed "(i-n) ", the first under
// the Id and the others under "X{i}X{Id}". Characters, not UTF-16 units,
// are counted, so a character outside the basic plane is never split.
QVector<Pieza> cortarTexto(const QString& id, const QString& texto);

// The sender the history rows name: the account's name, and its sender in
// brackets when it has one.
QString remitenteHistorial(const Cuenta& cuenta);
// The sender stored back after an exchange: the account's mobile number
// when it sends under it, else its own text; always with a trailing blank.
QString remitenteAGuardar(const QVariant& remopc, const QString& remitente, const QString& movil);

// What the platform said of one item, written to the database: a taken item
// becomes a history row (and its outbox row goes, for the first piece); a
// refused first piece stamps its row and counts one attempt less. Both
// writes of an item stand or fall together. True when the item's outbox
// row left the outbox.
bool aplicarResultado(BaseDatos& db, const qmXMLSend::Item& item, const QVariant& canal,
                      const QString& crem);

// The balance, the sender and the mobile number the platform reported.
// Throws ErrorQuelmo, writing nothing, for a balance that is not a number.
void actualizarCuenta(BaseDatos& db, int16_t canal, const QString& saldo, const QString& remitente,
                      const QString& movil);

// Paces exchanges to at most one a second: resumes the caller once the
// second that the wall clock `pared` shows now has passed. The
// wall clock is read once; the wait runs on a monotonic clock, so a wall
// clock stepped back meanwhile can't stretch it. False when the wait was
// given up (the transmitter stopped).
QCoro::Task<bool> pausaEntreEnvios(std::function<QTime()> pared = &QTime::currentTime);

}  // namespace Lote

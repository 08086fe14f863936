#pragma once

#include "delivery/Transporte.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <cstdint>

namespace qmXMLSend {
class XMLSendClass;
}

// The transmitter's cycle and the delivery of the outbox.

// One run: with the switch on, the watched-file import and one batch for
// each account that has rows in the outbox, the accounts' exchanges side by
// side. Ends with true when an account's batch went out full (every row of
// it left the outbox) and more of its rows wait. A run that starts while
// one is under way ends at once.
QCoro::Task<bool> SendMessage();
// Where a batch spent its time, in nanoseconds (for the benchmark).
struct MedidaLote {
    qint64 lectura = 0;    // reading the outbox rows and the account
    qint64 carga = 0;      // texts, destinations and cuts into items
    qint64 pausa = 0;      // the pacing of one exchange a second
    qint64 documento = 0;  // the request document
    qint64 http = 0;       // the exchange on the wire
    qint64 respuesta = 0;  // reading the reply
    qint64 escritura = 0;  // history rows, outbox and account updates
};

// Sends one batch of the account's outbox rows to the platform, at most one
// exchange a second for the account; `medida`, when given, gets where the
// time went. Ends with how many rows left the outbox; 0 when the batch
// ended in a failure. The results are written the moment the reply comes.
QCoro::Task<int> msEnviarLote(int16_t canal, bool importado, MedidaLote* medida = nullptr);
// The batch size from the options: 1 to 500, else 25.
int16_t msMaxLote();

// What a balance query came to.
struct Saldo {
    enum class Estado {
        Conocido,   // the platform took the user: `creditos` is the balance
        Denegado,   // the platform refused the user or the password
        Fallido,    // no usable answer, or given up; msCausaFallo() says why
        SinCuenta,  // no stored account of that code: nothing was asked
        Error,      // a failure of ours (logged), or the asker went away
    };
    Estado estado = Estado::Error;
    QString creditos;  // the platform's text, a number
    bool conocido() const { return estado == Estado::Conocido; }
};

// Balance of an account given by user, password (in clear) and host. An
// empty host becomes the platform's default web address.
QCoro::Task<Saldo> msConsultarSaldo(QString usuario, QString clave, QString host,
                                    Transporte::Cancelacion cancelacion = {});
// The same for a stored account, storing what the platform reports.
QCoro::Task<Saldo> SendAutCuenta(int16_t canal, Transporte::Cancelacion cancelacion = {});

// Asks (at the screen, without waiting for the answer) or logs (in a run)
// when a newer release is offered.
void msAvisoVersion();
void msAvisoVersionLog();

// Sets the client's url for an account's host: the servlet path behind the
// host, and "HTTP://" in front unless the value already starts with it or
// with "https://" (any case), which is kept and spoken over verified TLS.
void msPonerUrl(qmXMLSend::XMLSendClass& cliente, const QString& host);
// The same rule for a stored host: "HTTP://" in front unless it already
// has that scheme or https.
QString msConEsquema(const QString& host);

// Why the last exchange of a balance query failed, in one Spanish line
// (empty when it did not fail): the second line of the boxes that tell the
// user about it.
QString msCausaFallo();

// Batches of the last transmitter run that could not be delivered: no
// reply, a refusal of the account, a proxy or certificate failure, an
// error in the run. Their rows wait in the outbox.
int msLotesSinEntregar();
// The last run could not import the watched file: it was refused, set
// aside as unreadable, or its import stopped on a database failure.
bool msImportacionFallida();

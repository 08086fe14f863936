#pragma once

#include <QString>
#include <cstdint>

// The transmitter's cycle and the delivery of the outbox.

// One run: with the switch on, the watched-file import and one batch for
// each account that has rows in the outbox.
void SendMessage();
// Sends one batch of the account's outbox rows to the platform.
void msEnviarLote(int16_t canal, bool importado);
// The batch size from the options: 1 to 500, else 25.
int16_t msMaxLote();

// Balance of an account given by user, password (in clear) and host: the
// balance as text, "-1" refused, "-2" failed. An empty host becomes the
// platform's default web address.
QString msConsultarSaldo(const QString& usuario, const QString& clave, QString& host);
// The same for a stored account, storing what the platform reports.
QString SendAutCuenta(int16_t canal);

// Asks (at the screen) or logs (in a run) when a newer release is offered.
void msAvisoVersion();
void msAvisoVersionLog();

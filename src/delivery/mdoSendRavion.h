#pragma once

#include <cstdint>

// The transmitter's cycle and the delivery of the outbox.

// One run: with the switch on, the watched-file import and one batch for
// each account that has rows in the outbox.
void SendMessage();
// Sends one batch of the account's outbox rows to the platform.
void msEnviarLote(int16_t canal, bool importado);
// Logs a line when the platform announces a newer release.
void msAvisoVersionLog();

#pragma once

#include "base/Hecho.h"

#include <QList>
#include <QString>
#include <cstdint>

// Emergency sends: a saved multi-send put into the outbox at once, outside
// its schedule, which stays as it was.

// One line of the emergency list.
struct FilaEmergencia {
    int32_t codigo = 0;
    QString nombre;
    QString mensajes;    // recipients of the multi-send
    QString programado;  // next run, "Finalizado" or "no"
    QString ultimo;      // last run or "nunca"; empty unless a next run exists
};

// Every multi-send by code with its recipients' count and its next and
// last run. A failure (of the database or of a schedule that names no
// date) ends the list where it came; `completa` then reads false.
QList<FilaEmergencia> msCargarEmergencias(bool* completa = nullptr);

// The multi-send that a line names: the first by code whose name equals
// `nombre` (case not counted, as the names are stored); -1 when none.
int32_t codigoDeNombre(const QString& nombre);

// Puts every recipient's own text of multi-send `codigo` into the outbox,
// through the account of the recipient's contact (recipients no longer in
// the address book are left out). The number of rows queued; refused
// when the multi-send has no recipients or the database fails (then
// nothing is queued).
Resultado<int> msEnviarEmergencia(int32_t codigo);

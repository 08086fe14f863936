#pragma once

#include "db/BaseDatos.h"

#include <QDateTime>
#include <cstdint>
#include <functional>

// Turns scheduled messages that came due into outbox rows; sends nothing.
class clsTareasPendientes {
  public:
    // At each tick: fires what falls due in this minute, without a word,
    // going on past any failure. Returns the number of rows fired.
    int16_t ReLoad();
    // At start-up: offers today's runs whose time has passed, asking once
    // for the whole walk. Returns the number of rows fired; 0 when the
    // user refused or the walk stopped (a failure stops it; what was
    // queued until then stays queued).
    int16_t PendientesEnviar();

  private:
    int16_t recorrerPendientes();
    // Queues one outbox row per recipient and records `ultima()` as the
    // row's last run, once for each recipient; in the caller's transaction.
    void dispararFila(int32_t codigo, const std::function<QDateTime()>& ultima, bool pasarFallos);

    ResultadoConsulta m_activas;
};

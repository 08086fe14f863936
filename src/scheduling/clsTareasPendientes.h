#pragma once

#include <cstdint>

// Turns scheduled messages that came due into outbox rows.
class clsTareasPendientes {
public:
    // At each tick: fires what falls due in this minute, without a word.
    int16_t ReLoad();
    // At start-up: offers today's runs whose time has passed, asking once.
    int16_t PendientesEnviar();
};

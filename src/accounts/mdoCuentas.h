#pragma once

#include <cstdint>

// The routines of the accounts held on the platform.

// The code of the principal account; 0 when there is none.
int16_t msCanalPrincipal();
// Opens the platform's recharge page for the principal account's user.
void msRecarga();
// At start and when the compose screen finds no account: leads a user
// without a usable principal account to its set-up, or refreshes its
// balance with one exchange.
void msPrimeraVez();

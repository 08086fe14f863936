#pragma once

#include <QString>

// Start-up's choice of database and the access gate.

// Opens the saved database (upgraded when old), else the default one, else
// what the selection screen leaves; a saved file held by another program is
// tried again while the user wants to (ui().reintentarBaseOcupada). Ends the
// process when no usable database is left.
void msAbrirBaseInicial();
bool msComprobarAcceso();

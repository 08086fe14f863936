#pragma once

#include <QString>

// Start-up's choice of database and the access gate.

void msAbrirBaseInicial();
bool msComprobarAcceso();

#pragma once

// Registers the history's screens with Pantallas: frmHEnvios (the sent
// history) and frmEmergencias (a saved multi-send sent at once), both
// child screens.
void registrarPantallasHistorico();

#pragma once

// Registers the compose screen and the recipient picker by name.
void registrarPantallasEnvio();

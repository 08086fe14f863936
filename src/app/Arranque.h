#pragma once

#include <QString>

class QLockFile;

// What the GUI and headless mode both do at start.

// Names the application for the settings store and the data directory.
void nombrarAplicacion();
// The lock that tells a second instance for the same user.
QString rutaBloqueoInstancia();
// False when another instance of this user already runs.
bool adquirirInstanciaUnica(QLockFile& lock);
// `Tr`/`pwc` decoded into gsClaveAcceso, or the sentinel when none is set.
void cargarClaveAcceso();

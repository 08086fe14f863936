#pragma once

#include <QString>

// Imports a file of messages or contacts through a time-stamped working
// copy; every outcome goes to the activity log.
void msImportarFichero(const QString& path, bool contactos, bool borrar, const QString& lista,
                       bool addContactos);

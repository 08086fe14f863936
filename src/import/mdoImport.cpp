#include "import/mdoImport.h"

void msImportarFichero(const QString& /*path*/, bool /*contactos*/, bool /*borrar*/,
                       const QString& /*lista*/, bool /*addContactos*/) {}

#pragma once

#include <QIcon>
#include <QString>

// One of the program's own icons by name ("enviar", "ayuda"...).
QIcon iconoQuelmo(const QString& nombre);

#pragma once

#include <QString>
#include <functional>

// The screens of the subsystems, reached by name. The frame's menu and the
// screens that open one another go through here, so a subsystem's screens
// are wired in one place and a name whose screen is not built yet simply
// opens nothing.
namespace Pantallas {

using Abridor = std::function<void()>;

// Makes `nombre` (the screen's class name, e.g. "frmAbonados") open with
// `abrir`; a later registration of the same name replaces the earlier one.
void registrar(const QString& nombre, Abridor abrir);
// Opens the screen; false when no screen of that name is registered.
bool abrir(const QString& nombre);
bool existe(const QString& nombre);

}  // namespace Pantallas

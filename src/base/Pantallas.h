#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
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
// Every registered name, sorted (a test walks them all).
QStringList nombres();

// A screen that opens on one item (e.g. the scheduled message editor on a
// multi-send's code) registers with a datum; `abrir(nombre, dato)` hands
// it over. Opened by name alone it gets a null datum, and a screen
// registered without one ignores the datum.
using AbridorConDato = std::function<void(const QVariant& dato)>;
void registrarConDato(const QString& nombre, AbridorConDato abrir);
bool abrir(const QString& nombre, const QVariant& dato);

}  // namespace Pantallas

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

// How the core asks for a screen it needs (the database selection, the
// first account): opens it, or, with none registered (a run without
// windows), says on standard error what could not be shown.
void abrirOAvisar(const QString& nombre, const QString& aviso);

// While it lives, the core's requests for `nombre` (abrirOAvisar) open
// `abrir` instead of the screen registered under it, also one registered
// later; the menus still open the real screen. A test stands in this way
// for a modal screen that would wait for a user.
class Sustituto {
  public:
    Sustituto(const QString& nombre, Abridor abrir);
    ~Sustituto();
    Sustituto(const Sustituto&) = delete;
    Sustituto& operator=(const Sustituto&) = delete;

  private:
    QString m_nombre;
    Abridor m_anterior;  // the stand-in it covers, back when it goes
};

}  // namespace Pantallas

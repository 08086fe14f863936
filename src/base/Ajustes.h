#pragma once

#include <QString>
#include <optional>

// The per-user settings store of application "Quelmo Mensajes SMS": an INI
// file under XDG_CONFIG_HOME. Each setting has one accessor here that owns
// its key, its default and its limits; nothing else in the program names a
// key (the deployment addresses have theirs in base/Despliegue).
namespace Ajustes {

// ---- Transmitter -----------------------------------------------------------

// Seconds between two transmitter cycles: below the minimum, or not a
// number, the default stands.
inline constexpr int kIntervaloMinimo = 15;
inline constexpr int kIntervaloDefecto = 60;
inline constexpr int kIntervaloMaximo = 32767;
// The stored interval by that rule; nullopt for a number too large to be
// one (the cycle then stops and says so).
std::optional<int> intervalo();
// Stored as given: Options keeps what the user typed, the timer rounds it.
void guardarIntervalo(const QString& segundos);
void guardarIntervalo(int segundos);

// The transmitter switch. The window shows it on when it was never set or
// was mangled by hand; the sender sends only when it reads exactly on, and
// a mangled value throws so that the run logs it.
bool transmisorEncendido();
bool transmisorEncendidoParaEnvio();
void guardarTransmisorEncendido(bool encendido);

// Keep cycling at once while the outbox holds more than one batch.
bool transmisorContinuo();
// Log every platform reply in full (a support aid).
bool depurarRespuestas();

// The access password of Options, encrypted; empty when never set.
QString claveAcceso();
void guardarClaveAcceso(const QString& cifrada);

// ---- Database --------------------------------------------------------------

// The database file in use; empty on a first run.
QString rutaBaseDatos();
void guardarRutaBaseDatos(const QString& ruta);
// The share mode kept for what reads it: 16 when unset or unreadable.
int32_t modoBaseDatos();
void guardarModoBaseDatos(int32_t modo);

// ---- Import ----------------------------------------------------------------

// The three imports the user sets up: messages by hand, the watched file,
// and contacts.
enum class Importacion { Mensajes, Vigilada, Contactos };

// The file; empty when none is chosen (the watch is off).
QString rutaImportacion(Importacion i);
void guardarRutaImportacion(Importacion i, const QString& ruta);
// The list the imported contacts join: a code, "-1" for none, or a name
// for a new list; `defecto` when never set.
QString listaImportacion(Importacion i, const QString& defecto = QString());
// Whether a message line also adds its number as a contact; a value
// mangled by hand adds none.
bool anadirContactos(Importacion i);
void guardarListaImportacion(Importacion i, const QString& lista, bool anadirContactos);

// ---- The store -------------------------------------------------------------

// Forgets every key (a fresh installation).
void clear();
// Writes pending changes to disk (the store also does it by itself).
void sync();
// Full path of the INI file, for diagnostics and tests.
QString fileName();

// The raw store, for the typed accessors of base/Despliegue and for tests
// that write what a user's hand would.
QString getSetting(const QString& section, const QString& key, const QString& def = QString());
void saveSetting(const QString& section, const QString& key, const QString& value);
bool hasSetting(const QString& section, const QString& key);
void deleteSetting(const QString& section, const QString& key);

}  // namespace Ajustes

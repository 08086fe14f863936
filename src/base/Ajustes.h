#pragma once

#include <QString>

// The per-user settings store of application "Quelmo Mensajes SMS":
// an INI file under XDG_CONFIG_HOME, section = group.
namespace Ajustes {
QString getSetting(const QString& section, const QString& key, const QString& def = QString());
void saveSetting(const QString& section, const QString& key, const QString& value);
bool hasSetting(const QString& section, const QString& key);
void deleteSetting(const QString& section, const QString& key);
// Forgets every key (a fresh installation).
void clear();
// Writes pending changes to disk (the store also does it by itself).
void sync();
// Full path of the INI file, for diagnostics and tests.
QString fileName();
}  // namespace Ajustes

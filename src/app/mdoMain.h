#pragma once

#include <QString>
#include <cstdint>

// Start-up, the database connection, the access gate and the activity log.

// The per-user application directory (created when missing).
QString directorioAplicacion();
// "{application directory}/mensajes.db": the default database.
QString rutaBaseDefecto();
// The empty current-schema database installed with the program.
QString rutaBaseVacia();
// At first start: copies the empty database into the application directory
// when no database is there. False if it could not.
bool prepararBaseInicial();

bool msAbrirBD(const QString& path);
bool msValidarBD(const QString& path);
void msAbrirBaseInicial();

bool msComprobarAcceso();
// Adds (encode) or subtracts 10 from each character code; throws
// QuelmoError for a code that would leave the single-byte range.
QString msCifrarClave(const QString& text, bool encode);
void msAbrirUrl(const QString& target);
int16_t msCanalPrincipal();

void msLog(const QString& text);
QString msEscaparBuffer(const QString& text);
// The date and time in front of every log line.
QString marcaTiempoLog();

#pragma once

#include "db/BaseDatos.h"

#include <QString>
#include <cstdint>

// The one connection of the process and the files it can be opened on.

// The connection every routine's SQL goes through.
BaseDatos& Conexion();
// The line logged when the connection's files were taken from under it
// (Avisos::baseDatosPerdida); screens show it in their box.
QString textoBaseDatosPerdida(const QString& ruta);
// The connection string of the open file, kept for what shows it.
QString& gsCadenaConexion();

// "{application directory}/mensajes.db": the default database.
QString rutaBaseDefecto();
// The empty current-schema database installed with the program.
QString rutaBaseVacia();
// At first start: copies the empty database into the application directory
// when no database is there. False if it could not.
bool prepararBaseInicial();

bool msAbrirBD(const QString& path);
bool msValidarBD(const QString& path);

// "La Base de Datos Seleccionada no es válida...": what a routine tells
// when the open file lacks a table or column it needs.
QString textoBaseNoValida();
// That text in a box, then the database selection.
void msBaseNoValida();
// The database selection screen, asked of the user interface (modal with a
// window; a line on standard error without one).
void msMostrarSeleccionBD();

// The code of the principal account; 0 when there is none (or no table).
int16_t msCanalPrincipal();

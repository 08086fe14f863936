#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <cstdint>
#include <functional>

// Import of semicolon-separated text files of messages or contacts: by hand
// through a working copy, or from the watched file, which is claimed by a
// rename and imported exactly once even across a crash. Every line's
// outcome is a log line; the one thing said aloud, without waiting for an
// answer, is that no more lists fit.

// Reads a file of messages (or of contacts when `contactos`) line by line
// and imports each non-empty line. `lista` is "-1" (no list), a list code,
// or a name for a new list; it is rewritten when a new list gets a default
// name. True when at least one non-empty line was read.
// It goes on over turns of the event loop, a stretch of lines at a time,
// as does every import here: the caller awaits it.
QCoro::Task<bool> msLeerFicheroImport(const QString& path, bool contactos, QString& lista,
                                      bool addContactos);

// One line's three fields (account, number, text or alias): queues the
// message and/or adds the contact and its list row, logging every outcome.
bool msImportarLinea(const QVariant& cuenta, const QString& numero, const QString& texto,
                     int16_t lista, bool contactos, bool addContactos);

// Creates a list under the next free code; an empty `nombre` becomes the
// default name. Returns the code, 0 when no more lists fit.
int16_t msCrearListaImportada(QString& nombre);

// The alias that a contact whose alias is taken is retried under: the alias
// followed by "_" and one more than the aliases that begin with it.
QString aliasConSufijo(const QString& alias);

// What an import came to: whether the file was read to its end, how many
// non-empty lines it held and how many of them were imported, and whether
// it failed (refused, unreadable and set aside, or stopped by the database).
// A watched file that is not there or still being written did not fail.
struct ResumenImportacion {
    bool leido = false;
    qint64 vistas = 0;
    qint64 correctas = 0;
    bool fallido = false;
};

// Imports `path`. `borrar` marks the watched file: it is claimed, imported
// exactly once and removed when a line was read.
QCoro::Task<ResumenImportacion> msImportarFichero(QString path, bool contactos, bool borrar,
                                                  QString lista, bool addContactos);

// The two user commands, after their selection screen closed: read the
// section's settings and run the driver when the path is longer than three
// characters. True when the driver ran.
QCoro::Task<bool> msImportarManual();
QCoro::Task<bool> msImportarContactos();
// The same imports of a file named otherwise (the command line), with the
// saved list unless `lista` is not null.
QCoro::Task<ResumenImportacion> msImportarMensajesDe(QString ruta, QString lista = QString());
QCoro::Task<ResumenImportacion> msImportarContactosDe(QString ruta, QString lista = QString());

// The list choices of the selection screen: "000 - name" per list, by name.
QStringList msListasSeleccion();
// The code of the first list of that name, as text; empty when none.
QString msCodigoListaPorNombre(const QString& nombre);

namespace ImportPruebas {
// Called at the points where a crash would leave the most to recover:
// "reclamar" (record stored, file not yet renamed), "reclamado", "linea"
// (inside an open transaction), "tramo" (after a commit), "terminado"
// (last commit done), "borrado" (claimed file removed). A test throws from
// it to stop the import there as a kill would.
void establecerPuntoDeFallo(std::function<void(const char*)> punto);
// Ends each transaction after this many lines as well (0: by time only).
void establecerLineasPorTramo(int lineas);
}  // namespace ImportPruebas

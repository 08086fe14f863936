#pragma once

#include "db/BaseDatos.h"
#include "db/ListaPaginada.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

// The address book's logic: contacts, lists and predefined texts. The
// screens of this folder read their fields into these routines; every
// question and message goes through ui().

// ---- Contacts --------------------------------------------------------------

// The number rule with its message box; true when the number is good.
bool msComprobarNumeroContacto(const QString& numero);

// What the contact editor holds when the user saves.
struct FichaContacto {
    QString codigo;
    QString alias;
    QString comentario;
    QString cuenta;      // the text that the account box shows
    int16_t canal = 0;   // the code of the chosen account
    bool nuevo = true;   // false in edit mode (number field disabled)
    QStringList listas;  // the texts of the selected list entries
};

bool mbDatosCompletos(const FichaContacto& ficha);
// Saves the contact and its memberships in one transaction; tells the user
// why when it doesn't.
bool mbGuardarContacto(const FichaContacto& ficha);
// Rewrites the contact's memberships from the selected entries of the
// editor; runs inside mbGuardarContacto's transaction. False when a
// statement failed.
bool mbGuardarListas(const QString& codigo, const QStringList& entradas);
bool mbEstaEnLista(const QString& codigo, int16_t grupo);
// The entry of a list in the editor ("000 - Nombre") and its number back.
QString entradaLista(int grupo, const QString& nombre);
int16_t grupoDeEntrada(const QString& entrada);

// Removes a contact with its memberships and multi-send rows; the outbox
// and the history keep their rows for the number.
bool mbBorrarContacto(const QString& codigo);
// Removes the contacts one by one, each in its own nested transaction
// (a failure has its box and leaves the others going); returns how many
// went.
int msBorrarContactos(const QStringList& codigos);

// The contacts as their list shows them, those whose account exists:
// name, number, comment, account; by name as loaded.
ListaPaginada::Definicion definicionContactos();
// What the editor needs of a contact.
struct ContactoLeido {
    QString codigo;
    QString comentario;
    int16_t canal = 0;
};
// The first contact of the list (in its loaded order) whose name is
// exactly `alias`; none when there is none. Throws ErrorBD.
std::optional<ContactoLeido> primerContactoConAlias(const QString& alias);

// Deletes contacts many at a time, a block of them in each turn of the event
// loop, so that thousands go without holding the window: each block in
// one transaction, with its memberships and multi-send rows. A block that
// fails is undone and its contacts go one by one (mbBorrarContacto), each
// failure with its box. `alTerminar` gets how many went; Avisos tells the
// screens. The first block goes at once, so a few contacts are gone when
// this returns.
void msBorrarContactosPorBloques(const QStringList& codigos,
                                 std::function<void(int borrados)> alTerminar);
// The same for every contact the list shows (those whose account exists),
// in one transaction that empties the tables and puts back what stays.
void msBorrarTodosLosContactos(std::function<void(int borrados)> alTerminar);
ResultadoConsulta abrirCuentas();
ResultadoConsulta abrirListas();

// The screens find a line's row again by its text: the first row of `rs`
// whose `columna` equals `texto` (exact comparison), -1 when none.
int primeraFilaCon(const ResultadoConsulta& rs, const QString& columna, const QString& texto);

// ---- Lists -----------------------------------------------------------------

inline constexpr int kMaxNombreLista = 50;
inline constexpr int kMaxGrupo = 250;

// The lists with their member counts (Grupo, Nombre, Contactos), by name.
ResultadoConsulta abrirListasConContactos();
// Asks for a name and creates the list; its number, or -1 when none was
// made. `nombre` receives the name given.
int msAltaLista(QString* nombre = nullptr);
void msRenombrarLista(int16_t grupo, const QString& actual);
// Asks and deletes the list with its memberships; true when it went.
bool msBorrarLista(int16_t grupo, const QString& nombre);
// The members screen keeps the user's moves of one list in temporary
// tables of the one connection, not in the list: each side reads the
// contacts with the moves applied, a page at a time in the order of the
// names' index, so opening costs the lines in view and a move the lines
// moved. Lines moved show after the others, in the order they came, until
// a sort of their side.
//
// Starts the moves of `grupo` afresh. Throws ErrorBD.
void msPrepararMiembrosLista(int16_t grupo);
// One side as its list shows it: upper-case name and number.
ListaPaginada::Definicion definicionMiembros(bool dentro);
// How many lines each side has before its lines just moved: inside,
// outside. Throws ErrorBD.
std::pair<int, int> contarMiembrosLista();
// Moves the contacts whose rows are `claves` to the end of the other side,
// in the order given. Throws ErrorBD.
void msMoverMiembros(bool haciaDentro, const std::vector<int64_t>& claves);
// Moves a whole side to the end of the other, from its last line up: its
// lines just moved there, then the others in `ordenInverso` (the side's
// order turned round, ListaPaginada::ordenInverso). Throws ErrorBD.
void msMoverTodosLosMiembros(bool haciaDentro, const QString& ordenInverso);
// Writes the moves into the list's memberships in one transaction (the
// memberships of numbers that are no contact go too), then drops them.
// False when nothing was stored.
bool msGuardarMiembrosLista(int16_t grupo);
// Drops the moves; nothing is stored.
void msSoltarMiembrosLista();

// ---- Predefined texts ------------------------------------------------------

inline constexpr int kMaxTextoPredefinido = 160;

ResultadoConsulta abrirMensajesPredefinidos();
// The texts in the table's own order: what the picker offers; empty when
// they can't be read.
QStringList leerTextosPredefinidos();
// Asks for a text and adds it; true when a row was added.
bool msAltaMensaje();
// Asks for the new text of message `mensaje`; true when it was changed.
bool msCambiarMensaje(int mensaje, const QString& actual);
bool msBorrarMensaje(int mensaje);

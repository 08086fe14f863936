#pragma once

#include "base/Hecho.h"
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
// screens of this folder read their fields, and the user's answers to their
// questions and input boxes, into these routines; a routine says what it
// refused and why (Hecho), and the screen decides what to show.

// ---- Contacts --------------------------------------------------------------

// The number rule; a refusal carries the editor's whole explanation.
Hecho msComprobarNumeroContacto(const QString& numero);

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

// The first of number, name and account that is missing.
Hecho mbDatosCompletos(const FichaContacto& ficha);
// Checks the fields in the editor's order and saves the contact and its
// memberships in one transaction; why not when it doesn't.
Hecho mbGuardarContacto(const FichaContacto& ficha);
// Rewrites the contact's memberships from the selected entries of the
// editor; runs inside mbGuardarContacto's transaction. Throws ErrorBD.
void mbGuardarListas(const QString& codigo, const QStringList& entradas);
bool mbEstaEnLista(const QString& codigo, int16_t grupo);
// The entry of a list in the editor ("000 - Nombre") and its number back.
QString entradaLista(int grupo, const QString& nombre);
int16_t grupoDeEntrada(const QString& entrada);

// Removes a contact with its memberships and multi-send rows; the outbox
// and the history keep their rows for the number. A refusal carries the
// engine's words.
Hecho mbBorrarContacto(const QString& codigo);
// What a delete of many contacts did: how many went, and each failure in
// the order met (the screen shows them before its summary).
struct ContactosBorrados {
    int cuantos = 0;
    QList<Hecho> fallos;
    ContactosBorrados& operator+=(const ContactosBorrados& otro) {
        cuantos += otro.cuantos;
        fallos += otro.fallos;
        return *this;
    }
};
// Removes the contacts one by one, each in its own nested transaction: a
// failure leaves the others going.
ContactosBorrados msBorrarContactos(const QStringList& codigos);

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
// fails is undone and its contacts go one by one (mbBorrarContacto).
// `alTerminar` gets how many went and the failures; Avisos tells the
// screens. The first block goes at once, so a few contacts are gone when
// this returns.
void msBorrarContactosPorBloques(const QStringList& codigos,
                                 std::function<void(const ContactosBorrados&)> alTerminar);
// The same for every contact the list shows (those whose account exists),
// in one transaction that empties the tables and puts back what stays.
void msBorrarTodosLosContactos(std::function<void(const ContactosBorrados&)> alTerminar);
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
// Creates a list named `nombre` (the screen's answer; an empty one is the
// screen's to drop) under the next number; that number, or why not.
Resultado<int> msAltaLista(const QString& nombre);
// Renames list `grupo` from `actual` to `nombre`; refuses a name too long.
// True when stored; a failure of the engine goes to the log only.
Resultado<bool> msRenombrarLista(int16_t grupo, const QString& actual, const QString& nombre);
// Whether list `grupo` has any membership: the delete's question tells
// when it has. Throws ErrorBD.
bool listaConMiembros(int16_t grupo);
// Deletes the list with its memberships (the contacts stay), over turns
// of the event loop and whole or not at all; `alTerminar` is told whether
// it went (a failure the user isn't told).
void msBorrarLista(int16_t grupo, std::function<void(bool borrada)> alTerminar);
// The members screen keeps the user's moves of one list in temporary
// tables of the one connection, not in the list: each side reads the
// contacts with the moves applied, a page at a time in the order of the
// names' index, so opening costs the lines in view, a move the lines
// moved, and moving a whole side, or sorting it, writes no line. Lines moved show after
// the others, in the order they came, until a sort of their side.
//
// Starts the moves of `grupo` afresh and counts its sides (inside,
// outside) for `alTerminar`, which gets nothing when they can't be read.
// The members are looked up over as many turns of the event loop as it
// takes; a small list is ready before this returns.
void msPrepararMiembrosLista(int16_t grupo,
                             std::function<void(std::optional<std::pair<int, int>>)> alTerminar);
// One side as its list shows it: upper-case name and number.
ListaPaginada::Definicion definicionMiembros(bool dentro);
// A move waits, the window turning, while another write of ours holds the
// connection; `alTerminar` is called once it is done, or failed and
// logged, within the call when nothing held it.
// Moves the contacts whose rows are `claves` to the end of the other side,
// in the order given.
void msMoverMiembros(bool haciaDentro, const std::vector<int64_t>& claves,
                     std::function<void()> alTerminar);
// Moves a whole side to the end of the other, from its last line up: its
// lines just moved there, then the others in its order (`columna`, -1 the
// rows' numbers, and `descendente`) turned round.
void msMoverTodosLosMiembros(bool haciaDentro, int columna, bool descendente,
                             std::function<void()> alTerminar);
// Writes the moves into the list's memberships in one transaction over as
// many turns of the event loop as it takes (the memberships of numbers
// that are no contact go too), then drops them. `alTerminar` is told
// whether they were stored; a small list is stored before this returns.
void msGuardarMiembrosLista(int16_t grupo, std::function<void(bool guardada)> alTerminar);
// Drops the moves; nothing is stored.
void msSoltarMiembrosLista();

// ---- Predefined texts ------------------------------------------------------

inline constexpr int kMaxTextoPredefinido = 160;

ResultadoConsulta abrirMensajesPredefinidos();
// The texts in the table's own order: what the picker offers; empty when
// they can't be read.
QStringList leerTextosPredefinidos();
// Adds `texto` (the screen's answer, not empty) under the next number; why
// not when it wasn't added.
Hecho msAltaMensaje(const QString& texto);
// Gives message `mensaje` the text `texto` (not empty), straight
// apostrophes turned into acute accents; refuses a text too long. True
// when stored; a failure of the engine isn't told.
Resultado<bool> msCambiarMensaje(int mensaje, QString texto);
// Deletes message `mensaje`; false when that failed, which isn't told.
bool msBorrarMensaje(int mensaje);

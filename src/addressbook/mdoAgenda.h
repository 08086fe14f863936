#pragma once

#include "db/BaseDatos.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <cstdint>

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

// Contacts with their account: Codigo, Alias, nombre (of the account),
// Comentario, Canal; ordered by alias.
ResultadoConsulta abrirContactos();
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
// Members (upper-case alias, number) of a list, and the contacts outside it.
ResultadoConsulta abrirMiembrosLista(int16_t grupo);
ResultadoConsulta abrirNoMiembrosLista(int16_t grupo);
// Replaces all memberships of the list by `numeros`, in one transaction.
bool msGuardarMiembrosLista(int16_t grupo, const QStringList& numeros);

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

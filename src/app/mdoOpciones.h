#pragma once

#include "base/Hecho.h"

#include <QString>

// The general options: the `opciones` row (batch size, contacts-only
// sending, background picture), the sending interval `Tr`/`Interval` and the
// access password `Tr`/`pwc`. The options screen shows and stores them
// through these routines.
struct Opciones {
    QString maxlote;    // as stored, or as typed
    QString intervalo;  // seconds, as typed
    QString clave;      // the access password; empty means none
    bool soloContactos = false;
    QString imgfondo;
};

// Reads the options in order: the interval (below 15 or not a number means
// 60, and that is saved back), the password (the no-password word reads as
// empty), then the `opciones` row. False when something could not be read;
// what was read before it stays in `o`.
bool leerOpciones(Opciones& o);

// Why the typed options can't be stored, in the words of the warning box;
// empty when they can. A filled confirmation with an empty password is not
// looked at.
QString motivoOpcionesNoValidas(const Opciones& o, const QString& confirmacion);

// Checks and stores the options and applies them at once: the access gate
// asks for the new password, the transmitter counts the new interval from
// now, the background shows the new picture. Refused when a check fails
// (nothing changed, the reason as motivoOpcionesNoValidas says it) or when
// storing fails.
Hecho msGuardarOpciones(const Opciones& o, const QString& confirmacion);

// The user's background picture (`opciones.imgfondo`); empty when none is
// set or the database can't say.
QString leerImagenFondo();

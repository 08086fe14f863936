#pragma once

#include <QString>

// The one owner of the mobile number: what each route takes and how it
// writes it. The routes differ on purpose (a contact is stored as typed, an
// import line is held to a Spanish mobile, the sender completes what it
// gets); each difference is a row of the table in Movil.cpp, never a second
// implementation.
namespace Movil {

enum class Via {
    Contacto,     // the contact editor: stored exactly as typed
    Envio,        // a number typed in the compose screen
    Importacion,  // the number field of an import line
    Lote,         // the batch sender, at sending
    Emergencia,   // a stored recipient of an emergency send
    Programado,   // a recipient of a scheduled message when it fires
};

enum class Fallo {
    Ninguno,
    NoNumerico,              // not even the lenient numeric test passes
    SinCodigoInternacional,  // a contact must begin with "00"
    Largo,                   // too short, or not a Spanish mobile's 13
    NoEnviable,              // the sender would refuse it on every run
};

struct Numero {
    QString numero;  // as it is stored or goes out
    Fallo fallo = Fallo::Ninguno;
    bool valido() const { return fallo == Fallo::Ninguno; }
};

// The number `numero` read by the rule of `via`. Every route but the
// contact editor ends in the outbox, so for those anything the sender would
// refuse fails as NoEnviable.
Numero leer(Via via, const QString& numero);

// What the batch sender sends to: digits with an optional sign, blanks
// around them allowed. "6.290.000", "1e5" or a name are not.
bool enviable(const QString& destino);

// The contact editor's words for a refused number.
QString motivo(Fallo fallo);

// An account that sends from its own mobile shows the platform its last
// nine characters (the national number without "0034").
QString remitente(const QString& movilCuenta);

}  // namespace Movil

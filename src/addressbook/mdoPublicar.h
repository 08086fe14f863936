#pragma once

#include "base/Hecho.h"
#include "delivery/Transporte.h"

#include <QCoro/QCoroTask>
#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

// Publication of a local list to the platform's web side, where it forms a
// web list under a keyword of the user's choosing. The routines say what
// happened; the publication screen tells the user.

// The accounts offered for the publication: "Nombre (saldo SMS)", the key
// "c" and the code, and which is the principal one; or the failure in the
// words the screen shows ("Encontrado Error: ").
struct CuentaPublicacion {
    QString texto;
    QString clave;
    bool principal = false;
};
Resultado<QList<CuentaPublicacion>> msCuentasPublicacion();

// The name of list `grupo` and the count of its members, as the screen
// shows them; none when the list is gone. Throws ErrorQuelmo: ItemNotFound
// means a database of another generation.
struct DatosLista {
    QString nombre;
    QString contactos;
};
std::optional<DatosLista> leerDatosLista(int16_t grupo);

// Whether a keyword holds only what the platform takes: letters A to Z,
// a to z and digits.
bool esPalabraClaveValida(const QString& ltag);

// What the platform answered to a publication.
struct ResultadoPublicacion {
    bool correcta = false;
    QString CADD, CUP, CERR;
    // What kept the exchange from an answer, in the transport's words
    // (also logged); empty when the platform answered.
    QString causa;
};

// Sends the members of list `grupo` through account `canal` as web list
// `ltag` ("U": update; "S" also sends the members, any other action none),
// emptying the web list first when `nborrar`. Local data is never touched.
QCoro::Task<ResultadoPublicacion> msPublicarLista(QString Lacc, int16_t grupo, QString ltag,
                                                  int16_t canal, bool nborrar,
                                                  Transporte::Cancelacion cancelacion = {});

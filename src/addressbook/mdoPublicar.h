#pragma once

#include "delivery/Transporte.h"

#include <QCoro/QCoroTask>
#include <QList>
#include <QString>
#include <cstdint>

// Publication of a local list to the platform's web side, where it forms a
// web list under a keyword of the user's choosing.

// The accounts offered for the publication: "Nombre (saldo SMS)", the key
// "c" and the code, and which is the principal one. Tells the user of a
// failure ("Encontrado Error: ").
struct CuentaPublicacion {
    QString texto;
    QString clave;
    bool principal = false;
};
QList<CuentaPublicacion> msCuentasPublicacion();

// The name of list `grupo` and the count of its members; false (after
// telling the user) when they can't be read.
bool msDatosLista(int16_t grupo, QString* nombre, QString* contactos);

// Whether a keyword holds only what the platform takes: letters A to Z,
// a to z and digits.
bool esPalabraClaveValida(const QString& ltag);

// What the platform answered to a publication.
struct ResultadoPublicacion {
    bool correcta = false;
    QString CADD, CUP, CERR;
};

// Sends the members of list `grupo` through account `canal` as web list
// `ltag` ("U": update; "S" also sends the members, any other action none),
// emptying the web list first when `nborrar`; tells the user the outcome,
// unless `cancelacion` gave it up (the screen closed). Local data is never
// touched.
QCoro::Task<ResultadoPublicacion> msPublicarLista(QString Lacc, int16_t grupo, QString ltag,
                                                  int16_t canal, bool nborrar,
                                                  Transporte::Cancelacion cancelacion = {});

#pragma once

#include "delivery/Transporte.h"

#include <QCoro/QCoroTask>
#include <QString>

// Signing a new user up on the platform: one form posted to the sign-up
// address of the platform's web host. The exchange is described in
// docs/platform-protocol.md.

struct SolicitudRegistro {
    QString nombre;
    QString email;
    QString movil;
    QString usuario;
    QString clave;  // in clear
    bool condiciones = false;
};

struct RespuestaRegistro {
    bool conectado = false;  // a valid answer came
    bool aceptado = false;
    QString motivo;      // of a refusal: "usuario", "movil", "condiciones", "datos"
    QString comentario;  // the platform's words, or why no answer came
};

// The sign-up address: setting Despliegue/Registro, else the path
// "registro/alta" behind the platform's default web address.
QString direccionRegistro();
// Posts the form; a refused, failed or given-up connection comes back with
// `conectado` false, never as an exception.
QCoro::Task<RespuestaRegistro> msRegistrarUsuario(SolicitudRegistro solicitud,
                                                  Transporte::Cancelacion cancelacion = {});

#pragma once

#include <QString>
#include <QStringList>

// The command line of quelmo-sms: what it asks for, read without Qt's own
// parser so that every text, the usage too, is Spanish.
struct Orden {
    enum class Modo { Ventana, SinVentana, Enviar, Importar, Version, Ayuda, Error };
    Modo modo = Modo::Ventana;
    bool unaVez = false;    // --once
    bool continuo = false;  // --continuous
    // --send NÚMERO TEXTO [--account N]; an empty account means the principal one.
    QString numero;
    QString texto;
    QString cuenta;
    // --import FICHERO [--contacts] [--list L]; a null list means the saved one.
    QString fichero;
    bool contactos = false;
    QString lista;
    // Why the line was refused (Modo::Error).
    QString error;
};

// The arguments after the program's name.
Orden leerOrden(const QStringList& argumentos);

// The usage that --help prints and a refused line shows.
QString textoUso();

// Exit codes of the one-shot commands.
inline constexpr int kSalidaBien = 0;
inline constexpr int kSalidaFallo = 1;
inline constexpr int kSalidaUso = 2;
// --once: the run could not deliver what was waiting (the platform not
// reached or refusing the account, a proxy or certificate failure); the
// messages wait in the outbox. 3 is kSalidaSinBaseDatos.
inline constexpr int kSalidaSinEntregar = 4;
// --once: the watched file could not be imported (its line in the log says
// why, and where it was set aside).
inline constexpr int kSalidaSinImportar = 5;

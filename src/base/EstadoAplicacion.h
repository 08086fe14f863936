#pragma once

#include "base/InterfazUsuario.h"
#include "base/RegistroActividad.h"

#include <QString>
#include <cstdint>

// The version of this release: Major, Minor, Revision.
inline constexpr int kVersionMajor = 3;
inline constexpr int kVersionMinor = 2;
inline constexpr int kVersionRevision = 5;
// The three numbers written one behind the other: 325.
int16_t versionCodigo();
// "Quelmo Mensajes SMS (v.3.2.5)": the main window's caption and the title
// of every message box without one of its own.
QString tituloAplicacion();
// How this program introduces itself to the platform: "{name} - 325".
QString identificacionAplicacion();

// The per-user application directory (created when missing).
QString directorioAplicacion();

// The password sentinel meaning "no access password".
inline constexpr char16_t kSinClave[] = u"sinclavedeentrada";

// The shared state record: one per process, public to the whole program.
struct EstadoAplicacion {
    int16_t giMaxLote = 0;
    QString gsClaveAcceso = QString::fromUtf16(kSinClave);
    QString gsClaveIntroducida;
    bool gbEnviando = false;
    bool gbImportado = false;
    QString MovilCuenta;
    QString gsVersionPlataforma;
    QString gsSaldoCuenta;
    QString gsDestinos;

    RegistroActividad log;
    InterfazUsuario* ui = nullptr;

    // Back to the state of a run that has loaded nothing yet: no access
    // password, nothing sending or imported, no account figures, an empty
    // log. The interface in use stays.
    void reset();
};

EstadoAplicacion& estadoAplicacion();
// The interface in use (headless defaults until a GUI or a test sets one).
InterfazUsuario& ui();
void establecerInterfaz(InterfazUsuario* ui);

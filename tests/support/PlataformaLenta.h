#pragma once

// A platform that takes its time, and the principal account pointing at it:
// what the tests of waiting screens and batches share.
#include "SimuladorPrueba.h"
#include "TestSupport.h"

#include <memory>

// The simulator answering after `retrasoMs`, with account 1 (demo/demo,
// balance `saldo`) of the shared connection as the principal account.
inline std::unique_ptr<SimuladorPrueba> plataformaLenta(const TestWorld& world, int retrasoMs,
                                                        int saldo = 0) {
    auto s = std::make_unique<SimuladorPrueba>(
        world.root(), QStringLiteral("[plataforma]\nretraso_ms=%1\n[cuenta1]\nusuario=demo\n"
                                     "clave=demo\nsaldo=100\nmovil=0034600123456\n")
                          .arg(retrasoMs));
    prueba::cuentaPrincipal(s->host(), QStringLiteral("demo"), {{QStringLiteral("Saldo"), saldo}});
    return s;
}

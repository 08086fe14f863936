#pragma once

#include <QString>

// The addresses of the platform and of the maker, in one place. Each has a
// compiled-in default; the section "Despliegue" of the settings store
// overrides it (the demo points them at the local simulator this way).
namespace Despliegue {

// The platform's default web address: the host of a balance query whose
// account has none.
QString plataforma();
// The product's web site (menu entries, version news).
QString web();
// The maker's secure web address (the recharge page).
QString webSegura();
// The maker's pages (conditions of use).
QString fabricante();
// The support mail address.
QString correo();

}  // namespace Despliegue

namespace Despliegue {
// Limits of one exchange with the platform, in seconds: to connect, and in
// all. A timeout is a failed connection.
int segundosConexion();
int segundosTotal();
}  // namespace Despliegue

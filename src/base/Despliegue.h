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
// Where a new user signs up: the platform's "registro/alta" page.
QString registro();

}  // namespace Despliegue

namespace Despliegue {
// Limits of one exchange with the platform, in seconds: to connect, and in
// all. A timeout is a failed connection.
int segundosConexion();
int segundosTotal();
}  // namespace Despliegue

namespace Despliegue {
// A file of extra certificate authorities (PEM) for a private platform,
// trusted beside the system's store; empty for none. There is no setting
// that skips verification.
QString autoridadesCA();
// The proxy of every exchange, over the environment's: empty to follow the
// environment (http_proxy, https_proxy, all_proxy, no_proxy), "directo" to
// use none.
QString proxy();
// Hosts reached without the proxy, over the environment's no_proxy; empty
// to follow the environment.
QString sinProxy();
}  // namespace Despliegue

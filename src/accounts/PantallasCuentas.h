#pragma once

// Registers the accounts' screens with Pantallas: frmCanales (child
// screen), frmSCanal (the account picker), frmNewCanal (a new account),
// frmTipoRegistro and frmIniCanal (first-run set-up), frmRegistro (the
// sign-up on the platform), all but the list
// modal; and sets the editor the core opens for an account.
void registrarPantallasCuentas();

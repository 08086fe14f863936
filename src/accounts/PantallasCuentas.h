#pragma once

// Registers the accounts' screens with Pantallas: frmCanales (child
// screen), frmSCanal (the account picker), frmNewCanal (a new account),
// frmTipoRegistro and frmIniCanal (first-run set-up), frmRegistro (the
// sign-up on the platform), frmNewCanal.Principal (the principal account
// in the editor), all but the list modal.
void registrarPantallasCuentas();

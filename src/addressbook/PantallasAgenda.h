#pragma once

// Registers the address book's screens with Pantallas: frmAbonados,
// frmGrupos, frmMenPro (child screens), frmNewUser (a new contact, modal)
// and frmSelecMenPro (the modal picker of predefined texts).
void registrarPantallasAgenda();

#pragma once

// Registers the address book's screens with Pantallas: frmAbonados,
// frmGrupos, frmMenPro (child screens), frmNewUser (a new contact, modal)
// frmSelecMenPro (the modal picker of predefined texts) and
// frmSubirListaWeb (publication of a list, modal; opened with the list's
// code as datum, or as "frmPublicarLista" on the list the lists screen
// chose).
void registrarPantallasAgenda();

#pragma once

class QWidget;

// Registers the address book's screens with Pantallas: frmAbonados,
// frmGrupos, frmMenPro (child screens), frmNewUser (a new contact, modal)
// and frmSelecMenPro (the modal picker of predefined texts).
void registrarPantallasAgenda();

// Closes a child screen, with its sub-window when it stands in the frame.
void cerrarPantallaHija(QWidget* pantalla);
// The window that modal screens of the address book stand over.
QWidget* ventanaPadreModal();

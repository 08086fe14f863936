#pragma once

// Registers the scheduling screens with Pantallas: frmMenAuto, the list of
// multi-sends (a child screen). The editor opens on a given row, so other
// screens call frmNewMenAuto2::editar.
void registrarPantallasProgramacion();

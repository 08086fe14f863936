#pragma once

// Registers the selection screen with Pantallas: "frmSelectDB" in database
// mode, and "frmSelectDB.Import", "frmSelectDB.ImportA",
// "frmSelectDB.ImportUser" in import mode for the three import commands;
// all modal.
void registrarPantallasImportacion();

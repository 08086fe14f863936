#pragma once

// `quelmo-sms --headless [--once] [--continuous]`: the transmitter without
// any window. Log lines go to standard output, with one line when it
// starts and one when it stops. Returns the process exit code.
int ejecutarSinVentana(int argc, char** argv, bool unaVez, bool continuo);

// The database as headless start-up opens it: the empty one copied in at
// the first start, then the saved or the default file. Ends the process
// (kSalidaSinBaseDatos) when none is usable.
void abrirBaseSinVentana();

#pragma once

// `quelmo-sms --headless [--once]`: the transmitter without any window.
// Log lines go to standard output. Returns the process exit code.
int ejecutarSinVentana(int argc, char** argv, bool unaVez);

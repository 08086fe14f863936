#pragma once

struct Orden;

// The one-shot commands of the command line, without any window. They
// share the database with a transmitter that may be running (in a window
// or headless) and wait for its locks instead of failing. Each returns the
// process exit code.

// --send: queues one message under the rules of an import line.
int ejecutarEnvio(const Orden& orden, int argc, char** argv);
// --import: the manual message import, or the contact import, of a file.
int ejecutarImportacion(const Orden& orden, int argc, char** argv);

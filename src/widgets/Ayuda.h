#pragma once

#include <QString>

// Opens the help manual in the desktop's browser.
void msAyuda();
// Where the manual is written out for the browser.
QString rutaAyuda();

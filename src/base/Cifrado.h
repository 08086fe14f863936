#pragma once

#include <QString>

// Adds (encode) or subtracts 10 from each character code; throws
// ErrorQuelmo for a code that would leave the single-byte range. The stored
// passwords of accounts and of the access gate are kept this way.
QString msCifrarClave(const QString& text, bool encode);

#pragma once

#include <QString>

// Adds (encode) or subtracts 10 from each UTF-16 code unit; throws
// ErrorQuelmo when a code would leave the range or the result would not be
// valid text (a surrogate pair broken apart), which could not be stored
// and shifted back. The stored passwords of accounts and of the access gate
// are kept this way.
QString msCifrarClave(const QString& text, bool encode);

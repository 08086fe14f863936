#include "base/Cifrado.h"

#include "base/Error.h"

using namespace Qt::StringLiterals;

QString msCifrarClave(const QString& text, bool encode) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const int codigo = c.unicode() + (encode ? 10 : -10);
        if (codigo < 0 || codigo > 0xFFFF)
            throw ErrorQuelmo(u"Llamada a procedimiento o argumento no válido"_s,
                              ErrNum::InvalidProcedureCall);
        out.append(QChar(char16_t(codigo)));
    }
    // A shift that breaks a surrogate pair would not survive the settings
    // file or the database, and could not be shifted back.
    if (!out.isValidUtf16())
        throw ErrorQuelmo(u"Llamada a procedimiento o argumento no válido"_s,
                          ErrNum::InvalidProcedureCall);
    return out;
}

#include "base/Cifrado.h"

#include "base/Error.h"

using namespace Qt::StringLiterals;

QString msCifrarClave(const QString& text, bool encode) {
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const int codigo = c.unicode() + (encode ? 10 : -10);
        // Stored passwords are single-byte text.
        if (c.unicode() > 255 || codigo < 0 || codigo > 255)
            throw ErrorQuelmo(u"Llamada a procedimiento o argumento no válido"_s,
                              ErrNum::InvalidProcedureCall);
        out.append(QChar(codigo));
    }
    return out;
}

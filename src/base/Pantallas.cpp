#include "base/Pantallas.h"

#include <QHash>

namespace Pantallas {

namespace {
QHash<QString, AbridorConDato>& registro() {
    static QHash<QString, AbridorConDato> r;
    return r;
}
}  // namespace

void registrar(const QString& nombre, Abridor abrir) {
    if (!abrir) {
        registro().insert(nombre, {});
        return;
    }
    registro().insert(nombre, [abrir = std::move(abrir)](const QVariant&) { abrir(); });
}

void registrarConDato(const QString& nombre, AbridorConDato abrir) {
    registro().insert(nombre, std::move(abrir));
}

bool abrir(const QString& nombre) {
    return abrir(nombre, QVariant());
}

bool abrir(const QString& nombre, const QVariant& dato) {
    const auto it = registro().constFind(nombre);
    if (it == registro().cend() || !*it) return false;
    // A copy: the screen may register again while it opens.
    const AbridorConDato abridor = *it;
    abridor(dato);
    return true;
}

bool existe(const QString& nombre) {
    return registro().contains(nombre);
}

QStringList nombres() {
    QStringList n = registro().keys();
    n.sort();
    return n;
}

}  // namespace Pantallas

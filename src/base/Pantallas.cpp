#include "base/Pantallas.h"

#include <QHash>

namespace Pantallas {

namespace {
QHash<QString, Abridor>& registro() {
    static QHash<QString, Abridor> r;
    return r;
}
}  // namespace

void registrar(const QString& nombre, Abridor abrir) {
    registro().insert(nombre, std::move(abrir));
}

bool abrir(const QString& nombre) {
    const auto it = registro().constFind(nombre);
    if (it == registro().cend() || !*it) return false;
    (*it)();
    return true;
}

bool existe(const QString& nombre) {
    return registro().contains(nombre);
}

}  // namespace Pantallas

#include "app/Pantallas.h"

#include "addressbook/PantallasAgenda.h"
#include "app/condiciones.h"
#include "composition/PantallasEnvio.h"

#include <QHash>

namespace Pantallas {

namespace {
QHash<QString, Abridor>& registro() {
    static QHash<QString, Abridor> r;
    return r;
}
std::function<void(const QString&)>& tomador() {
    static std::function<void(const QString&)> f;
    return f;
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

void registrarTodas() {
    registrarPantallasApp();
    registrarPantallasAgenda();
    registrarPantallasEnvio();
}

void setTomarTextoEnvio(std::function<void(const QString&)> tomar) {
    tomador() = std::move(tomar);
}

bool tomarTextoEnvio(const QString& texto) {
    if (!tomador()) return false;
    tomador()(texto);
    return true;
}

}  // namespace Pantallas

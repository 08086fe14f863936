#include "base/Pantallas.h"

#include "base/InterfazSinVentana.h"

#include <QHash>

namespace Pantallas {

namespace {
QHash<QString, AbridorConDato>& registro() {
    static QHash<QString, AbridorConDato> r;
    return r;
}
QHash<QString, Abridor>& sustitutos() {
    static QHash<QString, Abridor> s;
    return s;
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

void abrirOAvisar(const QString& nombre, const QString& aviso) {
    if (const auto s = sustitutos().constFind(nombre); s != sustitutos().cend()) {
        const Abridor abridor = *s;
        abridor();
        return;
    }
    if (!abrir(nombre)) avisoSinVentana(aviso);
}

Sustituto::Sustituto(const QString& nombre, Abridor abrir)
    : m_nombre(nombre), m_anterior(sustitutos().value(nombre)) {
    sustitutos().insert(nombre, std::move(abrir));
}

Sustituto::~Sustituto() {
    if (m_anterior)
        sustitutos().insert(m_nombre, std::move(m_anterior));
    else
        sustitutos().remove(m_nombre);
}

}  // namespace Pantallas

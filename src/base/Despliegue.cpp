#include "base/Despliegue.h"

#include "base/Ajustes.h"

using namespace Qt::StringLiterals;

namespace Despliegue {

namespace {
QString leer(const QString& clave, const QString& defecto) {
    return Ajustes::getSetting(u"Despliegue"_s, clave, defecto);
}
}  // namespace

QString plataforma() {
    return leer(u"Plataforma"_s, u"http://sms.quelmo.example/"_s);
}
QString web() {
    return leer(u"Web"_s, u"http://www.quelmo.example"_s);
}
QString webSegura() {
    return leer(u"WebSegura"_s, u"https://secure.quelmo.example"_s);
}
QString fabricante() {
    return leer(u"Fabricante"_s, u"http://www.quelmo.example"_s);
}
QString correo() {
    return leer(u"Correo"_s, u"soporte@quelmo.example"_s);
}
QString registro() {
    QString base = plataforma();
    if (!base.endsWith(u'/')) base += u'/';
    return leer(u"Registro"_s, base + u"registro/alta"_s);
}

}  // namespace Despliegue

namespace Despliegue {

namespace {
int segundos(const QString& clave, int defecto) {
    bool ok = false;
    const int v = leer(clave, QString::number(defecto)).trimmed().toInt(&ok);
    return ok && v > 0 ? v : defecto;
}
}  // namespace

int segundosConexion() {
    return segundos(u"TimeoutConexion"_s, 10);
}
int segundosTotal() {
    return segundos(u"TimeoutTotal"_s, 60);
}

}  // namespace Despliegue

namespace Despliegue {

QString autoridadesCA() {
    return leer(u"AutoridadesCA"_s, QString()).trimmed();
}
QString proxy() {
    return leer(u"Proxy"_s, QString()).trimmed();
}
QString sinProxy() {
    return leer(u"SinProxy"_s, QString()).trimmed();
}

}  // namespace Despliegue

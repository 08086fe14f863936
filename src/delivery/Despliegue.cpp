#include "delivery/Despliegue.h"

#include "app/Settings.h"

using namespace Qt::StringLiterals;

namespace Despliegue {

namespace {
QString leer(const QString& clave, const QString& defecto) {
    return Settings::getSetting(u"Despliegue"_s, clave, defecto);
}
}  // namespace

QString plataforma() { return leer(u"Plataforma"_s, u"http://sms.quelmo.example/"_s); }
QString web() { return leer(u"Web"_s, u"http://www.quelmo.example"_s); }
QString webSegura() { return leer(u"WebSegura"_s, u"https://secure.quelmo.example"_s); }
QString fabricante() { return leer(u"Fabricante"_s, u"http://www.quelmo.example"_s); }
QString correo() { return leer(u"Correo"_s, u"soporte@quelmo.example"_s); }

}  // namespace Despliegue

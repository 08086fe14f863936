#include "widgets/EstadoTransmisor.h"

#include "widgets/Iconos.h"

using namespace Qt::StringLiterals;

namespace EstadoTransmisor {

QIcon icono(bool activo) {
    return iconoQuelmo(activo ? u"transmisor-on"_s : u"transmisor-off"_s);
}

QString texto(bool activo) {
    return activo ? u"Envío de SMS Activado"_s : u"Envío de SMS Desactivado"_s;
}

QColor color(bool activo) {
    return activo ? QColor(0, 128, 0) : QColor(255, 0, 0);
}

}  // namespace EstadoTransmisor

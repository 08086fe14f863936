#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

// How the screens draw the transmitter switch (Interruptor): the one icon
// of each state for the frame's menu, the tray and the compose screen, and
// the coloured words of the compose screen.
namespace EstadoTransmisor {

QIcon icono(bool activo);
// "Envío de SMS Activado" / "Envío de SMS Desactivado".
QString texto(bool activo);
// Green when on, red when off.
QColor color(bool activo);

}  // namespace EstadoTransmisor

#pragma once

#include <QRect>
#include <QSize>

class QAbstractButton;
class QWidget;

// What every window of the program does, whichever screen it is:
// - it opens inside the available area of the display it opens on (a
//   laptop's 1024x600, a monitor at 200 %), and a screen whose controls need
//   more room than that scrolls instead of losing its buttons off the edge;
// - Enter presses the focused button, as Space does;
// - Escape does what the screen's close button does.
namespace ReglasPantallas {

// Installs the rules for the whole application; the frame calls it once.
void instalar();

// The part of the display `ventana` opens on that windows may take.
QRect areaLibre(const QWidget* ventana);

// Fits a top-level window into the available area of its display.
void encajarVentana(QWidget* ventana);

// When `pantalla` needs more room than `libre`, its controls move into a
// scroll area inside it. True when it scrolls.
bool desplazarSiNoCabe(QWidget* pantalla, QSize libre);

// Gives `control` the focus and scrolls it into sight.
void enfocar(QWidget* control, Qt::FocusReason razon);

// The button Escape presses on its screen, where closing does more than
// leave it (the scheduled message editor saves). Without one, Escape
// closes the screen.
void marcarCierre(QAbstractButton* boton);
QAbstractButton* botonCierre(const QWidget* pantalla);

}  // namespace ReglasPantallas

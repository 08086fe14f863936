#pragma once

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QWidget>

// Child screens exist as single lazily created instances: a reference to
// one creates it. The frame registers its MDI area once; screens opened
// before that (tests) stand as top-level windows.
namespace PantallasHijas {

void setArea(QMdiArea* area);
QMdiArea* area();
// The frame's control that Tab reaches after a screen's last control (and
// Shift+Tab before its first): without it Tab would go round one screen.
void setSiguiente(QWidget* control);

// The sub-window that holds `screen`, or null when it stands alone.
QMdiSubWindow* subWindowOf(QWidget* screen);

// Shows a screen as a child of the frame (or alone) and activates it. A
// screen new in the frame opens whole inside its area, where the area put
// it when there is room.
void show(QWidget* screen);

// Puts a sub-window at `deseada`, or nearer the area's top left corner, and
// shrinks it (down to what its layout needs) until it shows whole.
void encajar(QMdiSubWindow* sub, QPoint deseada);

template <class T>
QPointer<T>& slot() {
    static QPointer<T> p;
    return p;
}

// The one instance of T, created on first use. T needs a constructor that
// takes a parent QWidget* (default null). Closing the screen deletes it.
template <class T>
T* instance() {
    QPointer<T>& p = slot<T>();
    if (!p) {
        p = new T();
        p->setAttribute(Qt::WA_DeleteOnClose);
    }
    return p.data();
}

// Whether the one instance of T exists now (without creating it).
template <class T>
bool isLoaded() {
    return !slot<T>().isNull();
}

}  // namespace PantallasHijas

// Closes a child screen, with its sub-window when it stands in the frame.
void cerrarPantallaHija(QWidget* pantalla);
// The window that modal screens stand over.
QWidget* ventanaPadreModal();

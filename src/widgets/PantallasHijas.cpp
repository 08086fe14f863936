#include "widgets/PantallasHijas.h"

#include "widgets/ReglasPantallas.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>

namespace PantallasHijas {

namespace {
QPointer<QMdiArea>& areaActual() {
    static QPointer<QMdiArea> a;
    return a;
}
QPointer<QWidget>& siguiente() {
    static QPointer<QWidget> s;
    return s;
}

// The controls of a sub-window that Tab stops at, in Tab order.
QWidgetList tabulables(QMdiSubWindow* sub) {
    QWidgetList orden;
    for (QWidget* w = sub->nextInFocusChain(); w && w != sub; w = w->nextInFocusChain()) {
        if (sub->isAncestorOf(w) && w->isVisibleTo(sub) && w->isEnabled() && !w->focusProxy() &&
            (w->focusPolicy() & Qt::TabFocus))
            orden << w;
    }
    return orden;
}

// A sub-window is a focus root of its own: Tab goes round its screen. Out
// of its last control (or, backwards, its first) this one hands the focus
// to the frame's next control instead. Escape does what the screen's close
// button does, when no control of the screen took it.
class SubVentana : public QMdiSubWindow {
  public:
    using QMdiSubWindow::QMdiSubWindow;

  protected:
    bool focusNextPrevChild(bool next) override {
        QWidget* fuera = siguiente().data();
        if (fuera && fuera->isVisible() && fuera->isEnabled() && enUnExtremo(next)) {
            fuera->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
        return QMdiSubWindow::focusNextPrevChild(next);
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier && widget()) {
            if (QAbstractButton* cerrar = ReglasPantallas::botonCierre(widget()))
                cerrar->click();
            else
                cerrarPantallaHija(widget());
            return;
        }
        QMdiSubWindow::keyPressEvent(event);
    }

  private:
    bool enUnExtremo(bool next) {
        const QWidgetList orden = tabulables(this);
        return !orden.isEmpty() &&
               QApplication::focusWidget() == (next ? orden.last() : orden.first());
    }
};

// Tab out of the frame's next control goes back into the active screen,
// never on to the screens behind it.
class VueltaAPantalla : public QObject {
  public:
    using QObject::QObject;

  protected:
    bool eventFilter(QObject* objeto, QEvent* e) override {
        if (e->type() != QEvent::KeyPress) return QObject::eventFilter(objeto, e);
        const auto* k = static_cast<QKeyEvent*>(e);
        const bool atras = k->key() == Qt::Key_Backtab ||
                           (k->key() == Qt::Key_Tab && k->modifiers() == Qt::ShiftModifier);
        if (!atras && !(k->key() == Qt::Key_Tab && k->modifiers() == Qt::NoModifier)) return false;
        QMdiSubWindow* activa = area() ? area()->activeSubWindow() : nullptr;
        const QWidgetList orden = activa ? tabulables(activa) : QWidgetList();
        if (orden.isEmpty()) return false;
        ReglasPantallas::enfocar(atras ? orden.last() : orden.first(),
                                 atras ? Qt::BacktabFocusReason : Qt::TabFocusReason);
        return true;
    }
};
}  // namespace

void setSiguiente(QWidget* control) {
    siguiente() = control;
    if (control) control->installEventFilter(new VueltaAPantalla(control));
}

void setArea(QMdiArea* area) {
    areaActual() = area;
}
QMdiArea* area() {
    return areaActual().data();
}

QMdiSubWindow* subWindowOf(QWidget* screen) {
    if (!screen) return nullptr;
    return qobject_cast<QMdiSubWindow*>(screen->parentWidget());
}

void show(QWidget* screen) {
    QMdiArea* a = area();
    bool nueva = false;
    if (a && !subWindowOf(screen)) {
        auto* sub = new SubVentana;
        sub->setWidget(screen);
        a->addSubWindow(sub);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        sub->setObjectName(screen->objectName() + QStringLiteral("_sub"));
        nueva = true;
    }
    if (QMdiSubWindow* sub = subWindowOf(screen)) {
        sub->show();
        // The area puts a new window beside those already open, often
        // half outside the frame, with the right part of its lists cut.
        if (nueva) encajar(sub, sub->pos());
        a->setActiveSubWindow(sub);
    }
    screen->show();
    screen->raise();
    screen->activateWindow();
}

void encajar(QMdiSubWindow* sub, QPoint deseada) {
    QMdiArea* a = sub ? sub->mdiArea() : nullptr;
    if (!a) return;
    const QSize libre = a->viewport()->size();
    // A screen that can't shrink into the area scrolls inside its window.
    if (QWidget* pantalla = sub->widget();
        pantalla && (sub->minimumSizeHint().width() > libre.width() ||
                     sub->minimumSizeHint().height() > libre.height()))
        ReglasPantallas::desplazarSiNoCabe(pantalla, libre - (sub->size() - pantalla->size()));
    const QSize tam = sub->size().boundedTo(libre).expandedTo(sub->minimumSizeHint());
    if (tam != sub->size()) sub->resize(tam);
    sub->move(qBound(0, deseada.x(), qMax(0, libre.width() - tam.width())),
              qBound(0, deseada.y(), qMax(0, libre.height() - tam.height())));
}

}  // namespace PantallasHijas

void cerrarPantallaHija(QWidget* pantalla) {
    if (QMdiSubWindow* sub = PantallasHijas::subWindowOf(pantalla))
        sub->close();
    else
        pantalla->close();
}

QWidget* ventanaPadreModal() {
    return QApplication::activeWindow();
}

#include "widgets/PantallasHijas.h"

#include <QApplication>

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

// A sub-window is a focus root of its own: Tab goes round its screen. Out
// of its last control (or, backwards, its first) this one hands the focus
// to the frame's next control instead.
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

  private:
    bool enUnExtremo(bool next) const {
        QWidgetList orden;
        for (QWidget* w = nextInFocusChain(); w && w != this; w = w->nextInFocusChain()) {
            if (isAncestorOf(w) && w->isVisibleTo(this) && w->isEnabled() && !w->focusProxy() &&
                (w->focusPolicy() & Qt::TabFocus))
                orden << w;
        }
        return !orden.isEmpty() &&
               QApplication::focusWidget() == (next ? orden.last() : orden.first());
    }
};
}  // namespace

void setSiguiente(QWidget* control) {
    siguiente() = control;
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

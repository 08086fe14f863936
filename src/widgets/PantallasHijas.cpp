#include "widgets/PantallasHijas.h"

#include <QApplication>

namespace PantallasHijas {

namespace {
QPointer<QMdiArea>& areaActual() {
    static QPointer<QMdiArea> a;
    return a;
}
}  // namespace

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
    if (a && !subWindowOf(screen)) {
        QMdiSubWindow* sub = a->addSubWindow(screen);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        sub->setObjectName(screen->objectName() + QStringLiteral("_sub"));
    }
    if (QMdiSubWindow* sub = subWindowOf(screen)) {
        sub->show();
        a->setActiveSubWindow(sub);
    }
    screen->show();
    screen->raise();
    screen->activateWindow();
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

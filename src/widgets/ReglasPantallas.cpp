#include "widgets/ReglasPantallas.h"

#include "widgets/Accesible.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLayout>
#include <QMainWindow>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace ReglasPantallas {

namespace {

const char* const kCierre = "quelmoCierre";
const char* const kEncajada = "quelmoEncajada";

bool cabe(QSize tam, QSize libre) {
    return tam.width() <= libre.width() && tam.height() <= libre.height();
}

// The frame the desktop puts round a window is known once a window is on
// screen; before that, take the frame of one already shown, or room for a
// title bar.
QMargins marco(const QWidget* ventana) {
    auto de = [](const QWindow* w) { return w ? w->frameMargins() : QMargins(); };
    if (!de(ventana->windowHandle()).isNull()) return de(ventana->windowHandle());
    for (const QWindow* w : QGuiApplication::topLevelWindows())
        if (w->isVisible() && !de(w).isNull()) return de(w);
    return QMargins(0, ventana->style()->pixelMetric(QStyle::PM_TitleBarHeight), 0, 0);
}

class Reglas : public QObject {
  public:
    using QObject::QObject;

  protected:
    bool eventFilter(QObject* objeto, QEvent* e) override {
        if (!objeto->isWidgetType()) return false;
        auto* w = static_cast<QWidget*>(objeto);
        if (e->type() == QEvent::Show) {
            // Once, as it first opens: later the size is the user's.
            const Qt::WindowType tipo = w->windowType();
            if (w->isWindow() && (tipo == Qt::Window || tipo == Qt::Dialog) &&
                !w->property(kEncajada).toBool()) {
                w->setProperty(kEncajada, true);
                encajarVentana(w);
            }
            return false;
        }
        if (e->type() != QEvent::KeyPress) return false;
        const auto* k = static_cast<QKeyEvent*>(e);
        const bool intro = k->key() == Qt::Key_Return || k->key() == Qt::Key_Enter;
        // Qt presses only a dialog's auto-default buttons with Enter; a
        // button of a screen in the frame, or one that is not the
        // default, would let Enter fall to the dialog's default button.
        if (intro && (k->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier &&
            (qobject_cast<QPushButton*>(w) || qobject_cast<QToolButton*>(w))) {
            if (w->isEnabled()) static_cast<QAbstractButton*>(w)->click();
            return true;
        }
        // Reached the dialog itself: no control took the key.
        if (k->key() == Qt::Key_Escape && k->modifiers() == Qt::NoModifier &&
            qobject_cast<QDialog*>(w)) {
            if (QAbstractButton* b = botonCierre(w)) {
                b->click();
                return true;
            }
        }
        return false;
    }
};

}  // namespace

void instalar() {
    static QObject* reglas = nullptr;
    if (reglas) return;
    reglas = new Reglas(qApp);
    qApp->installEventFilter(reglas);
    instalarNombresAccesibles();
}

QRect areaLibre(const QWidget* ventana) {
    const QScreen* pantalla = ventana ? ventana->window()->screen() : nullptr;
    if (!pantalla) pantalla = QGuiApplication::primaryScreen();
    return pantalla ? pantalla->availableGeometry() : QRect();
}

void encajarVentana(QWidget* ventana) {
    const QRect libre = areaLibre(ventana);
    if (libre.isEmpty()) return;
    const QMargins m = marco(ventana);
    const QSize cabida = libre.size().shrunkBy(m);
    if (!qobject_cast<QMainWindow*>(ventana)) desplazarSiNoCabe(ventana, cabida);
    ventana->setMinimumSize(ventana->minimumSize().boundedTo(cabida));
    const QSize tam = ventana->size().boundedTo(cabida);
    const bool cambia = tam != ventana->size();
    if (cambia) ventana->resize(tam);
    // A dialog made smaller stands again over the middle of its owner.
    QPoint donde = ventana->pos();
    if (cambia && qobject_cast<QDialog*>(ventana) && ventana->parentWidget()) {
        const QRect dueno = ventana->parentWidget()->window()->frameGeometry();
        donde = dueno.center() - QPoint(tam.width() / 2, tam.height() / 2);
    }
    const QSize exterior = tam.grownBy(m);
    const QPoint dentro(
        qBound(libre.left(), donde.x(), qMax(libre.left(), libre.right() + 1 - exterior.width())),
        qBound(libre.top(), donde.y(), qMax(libre.top(), libre.bottom() + 1 - exterior.height())));
    if (dentro != ventana->pos()) ventana->move(dentro);
}

bool desplazarSiNoCabe(QWidget* pantalla, QSize libre) {
    if (pantalla->findChild<QScrollArea*>(u"desplazamiento"_s, Qt::FindDirectChildrenOnly))
        return true;
    QLayout* capa = pantalla->layout();
    if (!capa || (cabe(pantalla->minimumSizeHint(), libre) && cabe(pantalla->minimumSize(), libre)))
        return false;
    QWidget* foco = QApplication::focusWidget();
    if (!pantalla->isAncestorOf(foco)) foco = nullptr;
    // Built inside the screen's own window, so the controls keep their
    // Tab order as they move.
    auto* marcoDesplazable = new QScrollArea(pantalla);
    marcoDesplazable->setObjectName(u"desplazamiento"_s);
    marcoDesplazable->setFrameShape(QFrame::NoFrame);
    marcoDesplazable->setFocusPolicy(Qt::NoFocus);
    marcoDesplazable->setWidgetResizable(true);
    auto* contenido = new QWidget(marcoDesplazable->viewport());
    contenido->setObjectName(pantalla->objectName() + u"_contenido"_s);
    contenido->setLayout(capa);  // takes the controls with it
    marcoDesplazable->setWidget(contenido);
    auto* nueva = new QVBoxLayout(pantalla);
    nueva->setContentsMargins(0, 0, 0, 0);
    nueva->addWidget(marcoDesplazable);
    pantalla->setMinimumSize(pantalla->minimumSize().boundedTo(libre));
    if (pantalla->isVisible()) marcoDesplazable->show();
    if (foco) enfocar(foco, Qt::OtherFocusReason);
    return true;
}

void enfocar(QWidget* control, Qt::FocusReason razon) {
    control->setFocus(razon);
    for (QWidget* w = control->parentWidget(); w; w = w->parentWidget())
        if (auto* marcoDesplazable = qobject_cast<QScrollArea*>(w))
            marcoDesplazable->ensureWidgetVisible(control);
}

void marcarCierre(QAbstractButton* boton) {
    boton->setProperty(kCierre, true);
}

QAbstractButton* botonCierre(const QWidget* pantalla) {
    for (QAbstractButton* b : pantalla->findChildren<QAbstractButton*>())
        if (b->property(kCierre).toBool() && b->isVisibleTo(pantalla)) return b;
    return nullptr;
}

}  // namespace ReglasPantallas

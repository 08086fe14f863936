#include "widgets/Boton.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QMouseEvent>

namespace {

// Swallows the presses that belong to a press just taken: a double click,
// or a second press before the double-click time has passed.
class FiltroUnaVez : public QObject {
  public:
    using QObject::QObject;
    bool enCurso = false;

  protected:
    bool eventFilter(QObject* objeto, QEvent* e) override {
        if (e->type() == QEvent::MouseButtonDblClick) return true;
        if (e->type() == QEvent::MouseButtonPress) {
            if (m_ultima.isValid() && m_ultima.elapsed() < QApplication::doubleClickInterval())
                return true;
            m_ultima.start();
        }
        return QObject::eventFilter(objeto, e);
    }

  private:
    QElapsedTimer m_ultima;
};

// The screen that holds a button: its window, or its child window in the
// frame (never the whole frame, whose other screens go on working).
QWidget* pantallaDe(QWidget* w) {
    while (w->parentWidget() && !w->isWindow() && !w->parentWidget()->inherits("QMdiSubWindow"))
        w = w->parentWidget();
    return w;
}

}  // namespace

void conectarUnaVez(QAbstractButton* boton, QObject* contexto,
                    std::function<QCoro::Task<>()> accion) {
    auto* filtro = new FiltroUnaVez(boton);
    boton->installEventFilter(filtro);
    QObject::connect(boton, &QAbstractButton::clicked, contexto,
                     [filtro, accion = std::move(accion), boton] {
                         if (filtro->enCurso) return;
                         // The screen may close while the action waits.
                         const QPointer<QAbstractButton> vivo(boton);
                         const QPointer<QWidget> pantalla(pantallaDe(boton));
                         filtro->enCurso = true;
                         pantalla->setCursor(Qt::BusyCursor);
                         accion().then([vivo, pantalla, filtro] {
                             if (pantalla) pantalla->unsetCursor();
                             if (vivo) filtro->enCurso = false;
                         });
                     });
}

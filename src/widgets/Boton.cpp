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

}  // namespace

void conectarUnaVez(QAbstractButton* boton, QObject* contexto, std::function<void()> accion) {
    auto* filtro = new FiltroUnaVez(boton);
    boton->installEventFilter(filtro);
    QObject::connect(boton, &QAbstractButton::clicked, contexto,
                     [filtro, accion = std::move(accion), boton] {
                         if (filtro->enCurso) return;
                         // The screen may close while the action waits.
                         const QPointer<QAbstractButton> vivo(boton);
                         filtro->enCurso = true;
                         boton->setCursor(Qt::BusyCursor);
                         accion();
                         if (!vivo) return;
                         vivo->unsetCursor();
                         filtro->enCurso = false;
                     });
}

#include "widgets/EstadoTransmisor.h"

#include "widgets/Iconos.h"

#include <QAccessibleWidget>
#include <QKeyEvent>

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

namespace {

class InterruptorAccesible : public QAccessibleWidget {
  public:
    explicit InterruptorAccesible(ImagenInterruptor* w)
        : QAccessibleWidget(w, QAccessible::CheckBox) {}

    QAccessible::State state() const override {
        QAccessible::State s = QAccessibleWidget::state();
        s.checkable = true;
        s.checked = interruptor()->activo();
        return s;
    }
    QStringList actionNames() const override { return {toggleAction()}; }
    void doAction(const QString& accion) override {
        if (accion == toggleAction()) Q_EMIT interruptor()->alternado();
    }

  private:
    ImagenInterruptor* interruptor() const { return static_cast<ImagenInterruptor*>(widget()); }
};

QAccessibleInterface* fabrica(const QString& clase, QObject* objeto) {
    if (clase == "ImagenInterruptor"_L1 && objeto)
        return new InterruptorAccesible(static_cast<ImagenInterruptor*>(objeto));
    return nullptr;
}

}  // namespace

ImagenInterruptor::ImagenInterruptor(QWidget* parent) : QLabel(parent) {
    static const bool registrada = (QAccessible::installFactory(&fabrica), true);
    (void)registrada;
    setFocusPolicy(Qt::StrongFocus);
    // Focused, its picture stands on the highlight colour; no border, so
    // the screen keeps its size.
    setStyleSheet(u"QLabel:focus { background: palette(highlight) }"_s);
    setAccessibleName(u"Envío de SMS"_s);
    setAccessibleDescription(
        u"Pulse Espacio o haga doble clic para activar o desactivar el envío de SMS"_s);
    setActivo(false);
}

void ImagenInterruptor::setActivo(bool activo) {
    const bool cambia = activo != m_activo || pixmap().isNull();
    m_activo = activo;
    if (!cambia) return;
    setPixmap(EstadoTransmisor::icono(activo).pixmap(QSize(24, 24)));
    QAccessible::State estado;
    estado.checked = true;
    QAccessibleStateChangeEvent aviso(this, estado);
    QAccessible::updateAccessibility(&aviso);
}

void ImagenInterruptor::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
    Q_EMIT alternado();
}

void ImagenInterruptor::keyPressEvent(QKeyEvent* event) {
    const int tecla = event->key();
    if (tecla == Qt::Key_Space || tecla == Qt::Key_Return || tecla == Qt::Key_Enter) {
        Q_EMIT alternado();
        return;
    }
    QLabel::keyPressEvent(event);
}

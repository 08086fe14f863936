#pragma once

#include <QColor>
#include <QIcon>
#include <QLabel>
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

// The switch as the compose screen shows it: the picture of its state,
// turned by a double click, Space or Enter. A screen reader meets a check
// box named "Envío de SMS", checked while sending is on.
class ImagenInterruptor : public QLabel {
    Q_OBJECT
  public:
    explicit ImagenInterruptor(QWidget* parent = nullptr);

    bool activo() const { return m_activo; }
    void setActivo(bool activo);

  Q_SIGNALS:
    // The user asked to turn the switch.
    void alternado();

  protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    bool m_activo = false;
};

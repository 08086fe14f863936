#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

// A screen busy with a write that goes on over several turns: the controls
// given take no input, the busy pointer stands over the screen, and when
// it ends the control that had the keys gets them back, as disabling it
// took them away.
class Ocupacion {
  public:
    void ocupar(QWidget* pantalla, const QList<QWidget*>& controles);
    void soltar();
    bool activa() const { return m_activa; }

  private:
    bool m_activa = false;
    QPointer<QWidget> m_pantalla;
    QList<QPointer<QWidget>> m_controles;
    QPointer<QWidget> m_foco;
};

#include "widgets/Ocupacion.h"

#include <QApplication>

void Ocupacion::ocupar(QWidget* pantalla, const QList<QWidget*>& controles) {
    m_activa = true;
    m_pantalla = pantalla;
    m_foco = pantalla->focusWidget();
    // Those already off stay off after.
    m_controles.clear();
    for (QWidget* w : controles) {
        if (w->testAttribute(Qt::WA_ForceDisabled)) continue;
        m_controles.append(w);
        w->setEnabled(false);
    }
    pantalla->setCursor(Qt::BusyCursor);
}

void Ocupacion::soltar() {
    m_activa = false;
    for (const QPointer<QWidget>& w : std::as_const(m_controles))
        if (w) w->setEnabled(true);
    m_controles.clear();
    if (!m_pantalla) return;
    m_pantalla->unsetCursor();
    // Unless the user has gone on to another screen meanwhile.
    const QWidget* foco = QApplication::focusWidget();
    if (m_foco && m_foco->isEnabled() && (!foco || m_pantalla->isAncestorOf(foco)))
        m_foco->setFocus(Qt::OtherFocusReason);
}

#pragma once

#include <QWidget>
#include <initializer_list>

// What a screen reader says of a control: the name tells what it is for (the
// label beside it, or what the button does), the description how to use it
// where the name alone does not tell.
inline void nombreAccesible(QWidget* control, const QString& nombre,
                            const QString& descripcion = QString()) {
    control->setAccessibleName(nombre);
    if (!descripcion.isEmpty()) control->setAccessibleDescription(descripcion);
}

// The Tab order of a screen, in the order of its layout: each control
// passes the focus to the next one of the list.
inline void ordenTabulacion(std::initializer_list<QWidget*> controles) {
    QWidget* anterior = nullptr;
    for (QWidget* c : controles) {
        if (anterior) QWidget::setTabOrder(anterior, c);
        anterior = c;
    }
}

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

// Screen readers on Linux hear a combo and a tab list by their value (the
// chosen line, the open tab) unless told otherwise: this names them by what
// they are for (their accessible name or the label whose buddy they are)
// and keeps the value as their value. The frame installs it once.
void instalarNombresAccesibles();

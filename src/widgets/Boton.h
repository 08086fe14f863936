#pragma once

#include <QPushButton>

// A push button known by its objectName (tests and the screens' rules name
// buttons), with its caption and an optional tool tip.
inline QPushButton* botonConNombre(QWidget* padre, const QString& nombre, const QString& texto,
                                   const QString& ayuda = QString()) {
    auto* b = new QPushButton(texto, padre);
    b->setObjectName(nombre);
    if (!ayuda.isEmpty()) b->setToolTip(ayuda);
    return b;
}

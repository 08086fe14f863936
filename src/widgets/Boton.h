#pragma once

#include <QAbstractButton>
#include <QPointer>
#include <QPushButton>
#include <functional>

// A push button known by its objectName (tests and the screens' rules name
// buttons), with its caption and an optional tool tip.
inline QPushButton* botonConNombre(QWidget* padre, const QString& nombre, const QString& texto,
                                   const QString& ayuda = QString()) {
    auto* b = new QPushButton(texto, padre);
    b->setObjectName(nombre);
    if (!ayuda.isEmpty()) b->setToolTip(ayuda);
    return b;
}

// One press, one action, for the buttons that write messages: the second
// press of a double click is taken as part of the first, and a press that
// arrives while the action still runs (the log and the exchanges give the
// event loop a turn) is ignored. The busy pointer stands over the button's
// screen while the action runs.
void conectarUnaVez(QAbstractButton* boton, QObject* contexto, std::function<void()> accion);

template <typename Pantalla>
void conectarUnaVez(QAbstractButton* boton, Pantalla* pantalla, void (Pantalla::*accion)()) {
    QPointer<Pantalla> p(pantalla);
    conectarUnaVez(boton, pantalla, [p, accion] {
        if (p) (p->*accion)();
    });
}

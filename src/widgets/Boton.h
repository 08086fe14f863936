#pragma once

#include <QAbstractButton>
#include <QCoro/QCoroTask>
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

// One press, one action, for the buttons that write messages or ask the
// platform: the second press of a double click is taken as part of the
// first, and a press that arrives while the action still runs (waiting for
// the platform) is ignored. The busy pointer stands over the button's
// screen until the action has ended.
void conectarUnaVez(QAbstractButton* boton, QObject* contexto,
                    std::function<QCoro::Task<>()> accion);

template <typename Pantalla, typename Resultado>
void conectarUnaVez(QAbstractButton* boton, Pantalla* pantalla, Resultado (Pantalla::*accion)()) {
    QPointer<Pantalla> p(pantalla);
    conectarUnaVez(boton, pantalla, [p, accion]() -> QCoro::Task<> {
        if (!p) co_return;
        if constexpr (std::is_void_v<Resultado>)
            (p->*accion)();
        else
            co_await (p->*accion)();
    });
}

#!/usr/bin/python3
# Reads the compose screen of a running quelmo-sms as a screen reader does,
# through the accessibility bus: the role and name of each control. Fails
# when a control that takes the focus has no name, when two share one, or
# when one of the names a user needs to find is missing.
import sys
import time

import pyatspi

ESPERADOS = [
    ("combo box", "Cuenta"),
    ("text", "Destinatarios"),
    ("push button", "Elegir destinatarios"),
    ("text", "Texto del Mensaje"),
    ("push button", "Enviar Mensaje"),
    ("table", "Bandeja de Salida"),
    ("check box", "Envío de SMS"),
    ("label", "0 caracteres"),
    ("push button", "Cerrar"),
]
# Their items are not controls of the screen.
SIN_BAJAR = {"table", "tree table", "list", "combo box", "text", "tree"}


def buscar(nodo, nombre, profundidad=0):
    if nodo is None or profundidad > 12:
        return None
    if nodo.name == nombre and nodo.getRoleName() != "label":
        return nodo
    for hijo in nodo:
        encontrado = buscar(hijo, nombre, profundidad + 1)
        if encontrado is not None:
            return encontrado
    return None


def controles(nodo, salida):
    for hijo in nodo:
        if hijo is None:
            continue
        estado = hijo.getState()
        if not estado.contains(pyatspi.STATE_SHOWING):
            continue
        rol = hijo.getRoleName()
        enfocable = estado.contains(pyatspi.STATE_FOCUSABLE)
        if enfocable or rol == "label":
            salida.append((rol, hijo.name, enfocable))
        if rol not in SIN_BAJAR:
            controles(hijo, salida)


# The program as the accessibility bus shows it, or None.
def programa():
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.name in ("quelmo-sms", "Quelmo Mensajes SMS"):
            return app
    return None


# What a screen reader user would miss among the controls read: one that
# takes the focus without a name, or with another's.
def sin_nombre_propio(leidos, prefijo=""):
    fallos = []
    vistos = set()
    for rol, nombre, enfocable in leidos:
        if not enfocable:
            continue
        if not nombre.strip():
            fallos.append(f"{prefijo}{rol} sin nombre")
        elif nombre in vistos:
            fallos.append(f"{prefijo}dos controles se llaman «{nombre}»")
        vistos.add(nombre)
    return fallos


def main():
    plazo = time.time() + 60
    pantalla = None
    while pantalla is None and time.time() < plazo:
        pantalla = buscar(programa(), "Envío de Mensajes")
        if pantalla is None:
            time.sleep(0.5)
    if pantalla is None:
        print("la pantalla «Envío de Mensajes» no aparece en el bus de accesibilidad")
        return 1

    leidos = []
    controles(pantalla, leidos)
    for rol, nombre, enfocable in leidos:
        print(f"{rol}: {nombre}{'' if enfocable else ' (no enfocable)'}")
    fallos = sin_nombre_propio(leidos)
    # The switch says its state as a check box does; sending is on here.
    interruptor = buscar(pantalla, "Envío de SMS")
    if interruptor is not None and not interruptor.getState().contains(pyatspi.STATE_CHECKED):
        fallos.append("el interruptor «Envío de SMS» no dice que está activado")
    pares = {(rol, nombre) for rol, nombre, _ in leidos}
    for rol, nombre in ESPERADOS:
        if (rol, nombre) not in pares:
            fallos.append(f"falta {rol} «{nombre}»")
    for f in fallos:
        print("FALLO:", f)
    return 1 if fallos else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/python3
# Opens the screens of the main window from the keyboard, as a person who
# can't use a mouse does (key presses through the display server), and
# reads each one over the accessibility bus as a screen reader does: every
# control that takes the focus has a name of its own, Tab goes round the
# screen and the activity log and never into the screen behind, Enter on
# "Cerrar" closes it and so does Escape.
import subprocess
import sys
import time

import pyatspi

from leer_envio import SIN_BAJAR, buscar, controles, programa, sin_nombre_propio

# Title, and the keys that open it from the menus (Alt+menu, then item).
PANTALLAS = [
    ("Contactos", "c", "c"),
    ("Mensajes Enviados", "m", "m"),
    ("Mensajes Predefinidos", "m", "f"),
    ("Mensajes Programados", "m", "p"),
    ("Cuentas", "f", "c"),
]
TAB, ESCAPE, INTRO = "Tab", "Escape", "Return"


# A key as the display server's keyboard would type it.
def tecla(nombre, alt=False):
    subprocess.run(["xdotool", "key", ("alt+" if alt else "") + nombre], check=True)
    time.sleep(0.25)


def visible(nodo):
    return nodo is not None and nodo.getState().contains(pyatspi.STATE_SHOWING)


def esperar(condicion, plazo=10):
    fin = time.time() + plazo
    while time.time() < fin:
        valor = condicion()
        if valor:
            return valor
        time.sleep(0.2)
    return None


# The control that has the keyboard: the deepest focused node (an active
# sub-window says it is focused too). A list is one control: its current
# line keeps saying it is focused after the list lost the keyboard.
def enfocado(nodo, profundidad=0):
    if nodo is None or profundidad > 14:
        return None
    estado = nodo.getState()
    if not estado.contains(pyatspi.STATE_SHOWING) and profundidad > 1:
        return None
    if nodo.getRoleName() in SIN_BAJAR:
        return nodo if estado.contains(pyatspi.STATE_FOCUSED) else None
    for hijo in nodo:
        f = enfocado(hijo, profundidad + 1)
        if f is not None:
            return f
    return nodo if estado.contains(pyatspi.STATE_FOCUSED) else None


def dentro(nodo, ancestro):
    return nodo == ancestro or pyatspi.findAncestor(nodo, lambda a: a == ancestro) is not None


def recorrer(app, titulo, menu, opcion):
    tecla(menu, alt=True)
    tecla(opcion)
    pantalla = esperar(lambda: (lambda p: p if visible(p) else None)(buscar(app, titulo)))
    if pantalla is None:
        print(f"FALLO: «{titulo}» no se abre desde el teclado")
        return [titulo]
    log = buscar(app, "Eventos de la aplicación")
    leidos = []
    controles(pantalla, leidos)
    fallos = sin_nombre_propio(leidos, f"{titulo}: ")

    inicio = esperar(lambda: enfocado(app))
    cerrar = None
    for _ in range(sum(1 for _, _, e in leidos if e) + 4):
        tecla(TAB)
        f = enfocado(app)
        if f is None:
            continue
        if not dentro(f, pantalla) and (log is None or not dentro(f, log)):
            fallos.append(f"{titulo}: Tab lleva a «{f.name}», fuera de la pantalla")
            break
        if f.getRoleName() == "push button" and f.name == "Cerrar":
            cerrar = f
        if f == inicio:
            break
    else:
        fallos.append(f"{titulo}: Tab no vuelve al control del que salió")

    # Enter on the focused "Cerrar".
    if cerrar is None:
        fallos.append(f"{titulo}: Tab no llega a «Cerrar»")
    else:
        for _ in range(40):
            if enfocado(app) == cerrar:
                break
            tecla(TAB)
        tecla(INTRO)
        if not esperar(lambda: not visible(buscar(app, titulo)), 5):
            fallos.append(f"{titulo}: Intro en «Cerrar» no la cierra")

    # Escape, from the control the screen opens with.
    tecla(menu, alt=True)
    tecla(opcion)
    if esperar(lambda: visible(buscar(app, titulo))):
        tecla(ESCAPE)
        if not esperar(lambda: not visible(buscar(app, titulo)), 5):
            fallos.append(f"{titulo}: Escape no la cierra")
            tecla(ESCAPE)
    for f in fallos:
        print("FALLO:", f)
    print(f"{titulo}: {len(leidos)} controles leídos, {'bien' if not fallos else 'con fallos'}")
    return fallos


def main():
    app = programa()
    if app is None:
        print("el programa no está en el bus de accesibilidad")
        return 1
    # Without a window manager the keyboard goes to the window under the
    # pointer: it rests on the main window, as a hand off the mouse would.
    ventana = esperar(lambda: next((v for v in app if visible(v)), None))
    if ventana is None:
        print("la ventana principal no se ve")
        return 1
    caja = ventana.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    subprocess.run(["xdotool", "mousemove", str(caja.x + caja.width // 2), str(caja.y + 10)],
                   check=True)
    time.sleep(0.5)
    fallos = []
    for titulo, menu, opcion in PANTALLAS:
        fallos += recorrer(app, titulo, menu, opcion)
    return 1 if fallos else 0


if __name__ == "__main__":
    sys.exit(main())

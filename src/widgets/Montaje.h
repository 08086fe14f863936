#pragma once

#include <QBoxLayout>
#include <QString>
#include <QWidget>
#include <initializer_list>
#include <utility>

class QGridLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

// The pieces every screen is put together from, so that a screen's set-up
// says which controls it has and where they stand, not how each is made.

// What the frame, the window list and the tests know a screen by: its
// objectName, its caption and its icon.
void identificar(QWidget* pantalla, const QString& nombre, const QString& titulo,
                 const QString& icono);

// A control of type T known by `nombre` (tests and the screen reader rules
// find controls by it); `args` go to T's constructor before the parent.
template <class T, class... Args>
T* control(QWidget* padre, const QString& nombre, Args&&... args) {
    auto* c = new T(std::forward<Args>(args)..., padre);
    c->setObjectName(nombre);
    return c;
}

// A text field that takes at most `limite` characters, and one whose
// characters show as stars.
QLineEdit* campoTexto(QWidget* padre, const QString& nombre, int limite = 32767);
QLineEdit* campoClave(QWidget* padre, const QString& nombre, int limite = 32767);

// A caption; with a `campo`, it is the field's buddy: its mnemonic moves
// there and screen readers name the field by it.
QLabel* etiqueta(QWidget* padre, const QString& texto, QWidget* campo = nullptr);

// One of the program's icons as a picture `lado` pixels wide, standing at
// the top of its row.
QLabel* imagen(QWidget* padre, const QString& icono, int lado);

// Shows the count of characters typed in `texto` in `cuenta` as "(n)",
// read aloud as "n caracteres".
void contarCaracteres(QPlainTextEdit* texto, QLabel* cuenta);

// One piece of a row or column: a control and its share of the room left
// over ({campo, 1}); a nullptr stands for an empty stretch that takes that
// room, pushing what follows to the end.
struct Pieza {
    Pieza(QWidget* c, int parte = 0) : control(c), estirar(parte) {}
    QWidget* control;
    int estirar;
};

// A row or column of pieces, in order.
QHBoxLayout* fila(std::initializer_list<Pieza> piezas);
QVBoxLayout* columna(std::initializer_list<Pieza> piezas);
void anadirPiezas(QBoxLayout* capa, std::initializer_list<Pieza> piezas);

// The buttons beside a list: its actions from the top, the button that
// closes the screen alone at the bottom.
QVBoxLayout* columnaBotones(std::initializer_list<Pieza> acciones, QWidget* cierre);

// Rows of a form on a grid, from the top: a caption (the field's buddy) in
// the first column, its field in the second.
struct FilaFormulario {
    QString texto;
    QWidget* campo;
};
void filasFormulario(QGridLayout* rejilla, std::initializer_list<FilaFormulario> filas);

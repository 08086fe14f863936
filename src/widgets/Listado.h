#pragma once

#include "widgets/ModeloListado.h"

#include <QTableView>

// The look and keys every list of lines shares: whole lines, no grid, no row
// numbers, no editing, one fixed row height (so a million lines lay out in
// no time). Home and End go to the first and last line, Tab leaves the list,
// and Ctrl with a column's number (1 to 9) does what a click on that
// column's header does: sorting needs no mouse.
class VistaLineas : public QTableView {
    Q_OBJECT
  public:
    explicit VistaLineas(QWidget* parent = nullptr);

    QHeaderView* header() const { return horizontalHeader(); }

  protected:
    QModelIndex moveCursor(CursorAction accion, Qt::KeyboardModifiers teclas) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void currentChanged(const QModelIndex& actual, const QModelIndex& anterior) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void ajustarAlto();
    void repintarLinea(int fila);
};

// A report list: a ModeloListado shown with fixed row heights and whole
// lines selected, no editing. A click on a header sorts by that column on
// the texts as shown; the direction flips at every header click, whichever
// column it is (the first click sorts descending), and only the clicked
// header shows the arrow. At first the arrow stands ascending on the first
// column while the lines keep the order they were loaded in.
//
// Screens read the selection with `filasSeleccionadas` / `filaActual` and
// react to `dobleClicFila`.
class Listado : public VistaLineas {
    Q_OBJECT
  public:
    Listado(const QString& nombre, const QStringList& cabeceras, QWidget* parent = nullptr);

    ModeloListado* modelo() const { return m_modelo; }
    // Shows `modelo` (a ModeloPaginado for the long lists) in place of the
    // lines kept in memory; the list takes it over.
    void usarModelo(ModeloListado* modelo);
    void setSeleccionMultiple(bool multiple);

    // The selected line of a single-selection list (the current line when
    // it is selected), -1 when none.
    int filaActual() const;
    // The selected lines, in ascending order.
    QList<int> filasSeleccionadas() const;
    void seleccionarFila(int fila, bool anadir = false);

    // What a click on the header of `columna` does.
    void ordenarPorColumna(int columna);

  Q_SIGNALS:
    // A double click on a line, or Enter on the current one.
    void dobleClicFila(int fila);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    ModeloListado* m_modelo;
    bool m_descendente = false;
    bool m_anchosMirados = false;
};

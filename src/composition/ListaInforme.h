#pragma once

#include "composition/ModeloInforme.h"

#include <QTreeView>

// A report list over a ModeloInforme: fixed row heights, whole lines
// selected, and a click on a header sorting by that column with the
// direction turned at every click, the arrow on the clicked header only.
class ListaInforme : public QTreeView {
    Q_OBJECT
  public:
    ListaInforme(const QString& nombre, const QStringList& cabeceras, QWidget* parent = nullptr);

    ModeloInforme* modelo() const { return m_modelo; }
    // The line of the current item, -1 when none.
    int filaActual() const;
    // The selected lines, from the last to the first.
    QList<int> filasSeleccionadas() const;

  private:
    void ordenarPorColumna(int columna);

    ModeloInforme* m_modelo;
    bool m_orden = false;
};

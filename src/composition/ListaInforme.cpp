#include "composition/ListaInforme.h"

#include <QHeaderView>
#include <algorithm>

ListaInforme::ListaInforme(const QString& nombre, const QStringList& cabeceras, QWidget* parent)
    : QTreeView(parent), m_modelo(new ModeloInforme(cabeceras, this)) {
    setObjectName(nombre);
    setModel(m_modelo);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    header()->setSectionsClickable(true);
    header()->setSortIndicator(0, Qt::AscendingOrder);
    header()->setSortIndicatorShown(true);
    header()->setStretchLastSection(true);
    connect(header(), &QHeaderView::sectionClicked, this, &ListaInforme::ordenarPorColumna);
}

int ListaInforme::filaActual() const {
    const QModelIndex i = currentIndex();
    return i.isValid() ? i.row() : -1;
}

QList<int> ListaInforme::filasSeleccionadas() const {
    QList<int> filas;
    for (const QModelIndex& i : selectionModel()->selectedRows()) filas.append(i.row());
    std::sort(filas.begin(), filas.end(), std::greater<int>());
    return filas;
}

void ListaInforme::ordenarPorColumna(int columna) {
    m_orden = !m_orden;
    const Qt::SortOrder orden = m_orden ? Qt::DescendingOrder : Qt::AscendingOrder;
    m_modelo->sort(columna, orden);
    header()->setSortIndicator(columna, orden);
}

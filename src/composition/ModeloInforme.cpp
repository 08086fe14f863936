#include "composition/ModeloInforme.h"

#include <algorithm>
#include <numeric>

ModeloInforme::ModeloInforme(QStringList cabeceras, QObject* parent)
    : QAbstractTableModel(parent), m_cabeceras(std::move(cabeceras)) {}

int ModeloInforme::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_celdas.size() / m_cabeceras.size());
}

int ModeloInforme::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_cabeceras.size());
}

QVariant ModeloInforme::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) return {};
    return texto(index.row(), index.column());
}

QVariant ModeloInforme::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
        section < m_cabeceras.size())
        return m_cabeceras.at(section);
    return {};
}

QString ModeloInforme::texto(int fila, int columna) const {
    const qsizetype i = qsizetype(fila) * m_cabeceras.size() + columna;
    if (fila < 0 || columna < 0 || columna >= m_cabeceras.size() || i >= m_celdas.size()) return {};
    return m_celdas.at(i);
}

QStringList ModeloInforme::fila(int f) const {
    QStringList r;
    for (int c = 0; c < m_cabeceras.size(); ++c) r.append(texto(f, c));
    return r;
}

QStringList ModeloInforme::textos() const {
    QStringList r;
    const int n = rowCount();
    r.reserve(n);
    for (int f = 0; f < n; ++f) r.append(texto(f, 0));
    return r;
}

void ModeloInforme::asignar(QVector<QString> celdas) {
    beginResetModel();
    m_celdas = std::move(celdas);
    m_celdas.resize(m_celdas.size() - m_celdas.size() % m_cabeceras.size());
    ordenar();
    endResetModel();
}

void ModeloInforme::limpiar() {
    asignar({});
}

void ModeloInforme::anadirFila(const QStringList& fila) {
    if (ordenado()) {
        // A sorted list takes a new line at its place.
        QVector<QString> celdas = m_celdas;
        for (int c = 0; c < m_cabeceras.size(); ++c) celdas.append(fila.value(c));
        asignar(std::move(celdas));
        return;
    }
    const int n = rowCount();
    beginInsertRows(QModelIndex(), n, n);
    for (int c = 0; c < m_cabeceras.size(); ++c) m_celdas.append(fila.value(c));
    endInsertRows();
}

void ModeloInforme::quitarFila(int fila) {
    if (fila < 0 || fila >= rowCount()) return;
    beginRemoveRows(QModelIndex(), fila, fila);
    m_celdas.remove(qsizetype(fila) * m_cabeceras.size(), m_cabeceras.size());
    endRemoveRows();
}

void ModeloInforme::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= m_cabeceras.size()) return;
    beginResetModel();
    m_columnaOrden = column;
    m_orden = order;
    ordenar();
    endResetModel();
}

void ModeloInforme::ordenar() {
    if (!ordenado()) return;
    const int ancho = int(m_cabeceras.size());
    const int n = rowCount();
    QVector<int> orden(n);
    std::iota(orden.begin(), orden.end(), 0);
    const int col = m_columnaOrden;
    const bool desc = m_orden == Qt::DescendingOrder;
    std::stable_sort(orden.begin(), orden.end(), [&](int a, int b) {
        const int r =
            QString::compare(m_celdas.at(qsizetype(a) * ancho + col),
                             m_celdas.at(qsizetype(b) * ancho + col), Qt::CaseInsensitive);
        return desc ? r > 0 : r < 0;
    });
    QVector<QString> celdas;
    celdas.reserve(m_celdas.size());
    for (int f : orden)
        for (int c = 0; c < ancho; ++c)
            celdas.append(std::move(m_celdas[qsizetype(f) * ancho + c]));
    m_celdas = std::move(celdas);
}

#include "widgets/ModeloListado.h"

#include "base/ReglaListas.h"

#include <algorithm>
#include <numeric>
#include <utility>

ModeloListado::ModeloListado(QStringList cabeceras, QObject* parent)
    : QAbstractTableModel(parent), m_cabeceras(std::move(cabeceras)) {}

int ModeloListado::rowCount(const QModelIndex& parent) const {
    if (parent.isValid() || m_cabeceras.isEmpty()) return 0;
    return int(m_celdas.size() / m_cabeceras.size());
}

int ModeloListado::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_cabeceras.size());
}

QVariant ModeloListado::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != Qt::DisplayRole) return {};
    return texto(index.row(), index.column());
}

QVariant ModeloListado::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
        section < m_cabeceras.size())
        return m_cabeceras.at(section);
    return {};
}

QString ModeloListado::texto(int fila, int columna) const {
    if (fila < 0 || columna < 0 || columna >= m_cabeceras.size() || fila >= rowCount()) return {};
    return m_celdas.at(qsizetype(fila) * m_cabeceras.size() + columna);
}

QStringList ModeloListado::fila(int f) const {
    QStringList r;
    for (int c = 0; c < m_cabeceras.size(); ++c) r.append(texto(f, c));
    return r;
}

void ModeloListado::asignar(QVector<QString> celdas) {
    beginResetModel();
    m_celdas = std::move(celdas);
    if (!m_cabeceras.isEmpty())
        m_celdas.resize(m_celdas.size() - m_celdas.size() % m_cabeceras.size());
    ordenar();
    endResetModel();
}

QVector<QString> ModeloListado::tomarCeldas() {
    beginResetModel();
    QVector<QString> celdas = std::exchange(m_celdas, {});
    endResetModel();
    return celdas;
}

void ModeloListado::limpiar() {
    asignar({});
}

void ModeloListado::anadirCeldas(QVector<QString> celdas) {
    const qsizetype ancho = m_cabeceras.size();
    if (ancho == 0 || celdas.size() < ancho) return;
    celdas.resize(celdas.size() - celdas.size() % ancho);
    if (m_columnaOrden >= 0) {
        QVector<QString> todas = m_celdas;
        todas.append(std::move(celdas));
        asignar(std::move(todas));
        return;
    }
    const int n = rowCount();
    beginInsertRows(QModelIndex(), n, n + int(celdas.size() / ancho) - 1);
    // An empty list takes them whole: appended, each of a million cells
    // would be moved one by one into a new block, 60 ms.
    if (m_celdas.isEmpty())
        m_celdas = std::move(celdas);
    else
        m_celdas.append(std::move(celdas));
    endInsertRows();
}

void ModeloListado::anadirFila(const QStringList& nueva) {
    anadirFilas({nueva});
}

void ModeloListado::anadirFilas(const QList<QStringList>& nuevas) {
    if (nuevas.isEmpty()) return;
    if (m_columnaOrden >= 0) {
        // A sorted list takes new lines at their places.
        QVector<QString> celdas = m_celdas;
        for (const QStringList& fila : nuevas)
            for (int c = 0; c < m_cabeceras.size(); ++c) celdas.append(fila.value(c));
        asignar(std::move(celdas));
        return;
    }
    const int n = rowCount();
    beginInsertRows(QModelIndex(), n, n + int(nuevas.size()) - 1);
    for (const QStringList& fila : nuevas)
        for (int c = 0; c < m_cabeceras.size(); ++c) m_celdas.append(fila.value(c));
    endInsertRows();
}

void ModeloListado::quitarFilas(QList<int> filas) {
    const int n = rowCount();
    QVector<bool> fuera(n, false);
    bool alguna = false;
    for (int f : filas)
        if (f >= 0 && f < n) fuera[f] = alguna = true;
    if (!alguna) return;
    const qsizetype ancho = m_cabeceras.size();
    // The runs of lines to remove, last first so earlier lines keep their
    // numbers while the later runs go.
    QList<std::pair<int, int>> tramos;
    for (int f = n - 1; f >= 0; --f) {
        if (!fuera.at(f)) continue;
        int desde = f;
        while (desde > 0 && fuera.at(desde - 1)) --desde;
        tramos.append({desde, f});
        f = desde;
    }
    if (tramos.size() <= 64) {
        for (const auto& [desde, hasta] : std::as_const(tramos)) {
            beginRemoveRows(QModelIndex(), desde, hasta);
            m_celdas.erase(m_celdas.begin() + desde * ancho,
                           m_celdas.begin() + (hasta + 1) * ancho);
            endRemoveRows();
        }
        return;
    }
    beginResetModel();
    QVector<QString> celdas;
    celdas.reserve(m_celdas.size());
    for (int f = 0; f < n; ++f)
        if (!fuera.at(f))
            for (qsizetype c = 0; c < ancho; ++c) celdas.append(std::move(m_celdas[f * ancho + c]));
    m_celdas = std::move(celdas);
    endResetModel();
}

void ModeloListado::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= m_cabeceras.size()) return;
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    m_columnaOrden = column;
    m_orden = order;
    const QVector<int> orden = ordenar();
    // Selected lines stay selected at their new places.
    QVector<int> nuevaFila(orden.size());
    for (int i = 0; i < orden.size(); ++i) nuevaFila[orden.at(i)] = i;
    const QModelIndexList viejos = persistentIndexList();
    QModelIndexList nuevos;
    nuevos.reserve(viejos.size());
    for (const QModelIndex& i : viejos)
        nuevos.append(i.row() < nuevaFila.size() ? index(nuevaFila.at(i.row()), i.column())
                                                 : QModelIndex());
    changePersistentIndexList(viejos, nuevos);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

QVector<int> ModeloListado::ordenar() {
    if (m_columnaOrden < 0 || m_cabeceras.isEmpty()) return {};
    const qsizetype ancho = m_cabeceras.size();
    const int n = rowCount();
    QVector<QString> claves(n);
    for (int f = 0; f < n; ++f)
        claves[f] = ReglaListas::clave(m_celdas.at(f * ancho + m_columnaOrden));
    QVector<int> orden(n);
    std::iota(orden.begin(), orden.end(), 0);
    if (m_orden == Qt::AscendingOrder)
        std::stable_sort(orden.begin(), orden.end(),
                         [&](int a, int b) { return claves.at(a) < claves.at(b); });
    else
        std::stable_sort(orden.begin(), orden.end(),
                         [&](int a, int b) { return claves.at(b) < claves.at(a); });
    QVector<QString> celdas;
    celdas.reserve(m_celdas.size());
    for (int f : orden)
        for (qsizetype c = 0; c < ancho; ++c) celdas.append(std::move(m_celdas[f * ancho + c]));
    m_celdas = std::move(celdas);
    return orden;
}

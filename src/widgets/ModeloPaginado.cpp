#include "widgets/ModeloPaginado.h"

#include "db/BaseDatos.h"

#include <QHash>

#include <optional>

namespace {
// Beyond these, following each selected line costs more than a frame:
// the selection is dropped instead.
constexpr int kSeguidasMax = 64;
}  // namespace

ModeloPaginado::ModeloPaginado(ListaPaginada::Definicion definicion, QStringList cabeceras,
                               QObject* parent)
    : ModeloListado(std::move(cabeceras), parent), m_lista(std::move(definicion)) {
    m_lista.alLlegar([this](int primera, int ultima) { llegaron(primera, ultima); });
}

int ModeloPaginado::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_lista.filas();
}

QVariant ModeloPaginado::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != Qt::DisplayRole) return {};
    // What a paint asks for: a page still being read shows empty.
    return m_lista.textoMostrado(index.row(), index.column()).value_or(QString());
}

QString ModeloPaginado::texto(int fila, int columna) const {
    return m_lista.texto(fila, columna);
}

QModelIndexList ModeloPaginado::colocar(const QModelIndexList& viejos,
                                        const QHash<int, int64_t>& claves) {
    QHash<int64_t, std::optional<int>> filas;
    QModelIndexList nuevos;
    nuevos.reserve(viejos.size());
    m_porColocar.clear();
    for (const QModelIndex& i : viejos) {
        const int64_t clave = claves.value(i.row());
        if (clave > 0 && !filas.contains(clave)) {
            try {
                filas.insert(clave, m_lista.filaDeSinEsperar(clave, i.row()));
            } catch (const ErrorBD&) {
                filas.insert(clave, -1);
            }
        }
        const std::optional<int> fila = clave > 0 ? filas.value(clave) : -1;
        if (!fila && i.row() < rowCount()) {
            m_porColocar.insert(i.row(), clave);
            nuevos.append(i);
        } else {
            nuevos.append(fila && *fila >= 0 ? index(*fila, i.column()) : QModelIndex());
        }
    }
    return nuevos;
}

template <class F>
void ModeloPaginado::recolocar(F cambio) {
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList viejos = persistentIndexList();
    QHash<int, int64_t> claves;
    if (viejos.size() <= kSeguidasMax)
        for (const QModelIndex& i : viejos)
            claves.insert(i.row(), m_porColocar.contains(i.row()) ? m_porColocar.value(i.row())
                                                                  : m_lista.clave(i.row()));
    cambio();
    changePersistentIndexList(viejos, colocar(viejos, claves));
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void ModeloPaginado::llegaron(int primera, int ultima) {
    if (!m_porColocar.isEmpty()) {
        Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
        QModelIndexList esperan;
        for (const QModelIndex& i : persistentIndexList())
            if (m_porColocar.contains(i.row())) esperan.append(i);
        const QHash<int, int64_t> claves = m_porColocar;
        changePersistentIndexList(esperan, colocar(esperan, claves));
        Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
    }
    if (primera <= ultima)
        Q_EMIT dataChanged(index(primera, 0), index(ultima, columnCount() - 1), {Qt::DisplayRole});
}

void ModeloPaginado::cargar(int filas) {
    recolocar([this, filas] {
        try {
            m_lista.cargar(filas);
        } catch (const ErrorBD&) {
            m_lista.limpiar();
        }
    });
}

void ModeloPaginado::ordenar(int columna, bool descendente) {
    recolocar([&] { m_lista.ordenar(columna, descendente); });
}

void ModeloPaginado::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= columnCount()) return;
    ordenar(column, order == Qt::DescendingOrder);
}

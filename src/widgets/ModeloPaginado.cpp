#include "widgets/ModeloPaginado.h"

#include "db/BaseDatos.h"

#include <QHash>

namespace {
// Beyond these, following each selected line costs more than a frame:
// the selection is dropped instead.
constexpr int kSeguidasMax = 64;
}  // namespace

ModeloPaginado::ModeloPaginado(ListaPaginada::Definicion definicion, QStringList cabeceras,
                               QObject* parent)
    : ModeloListado(std::move(cabeceras), parent), m_lista(std::move(definicion)) {}

int ModeloPaginado::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_lista.filas();
}

QString ModeloPaginado::texto(int fila, int columna) const {
    return m_lista.texto(fila, columna);
}

template <class F>
void ModeloPaginado::recolocar(F cambio) {
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList viejos = persistentIndexList();
    QHash<int, int64_t> claves;
    if (viejos.size() <= kSeguidasMax)
        for (const QModelIndex& i : viejos) claves.insert(i.row(), m_lista.clave(i.row()));
    cambio();
    QHash<int64_t, int> filas;
    QModelIndexList nuevos;
    nuevos.reserve(viejos.size());
    for (const QModelIndex& i : viejos) {
        const int64_t clave = claves.value(i.row());
        if (clave > 0 && !filas.contains(clave)) {
            try {
                filas.insert(clave, m_lista.filaDe(clave, i.row()));
            } catch (const ErrorBD&) {
                filas.insert(clave, -1);
            }
        }
        const int fila = clave > 0 ? filas.value(clave) : -1;
        nuevos.append(fila >= 0 ? index(fila, i.column()) : QModelIndex());
    }
    changePersistentIndexList(viejos, nuevos);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void ModeloPaginado::cargar(int filas, int filasCola) {
    recolocar([this, filas, filasCola] {
        try {
            m_lista.cargar(filas, filasCola);
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

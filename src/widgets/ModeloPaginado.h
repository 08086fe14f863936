#pragma once

#include "db/ListaPaginada.h"
#include "widgets/ModeloListado.h"

// A report list's lines read from the database a page at a time, for the
// lists that can grow to a hundred thousand lines and more: opening,
// sorting and a refresh cost what the list shows, not what is stored.
// Counting and sorting are left to the engine (see ListaPaginada); the
// in-memory fillers of ModeloListado don't apply.
//
// Selected lines stay selected when the list is sorted or read anew: each
// follows its row to wherever it stands then, and leaves the selection
// when its row is gone (or, in a list too long to walk, moved far).
//
// A sort of a long list by a column no index orders is read over turns of
// the event loop: the lines show empty for a moment, then fill in, and the
// selected ones go to their rows once the rows are there.
class ModeloPaginado : public ModeloListado {
    Q_OBJECT
  public:
    ModeloPaginado(ListaPaginada::Definicion definicion, QStringList cabeceras,
                   QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QString texto(int fila, int columna) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Reads the rows anew in the order chosen (`filas`: the count of the
    // ordered lines, when known); an unreadable table shows empty. Throws
    // nothing.
    void cargar(int filas = -1);
    // How many rows there are now, without reading them; throws ErrorBD.
    int contar() const { return m_lista.contar(); }
    // Orders by a column without a header click (-1: by the rows' numbers).
    void ordenar(int columna, bool descendente);
    // The number of the row on line `fila`.
    int64_t clave(int fila) const { return m_lista.clave(fila); }
    // The order of the lines before those just moved here: the column
    // (-1: the rows' numbers) and its direction.
    std::pair<int, bool> ordenLista() const {
        return {m_lista.columnaOrden(), m_lista.descendente()};
    }
    // Lines shown are still being read.
    bool leyendo() const { return m_lista.leyendo(); }

  private:
    // Runs `cambio` and moves the selected lines after their rows.
    template <class F>
    void recolocar(F cambio);
    // Moves the lines of `viejos` to where their rows (`claves`, by line)
    // stand now; those whose rows are still being read wait in place.
    QModelIndexList colocar(const QModelIndexList& viejos, const QHash<int, int64_t>& claves);
    void llegaron(int primera, int ultima);

    ListaPaginada m_lista;
    // Selected lines waiting in place for their rows (by line).
    QHash<int, int64_t> m_porColocar;
};

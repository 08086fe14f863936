#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <QVector>

// The lines of a report list: text cells only, kept row after row in one
// vector, so a list of a hundred thousand lines loads and sorts without an
// object per line.
//
// Sorting is on the texts as shown, with the lists' rule (base/ReglaListas):
// case and accents don't count, "ñ" comes after "n". Equal
// texts keep the order they had. Once sorted, the model stays sorted: a
// later `asignar` or `anadirFila` puts the lines in their place, the way a
// sorted report list keeps its order when it is filled again.
//
// Usage: build with the column captions, fill with `asignar` (cells row
// after row) or `anadirFila`, read back with `texto`/`fila`. The view
// (Listado) calls `sort` on a header click.
class ModeloListado : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit ModeloListado(QStringList cabeceras, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Replaces every line; `celdas` holds the cells row after row (a short
    // last row is dropped).
    void asignar(QVector<QString> celdas);
    void limpiar();
    void anadirFila(const QStringList& fila);
    void anadirFilas(const QList<QStringList>& filas);
    // Removes the given lines (any order, duplicates allowed). A few runs
    // of lines (a batch that left the outbox) go one run at a time, so the
    // view keeps its place and its selection.
    void quitarFilas(QList<int> filas);
    // Appends lines given as cells row after row (in their places when
    // sorted).
    void anadirCeldas(QVector<QString> celdas);

    // Every line's cells, row after row.
    const QVector<QString>& celdas() const { return m_celdas; }
    // Empties the list, handing its cells over (to be freed over turns).
    QVector<QString> tomarCeldas();
    virtual QString texto(int fila, int columna) const;
    QStringList fila(int fila) const;
    // The column of the last sort, -1 while unsorted.
    int columnaOrden() const { return m_columnaOrden; }
    Qt::SortOrder orden() const { return m_orden; }

  private:
    // Sorts the cells; returns the old line of each new line.
    QVector<int> ordenar();

    QStringList m_cabeceras;
    QVector<QString> m_celdas;
    int m_columnaOrden = -1;
    Qt::SortOrder m_orden = Qt::AscendingOrder;
};

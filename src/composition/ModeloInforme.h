#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <QVector>

// The rows of a report list: text cells, one row per line, sorted on the
// texts as shown. Cells are kept row after row in one vector so that a list
// of a hundred thousand lines loads and sorts without a object per line.
class ModeloInforme : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit ModeloInforme(QStringList cabeceras, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    // Sorts now and keeps later loads and additions sorted the same way.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Replaces every line; `celdas` holds the cells row after row.
    void asignar(QVector<QString> celdas);
    void limpiar();
    void anadirFila(const QStringList& fila);
    void quitarFila(int fila);
    QString texto(int fila, int columna) const;
    QStringList fila(int fila) const;
    // The text of column 0 of every line, in the order shown.
    QStringList textos() const;

    bool ordenado() const { return m_columnaOrden >= 0; }

  private:
    void ordenar();

    QStringList m_cabeceras;
    QVector<QString> m_celdas;
    int m_columnaOrden = -1;
    Qt::SortOrder m_orden = Qt::AscendingOrder;
};

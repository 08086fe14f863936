#pragma once

#include "history/mdoHistorico.h"

#include <QAbstractTableModel>
#include <QWidget>

class QDateEdit;
class QGroupBox;
class QPushButton;
class QRadioButton;
class QTreeView;

// The list model over the history's rows, read a page at a time as the
// list shows them.
class ModeloHistorico : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit ModeloHistorico(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Reads the table anew, newest first; an unreadable table shows empty.
    void cargar();
    void ordenar(int columna, bool descendente);
    QString texto(int fila, int columna) const { return m_historico.texto(fila, columna); }

  private:
    Historico m_historico;
};

// "Mensajes Enviados": what the batch sender delivered, newest first; a
// past message can be queued again and old history deleted.
class frmHEnvios : public QWidget {
    Q_OBJECT
  public:
    explicit frmHEnvios(QWidget* parent = nullptr);

    // Fills the list from the table and sorts it by date, newest first.
    void msCargarHistorico();
    // What a click on the header of column `columna` (from 0) does.
    void ordenarPorColumna(int columna);
    // The column the list is sorted by (Historico::Id for the date) and
    // its direction.
    int columnaOrden() const { return m_columna; }
    bool descendente() const { return m_descendente; }

    void XPButton1_Click();
    void XPButton2_Click();

    QTreeView* ListView1;
    QGroupBox* Frame1;
    QRadioButton* Option1_0;
    QRadioButton* Option1_1;
    QDateEdit* txtfecha;
    QPushButton* XPButton1;
    QPushButton* XPButton2;
    QPushButton* cmdClose;

  private:
    void pintarCabecera();
    int filaElegida() const;

    ModeloHistorico* m_modelo;
    int m_columna = Historico::Id;
    bool m_descendente = true;
};

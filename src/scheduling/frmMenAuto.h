#pragma once

#include "widgets/Ocupacion.h"

#include <QWidget>
#include <cstdint>

class Listado;
class ModeloPaginado;
class QPushButton;
class QTimer;

// "Mensajes Programados": the multi-sends with their number of messages,
// next run and last run; leads to the editor.
class frmMenAuto : public QWidget {
    Q_OBJECT
  public:
    explicit frmMenAuto(QWidget* parent = nullptr);

    // Reads the rows again (their count; the lines in view as they show).
    void requery();

    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();

    Listado* ListView1;
    QPushButton* cmdAdd;
    QPushButton* cmdEdit;
    QPushButton* cmdDelete;
    QPushButton* cmdClose;

  private:
    // The code of the selected line's row (the first of its name), -1 when
    // none is selected.
    int32_t codigoElegido() const;
    // While the next runs are worked out again, the list reads them anew
    // once they all are.
    void seguirRepaso();

    ModeloPaginado* m_modelo;
    QTimer* m_repaso;
    Ocupacion m_ocupacion;

  public:
    // A multi-send is being deleted over turns.
    bool ocupada() const { return m_ocupacion.activa(); }
};

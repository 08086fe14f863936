#pragma once

#include "scheduling/mdoProgramacion.h"

#include <QWidget>

class Listado;
class QPushButton;

// "Mensajes Programados": the multi-sends with their number of messages,
// next run and last run; leads to the editor.
class frmMenAuto : public QWidget {
    Q_OBJECT
  public:
    explicit frmMenAuto(QWidget* parent = nullptr);

    // Reads the rows again and refills the list.
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

    LineasMenAuto m_lineas;
};

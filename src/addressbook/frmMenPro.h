#pragma once

#include "db/BaseDatos.h"

#include <QWidget>

class Listado;
class QPushButton;

// The predefined texts, with add, change and delete.
class frmMenPro : public QWidget {
    Q_OBJECT
  public:
    explicit frmMenPro(QWidget* parent = nullptr);

    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();

    Listado* ListView1;
    QPushButton* cmdAdd;
    QPushButton* cmdEdit;
    QPushButton* cmdDelete;
    QPushButton* cmdClose;

  private:
    void requery();
    void msPintarMensajes();
    // The row of the selected line's text, -1 when none.
    int filaElegida() const;

    ResultadoConsulta adoPrimaryRS;
};

#pragma once

#include "db/BaseDatos.h"

#include <QDialog>

class Listado;
class QPushButton;

// The account picker: the chosen account becomes the compose screen's.
class frmSCanal : public QDialog {
    Q_OBJECT
  public:
    explicit frmSCanal(QWidget* parent = nullptr);

    void cmdAdd_Click();

    Listado* ListView1;
    QPushButton* cmdAdd;

  private:
    ResultadoConsulta m_cuentas;
};

#pragma once

#include "db/BaseDatos.h"

#include <QCoro/QCoroTask>
#include <QWidget>
#include <cstdint>

class Listado;
class QPushButton;

// "Cuentas": the accounts, which one is principal, their balances; add,
// edit, delete, recharge and sign-up start here.
class frmCanales : public QWidget {
    Q_OBJECT
  public:
    explicit frmCanales(QWidget* parent = nullptr);

    // Reads the accounts anew and refills the list.
    void msrefrescar();

    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();
    void cmdPrede_Click();
    QCoro::Task<> cmdGetSaldo_Click();
    void cmdRecarga_Click();
    void cmdRegistro_Click();

    Listado* ListView1;
    QPushButton* cmdAdd;
    QPushButton* cmdEdit;
    QPushButton* cmdDelete;
    QPushButton* cmdPrede;
    QPushButton* cmdGetSaldo;
    QPushButton* cmdRecarga;
    QPushButton* cmdRegistro;
    QPushButton* cmdClose;

  private:
    void msCargarListaCuentas();
    // The row of adoPrimaryRS of the selected line (found by name), -1 when
    // none is selected or no account has that name.
    int filaElegida() const;
    int16_t canalDe(int fila) const;

    ResultadoConsulta adoPrimaryRS;
};

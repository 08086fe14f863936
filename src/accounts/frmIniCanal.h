#pragma once

#include <QCoro/QCoroTask>
#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

// "Configuración": a user who already has an account on the platform gives
// its user name and password and gets the first account of the program.
class frmIniCanal : public QDialog {
    Q_OBJECT
  public:
    explicit frmIniCanal(QWidget* parent = nullptr);

    QLabel* Label1;
    QLineEdit* txtUsuario;
    QLineEdit* txtClave;
    QLineEdit* txtClave2;
    QPushButton* cmdAceptar;
    QPushButton* cmdCancelar;

  private:
    QCoro::Task<> cmdAceptar_Click();
};

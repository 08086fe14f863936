#pragma once

#include <QDialog>

class QCheckBox;
class QGroupBox;
class QLineEdit;
class QPushButton;

// The general options: batch size, sending interval, access password,
// contacts-only sending and the background picture.
class frmOpciones : public QDialog {
    Q_OBJECT
  public:
    explicit frmOpciones(QWidget* parent = nullptr);

    // Checks the boxes, stores them and applies them at once; false (with
    // the screen left open) when a check fails or storing fails.
    bool msGuardarOpciones();

  private:
    QGroupBox* crearEnvio();
    QGroupBox* crearAcceso();
    QGroupBox* crearAspecto();
    void cargar();
    void cmdexaminar_Click();
    void cmdAnadir_Click();

    QLineEdit* txtmaxlote;
    QLineEdit* txttimer;
    QLineEdit* txtpwdcontactos;
    QLineEdit* txtpwdcontactos2;
    QCheckBox* Chkcontactos;
    QLineEdit* txtimgfondo;
    QPushButton* cmdexaminar;
    QPushButton* cmdAnadir;
    QPushButton* CmdSalir;
};

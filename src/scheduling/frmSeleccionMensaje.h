#pragma once

#include <QDialog>

class frmSeleccion;
class QCheckBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

// "Selección de Destinatarios y Mensaje": the recipient picker with a text
// for all the chosen recipients. Accepting tells the text and whether each
// one starts with the contact's name (CambiaMensaje), then leaves the
// chosen aliases in `gsDestinos`; cancelling leaves it empty.
class frmSeleccionMensaje : public QDialog {
    Q_OBJECT
  public:
    explicit frmSeleccionMensaje(QWidget* parent = nullptr);

    QPlainTextEdit* txtMensaje;
    QLabel* lblCaracteres;
    QCheckBox* Check1;
    QPushButton* cmdAdd;

  Q_SIGNALS:
    void CambiaMensaje(const QString& Mensaje, bool Personalizar);

  private:
    void cmdAdd_Click();

    frmSeleccion* m_selector;
};

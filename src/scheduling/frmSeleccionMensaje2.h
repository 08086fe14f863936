#pragma once

#include <QDialog>
#include <cstdint>

class QLabel;
class QPlainTextEdit;
class QPushButton;

// "Modificar mensaje": a new text for one recipient of a multi-send.
class frmSeleccionMensaje2 : public QDialog {
    Q_OBJECT
  public:
    explicit frmSeleccionMensaje2(QWidget* parent = nullptr);

    void setId_AboAuto(long long id) { m_id = id; }
    // Shows the text with its length, the caret at its end.
    void setMensaje(const QString& mensaje);

    QPlainTextEdit* txtMensaje;
    QLabel* lblCaracteres;
    QPushButton* cmdAdd;
    QPushButton* cmdClose;

  Q_SIGNALS:
    void changeMensaje(long long Id_AboAuto, const QString& Mensaje);

  private:
    void cmdAdd_Click();

    long long m_id = 0;
};

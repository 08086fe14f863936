#pragma once

#include <QDialog>

class QLabel;
class QPushButton;
class QTimer;

// The first-run notice: no account is set up, and the user says whether
// they already have one on the platform or want to sign up. It can't be
// closed without an answer.
class frmTipoRegistro : public QDialog {
    Q_OBJECT
  public:
    explicit frmTipoRegistro(QWidget* parent = nullptr);

    // 100: a registered user; 200: wants to sign up; 0 until one is chosen.
    int eleccion() const { return m_eleccion; }
    // Shows the notice modally, then the screen the answer leads to.
    static void ejecutar(QWidget* padre);

    // The notice's colour steps red, blue, green, and from any other to blue.
    static QColor siguienteColor(const QColor& actual);

    QLabel* Label2;
    QLabel* Label1;
    QPushButton* cmdUR;
    QPushButton* cmdURR;
    QTimer* Timer1;

    void done(int r) override;

  protected:
    void closeEvent(QCloseEvent* evento) override;

  private:
    void elegir(int eleccion);
    void Timer1_Timer();

    int m_eleccion = 0;
};

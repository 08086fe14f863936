#pragma once

#include <QCoro/QCoroTask>
#include <QDialog>
#include <cstdint>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// "Publicar Lista Web": the members of one local list go to the platform,
// where they form a web list under a keyword. Modal over the lists.
class frmSubirListaWeb : public QDialog {
    Q_OBJECT
  public:
    explicit frmSubirListaWeb(QWidget* parent = nullptr);

    // Fills the account combo; the principal account is chosen.
    void msCargarCanales();
    // Shows the list's name and member count and keeps its code.
    void msCargarDatos(int16_t grupo);
    QCoro::Task<> cmdPublicar_Click();

    int16_t grupo() const { return m_grupo; }

    QGroupBox* Frame1;
    QLineEdit* Nombre;
    QLineEdit* contactos;
    QLineEdit* ltag;
    QComboBox* ImageCombo1;
    QCheckBox* nborrar;
    QPushButton* cmdPublicar;
    QPushButton* XPButton1;
    QLabel* Label2;
    QLabel* Label7;

  private:
    int16_t m_grupo = -1;
};

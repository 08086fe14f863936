#pragma once

#include "base/Ajustes.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// One screen, two jobs: in database mode the file the program works on is
// chosen, tested (and upgraded) and opened; in import mode the file of an
// import and its list and contact options are chosen, and, for the watch,
// how often the transmitter's cycle runs.
class frmSelectDB : public QDialog {
    Q_OBJECT
  public:
    explicit frmSelectDB(QWidget* parent = nullptr);

    // Set by the caller before the screen comes up.
    bool mbImportacion = false;
    Ajustes::Importacion importacion = Ajustes::Importacion::Mensajes;

    // The seconds that each line of cmbIntervalo stands for.
    static int segundosDeLinea(int linea);

  protected:
    void showEvent(QShowEvent* event) override;
    void reject() override;

  private:
    void construir();
    void activar();
    void Cmblista_Click();
    void cmdexaminar_Click();
    void XPButton1_Click();
    void XPButton2_Click();
    void cerrarCon(bool aceptar);
    void msAceptarBD();
    void msAceptarImportacion(bool aceptar);
    void guardarIntervalo();

    bool m_activada = false;
    int m_lineaCargada = -1;
    bool m_cerrando = false;
    QString m_tituloDialogo;
    QString m_filtroDialogo;
    QFormLayout* m_opciones;

    QGroupBox* Frame1;
    QGroupBox* Frame2;
    QLabel* lblactual;
    QLabel* lblFichero;
    QPushButton* cmdexaminar;
    QPushButton* XPButton1;
    QPushButton* XPButton2;
    QPushButton* cmdAdd;
    QPushButton* cmdClose;
    QCheckBox* Chkcontactos;
    QLabel* lbllista;
    QComboBox* Cmblista;
    QLabel* Label1;
    QLineEdit* lista;
    QLabel* lblIntervalo;
    QComboBox* cmbIntervalo;
};

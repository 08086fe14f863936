#pragma once

#include "accounts/mdoCuentas.h"

#include <QCoro/QCoroTask>
#include <QDialog>
#include <cstdint>

class QButtonGroup;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QToolButton;

// "Mantenimiento de Cuenta": the modal editor of one account. Saving asks
// the platform about the user first; what it answers decides the rest.
class frmNewCanal : public QDialog {
    Q_OBJECT
  public:
    explicit frmNewCanal(QWidget* parent = nullptr);

    // Shows the editor modally for a new account (`edicion` false, code
    // `canal`) or for the stored account `canal`.
    static void editar(bool edicion, int16_t canal, QWidget* padre);

    void setEdicion(bool edicion) { m_edicion = edicion; }
    bool edicion() const { return m_edicion; }
    void setCanal(int16_t canal) { m_canal = canal; }
    int16_t canal() const { return m_canal; }
    // Puts an account's fields into the controls.
    void cargar(const DatosCuenta& d);
    // What the controls hold.
    DatosCuenta datos() const;

    QLineEdit* txtUsuario;
    QLineEdit* txtClave;
    QLineEdit* txtNombre;
    QButtonGroup* Option1;
    QLineEdit* txtRemitente;
    QLabel* txtMovil;
    QLineEdit* txtinicio;
    QLineEdit* txtfinal;
    QCheckBox* importacion;
    QLineEdit* txtMaxMen;
    QLineEdit* txtSMSPort;
    QLineEdit* txtSMSHost;
    QLabel* L1;
    QLabel* L2;
    QPushButton* cmdAceptar;
    QPushButton* CmdSalir;
    QPushButton* XPButton1;

  protected:
    bool eventFilter(QObject* objeto, QEvent* evento) override;

  private:
    void crearCampos();
    void crearRemitente();
    QToolButton* botonInfo(int i, const QString& ayuda = QString());
    void colocar();
    void Option1_Click(int indice);
    void actualizarActivacion();
    void Image4_Click(int indice);
    QCoro::Task<> cmdAceptar_Click();

    bool m_edicion = false;
    int16_t m_canal = 0;
};

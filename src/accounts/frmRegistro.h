#pragma once

#include <QCoro/QCoroTask>
#include <QWizard>

class QCheckBox;
class QLineEdit;
class QPushButton;

// The sign-up of a new user on the platform: personal data, the
// conditions of the service, the user name and password wanted. Accepted,
// the new account is added to the program at once.
class frmRegistro : public QWizard {
    Q_OBJECT
  public:
    explicit frmRegistro(QWidget* parent = nullptr);

    enum Paginas { Datos, Condiciones, Usuario, Fin };

    QLineEdit* txtNombre;
    QLineEdit* txtEmail;
    QLineEdit* txtMovil;
    QPushButton* cmdCondiciones;
    QCheckBox* chkAcepto;
    QLineEdit* txtUsuario;
    QLineEdit* txtClave;
    QLineEdit* txtClave2;

    // The user name that was signed up, empty until then.
    const QString& usuarioRegistrado() const { return m_usuario; }

  private:
    void crearPaginaDatos();
    void crearPaginaCondiciones();
    void crearPaginaUsuario();
    void crearPaginaFin();
    // Posts the sign-up; true when the platform took it and the account
    // was added.
    QCoro::Task<bool> registrar();
    // "Siguiente" on the user page: the sign-up, then the next page when it
    // was taken. The page stays while the platform answers.
    QCoro::Task<> registrarYSeguir();

    bool m_registrando = false;
    bool m_registrado = false;
    QString m_usuario;
    QString m_saldo;
};

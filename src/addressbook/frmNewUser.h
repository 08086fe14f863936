#pragma once

#include <QDialog>
#include <QVector>
#include <cstdint>

class QComboBox;
class QLineEdit;
class QListView;
class QPushButton;
class QStringListModel;

// The editor of one contact with its account and its lists. Edit mode is
// nothing but the number field being disabled.
class frmNewUser : public QDialog {
    Q_OBJECT
  public:
    explicit frmNewUser(QWidget* parent = nullptr);

    // Fills the lists and the accounts; false when there is no account.
    bool msLoad();
    // Saves what the fields hold; true when it was stored, else the user
    // has been told why.
    bool mbGuardarContacto();
    // Puts the screen in edit mode for an existing contact (before msLoad).
    void prepararEdicion(const QString& codigo, int16_t canal, const QString& alias,
                         const QString& comentario);

    int16_t miCanalContacto = 0;  // the account to preselect

    QLineEdit* txtAbonado;
    QLineEdit* txtAlias;
    QLineEdit* txtComentario;
    QComboBox* cmbCanales;
    QListView* lstGrupos;
    QPushButton* cmdAnadir;
    QPushButton* CmdSalir;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void msCargarListas();
    bool mbCargarCuentas();

    QStringListModel* m_listas;
    QVector<int16_t> m_canales;  // one account code per entry of cmbCanales
};

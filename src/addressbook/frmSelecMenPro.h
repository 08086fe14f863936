#pragma once

#include <QDialog>

class QListView;
class QPushButton;
class QStringListModel;

// The modal picker of predefined texts: the chosen text replaces the whole
// compose text.
class frmSelecMenPro : public QDialog {
    Q_OBJECT
  public:
    explicit frmSelecMenPro(QWidget* parent = nullptr);

    void cmdAdd_Click();

    QListView* lstMensajes;
    QPushButton* cmdAdd;
    QPushButton* cmdClose;

  protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QStringListModel* m_textos;
};

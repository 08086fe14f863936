#pragma once

#include <QDialog>

class QLineEdit;

// The prompt of the access gate.
class frmpwd : public QDialog {
    Q_OBJECT
  public:
    explicit frmpwd(QWidget* parent = nullptr);

  private:
    QLineEdit* Text1;
};

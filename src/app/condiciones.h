#pragma once

#include <QDialog>

// The conditions of use of a sender: what each sender choice means for the
// recipients, and how a personal sender is requested.
class condiciones : public QDialog {
    Q_OBJECT
  public:
    explicit condiciones(QWidget* parent = nullptr);
};

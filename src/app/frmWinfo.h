#pragma once

#include <QDialog>

// "Acerca de": the program, its version and the way to the maker.
class frmWinfo : public QDialog {
    Q_OBJECT
  public:
    explicit frmWinfo(QWidget* parent = nullptr);
};

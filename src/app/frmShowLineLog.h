#pragma once

#include <QDialog>

class QPlainTextEdit;

// One log line in full, for lines longer than the panel is wide.
class frmShowLineLog : public QDialog {
    Q_OBJECT
  public:
    explicit frmShowLineLog(QWidget* parent = nullptr);
    void mostrar(const QString& linea);
    QPlainTextEdit* txtLog() const { return m_txtLog; }

  private:
    QPlainTextEdit* m_txtLog;
};

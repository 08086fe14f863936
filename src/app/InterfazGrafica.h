#pragma once

#include "base/InterfazUsuario.h"

#include <QUrl>
#include <functional>

class QWidget;

// The user interface of the desktop: message boxes, input boxes, the file
// dialog, the password prompt and the desktop's browser.
class InterfazGrafica : public InterfazUsuario {
  public:
    explicit InterfazGrafica(QWidget* owner = nullptr) : m_owner(owner) {}
    void setOwner(QWidget* owner) { m_owner = owner; }

    int msgBox(const QString& text, int style, const QString& title) override;
    void preguntar(const QString& text, int style, const QString& title,
                   std::function<void(int)> alResponder) override;
    QString askPassword() override;
    QString inputBox(const QString& prompt, const QString& title,
                     const QString& defaultText) override;
    QString openFileName(const QString& caption, const QString& dir,
                         const QString& filter) override;
    void openUrl(const QString& target) override;
    [[noreturn]] void terminateWithoutDatabase() override;
    void altaCuenta() override;
    void completarCuentaPrincipal() override;

    // Hands an address to the desktop; false when no program took it. A
    // test stands in for the desktop here.
    std::function<bool(const QUrl&)> abridor;

  protected:
    void abrirSeleccionBaseDatos(const QString& motivo) override;

  private:
    QWidget* m_owner;
};

#pragma once

#include "base/InterfazUsuario.h"

// Without a window: every question takes its default answer, and where a
// dialog would be shown a clear line goes to standard error instead.
class InterfazSinVentana : public InterfazUsuario {
  public:
    int msgBox(const QString& text, int style, const QString& title) override;
    QString askPassword() override;
    void openUrl(const QString& target) override;
    [[noreturn]] void terminateWithoutDatabase() override;
};

// The exit code of headless mode when no usable database is there.
inline constexpr int kSalidaSinBaseDatos = 3;

// A line on standard error where a window would have shown something.
void avisoSinVentana(const QString& texto);

#pragma once

#include <QString>
#include <functional>

// Styles and answers of the message boxes, with the numbers the rules use.
namespace Msg {
inline constexpr int OkOnly = 0;
inline constexpr int YesNoCancel = 3;
inline constexpr int YesNo = 4;
inline constexpr int Critical = 16;
inline constexpr int Exclamation = 48;
inline constexpr int Information = 64;
inline constexpr int DefaultButton2 = 256;
inline constexpr int DefaultButton3 = 512;

inline constexpr int Ok = 1;
inline constexpr int Cancel = 2;
inline constexpr int Yes = 6;
inline constexpr int No = 7;

// The answer that pressing Enter on a box of this style gives.
int defaultAnswer(int style);
}  // namespace Msg

// Where the core must ask or tell the user, it goes through this interface:
// the GUI implements it with dialogs, tests with scripted answers, headless
// mode with default answers.
class InterfazUsuario {
  public:
    virtual ~InterfazUsuario() = default;

    // A message box; an empty title means the application's title.
    virtual int msgBox(const QString& text, int style = Msg::OkOnly,
                       const QString& title = QString()) = 0;
    // A box shown without waiting for it: what a run or an exchange says
    // while it goes on (an unanswered box in a hidden window holds nothing).
    // `alResponder`, when given, gets the answer whenever it comes.
    virtual void preguntar(const QString& text, int style, const QString& title,
                           std::function<void(int)> alResponder) {
        const int respuesta = msgBox(text, style, title);
        if (alResponder) alResponder(respuesta);
    }
    void aviso(const QString& text, int style = Msg::OkOnly, const QString& title = QString()) {
        preguntar(text, style, title, {});
    }
    // The password prompt, shown modally; returns what the user typed.
    virtual QString askPassword() = 0;
    // An input box: what was typed, or a null string when cancelled.
    virtual QString inputBox(const QString& prompt, const QString& title = QString(),
                             const QString& defaultText = QString()) {
        (void)prompt, (void)title, (void)defaultText;
        return QString();
    }
    // The file dialog that picks an existing file; empty when cancelled.
    virtual QString openFileName(const QString& caption, const QString& dir,
                                 const QString& filter) {
        (void)caption, (void)dir, (void)filter;
        return QString();
    }
    // Hands an address or a document to the desktop.
    virtual void openUrl(const QString& target) = 0;

    // The screens the core needs and can't go on without. The window opens
    // them modally and they have done their work on return; without a
    // window a line on standard error says what could not be shown.
    //
    // The database selection. `aviso`, when given, is said in a critical
    // box first; `motivo` (the file and why it is not usable) is what a
    // run without windows can tell instead.
    void seleccionarBaseDatos(const QString& motivo, const QString& aviso = QString());
    // The first-run account set-up.
    virtual void altaCuenta();
    // The principal account's editor, to complete its user and password.
    virtual void completarCuentaPrincipal() {}
    // At start the saved database is held by another program: true to try
    // again, false to give up (a Yes/No question, Yes by default).
    virtual bool reintentarBaseOcupada(const QString& ruta);
    // The process can't go on without a usable database.
    [[noreturn]] virtual void terminateWithoutDatabase() = 0;

  protected:
    // The selection screen itself, after the box.
    virtual void abrirSeleccionBaseDatos(const QString& motivo);
};

// Hands an address or a document to the desktop; an empty one is ignored.
void msAbrirUrl(const QString& target);

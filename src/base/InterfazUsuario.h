#pragma once

#include <QString>

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
    // Two screens the core needs: the database selection in database mode
    // and the first-run account set-up, shown modally. They open the screen
    // registered as "frmSelectDB" or "frmTipoRegistro"; with none registered
    // (headless) a line on standard error says what could not be shown.
    // Virtual only so that a test can stand in for the screens.
    virtual void showSelectDatabase();
    virtual void showFirstRunSetup();
    // Hands an address or a document to the desktop.
    virtual void openUrl(const QString& target) = 0;
    // The process can't go on without a usable database.
    [[noreturn]] virtual void terminateWithoutDatabase() = 0;
    // One turn of the event loop.
    virtual void processEvents();
};

// Hands an address or a document to the desktop; an empty one is ignored.
void msAbrirUrl(const QString& target);

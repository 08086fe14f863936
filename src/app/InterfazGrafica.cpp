#include "app/InterfazGrafica.h"

#include "app/frmpwd.h"
#include "base/EstadoAplicacion.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <cstdlib>

using namespace Qt::StringLiterals;

int InterfazGrafica::msgBox(const QString& text, int style, const QString& title) {
    QMessageBox box(m_owner);
    box.setWindowTitle(title.isEmpty() ? tituloAplicacion() : title);
    box.setText(text);
    const int icono = style & 0x70;
    box.setIcon(icono == Msg::Critical      ? QMessageBox::Critical
                : icono == Msg::Exclamation ? QMessageBox::Warning
                : icono == Msg::Information ? QMessageBox::Information
                                            : QMessageBox::NoIcon);
    QList<QPair<QAbstractButton*, int>> botones;
    auto anadir = [&](QMessageBox::StandardButton b, int answer) {
        botones.append({box.addButton(b), answer});
    };
    switch (style & 7) {
        case Msg::YesNoCancel:
            anadir(QMessageBox::Yes, Msg::Yes);
            anadir(QMessageBox::No, Msg::No);
            anadir(QMessageBox::Cancel, Msg::Cancel);
            break;
        case Msg::YesNo:
            anadir(QMessageBox::Yes, Msg::Yes);
            anadir(QMessageBox::No, Msg::No);
            break;
        case 1:
            anadir(QMessageBox::Ok, Msg::Ok);
            anadir(QMessageBox::Cancel, Msg::Cancel);
            break;
        default:
            anadir(QMessageBox::Ok, Msg::Ok);
    }
    const int porDefecto = Msg::defaultAnswer(style);
    for (const auto& [boton, answer] : botones)
        if (answer == porDefecto) box.setDefaultButton(qobject_cast<QPushButton*>(boton));
    box.exec();
    for (const auto& [boton, answer] : botones)
        if (box.clickedButton() == boton) return answer;
    return (style & 7) == Msg::OkOnly ? Msg::Ok : Msg::Cancel;
}

QString InterfazGrafica::askPassword() {
    frmpwd prompt(m_owner && m_owner->isVisible() ? m_owner : nullptr);
    prompt.exec();
    return estadoAplicacion().gsClaveIntroducida;
}

QString InterfazGrafica::inputBox(const QString& prompt, const QString& title,
                                  const QString& defaultText) {
    bool ok = false;
    const QString t = QInputDialog::getText(m_owner, title.isEmpty() ? tituloAplicacion() : title,
                                            prompt, QLineEdit::Normal, defaultText, &ok);
    return ok ? t : QString();
}

QString InterfazGrafica::openFileName(const QString& caption, const QString& dir,
                                      const QString& filter) {
    return QFileDialog::getOpenFileName(m_owner, caption, dir, filter);
}

void InterfazGrafica::openUrl(const QString& target) {
    const QUrl url =
        QFileInfo::exists(target) ? QUrl::fromLocalFile(target) : QUrl::fromUserInput(target);
    QDesktopServices::openUrl(url);
}

void InterfazGrafica::terminateWithoutDatabase() {
    std::_Exit(0);
}

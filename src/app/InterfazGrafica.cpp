#include "app/InterfazGrafica.h"

#include "app/frmpwd.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QPushButton>
#include <QRegularExpression>
#include <QUrl>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

// Tells what the file dialog lists by the file's name alone. Qt's own
// provider reads a file's first bytes to find its type and icon, and a
// descriptor of the open database closed inside this process drops every
// lock the engine holds on it: another program then takes the database's
// log away from under the window.
class IconosSinLeer : public QFileIconProvider {
  public:
    QIcon icon(IconType tipo) const override { return QFileIconProvider::icon(tipo); }
    QIcon icon(const QFileInfo& info) const override {
        return QFileIconProvider::icon(info.isDir() ? Folder : File);
    }
    QString type(const QFileInfo& info) const override {
        return QMimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchExtension).comment();
    }
};

}  // namespace

namespace {

using Botones = QList<QPair<QAbstractButton*, int>>;

// A box of the style's icon and buttons, its default button set.
Botones prepararCaja(QMessageBox& box, const QString& text, int style, const QString& title) {
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
    return botones;
}

int respuestaDe(const QMessageBox& box, const Botones& botones, int style) {
    for (const auto& [boton, answer] : botones)
        if (box.clickedButton() == boton) return answer;
    return (style & 7) == Msg::OkOnly ? Msg::Ok : Msg::Cancel;
}

}  // namespace

int InterfazGrafica::msgBox(const QString& text, int style, const QString& title) {
    QMessageBox box(m_owner);
    const Botones botones = prepararCaja(box, text, style, title);
    box.exec();
    return respuestaDe(box, botones, style);
}

void InterfazGrafica::preguntar(const QString& text, int style, const QString& title,
                                std::function<void(int)> alResponder) {
    auto* box = new QMessageBox(m_owner);
    box->setAttribute(Qt::WA_DeleteOnClose);
    const Botones botones = prepararCaja(*box, text, style, title);
    QObject::connect(box, &QMessageBox::finished, box,
                     [box, botones, style, alResponder = std::move(alResponder)] {
                         if (alResponder) alResponder(respuestaDe(*box, botones, style));
                     });
    box->open();
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
    // The dialog shows a filter up to its last brackets and filters by what
    // stands in them, so a filter may show patterns of its own:
    // "Imágenes (*.jpg;*.bmp) (*.jpg *.bmp)". A plain one shows its patterns.
    static const QRegularExpression patrones(uR"(\(([^()]*)\)\s*$)"_s);
    static const QRegularExpression dobles(uR"(\([^()]*\)\s*\([^()]*\)\s*$)"_s);
    QStringList filtros = filter.split(u";;"_s, Qt::SkipEmptyParts);
    for (QString& f : filtros) {
        if (dobles.match(f).hasMatch()) continue;
        const QRegularExpressionMatch m = patrones.match(f);
        f += u" ("_s + (m.hasMatch() ? m.captured(1) : f) + u')';
    }
    // Qt's own dialog, never the desktop's: only there is what reads the
    // files in this process ours to choose.
    QFileDialog dialogo(m_owner, caption, dir);
    IconosSinLeer iconos;
    dialogo.setOptions(QFileDialog::HideNameFilterDetails | QFileDialog::DontUseNativeDialog |
                       QFileDialog::DontUseCustomDirectoryIcons);
    dialogo.setIconProvider(&iconos);
    dialogo.setFileMode(QFileDialog::ExistingFile);
    dialogo.setNameFilters(filtros);
    if (dialogo.exec() != QDialog::Accepted || dialogo.selectedFiles().isEmpty()) return QString();
    return dialogo.selectedFiles().constFirst();
}

void InterfazGrafica::openUrl(const QString& target) {
    const QUrl url =
        QFileInfo::exists(target) ? QUrl::fromLocalFile(target) : QUrl::fromUserInput(target);
    if (abridor ? abridor(url) : QDesktopServices::openUrl(url)) return;
    // With no browser or mail program the desktop opens nothing and says so
    // only on standard error: the user gets the address to open by hand.
    const QString direccion = url.isLocalFile()             ? url.toLocalFile()
                              : url.scheme() == u"mailto"_s ? url.path()
                                                            : url.toString();
    // Nothing waits for it to close.
    auto* box = new QMessageBox(m_owner);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(u"cajaSinNavegador"_s);
    box->setWindowTitle(tituloAplicacion());
    box->setIcon(QMessageBox::Warning);
    box->setText(u"No se ha encontrado ningún programa para abrir esta dirección:\n\n"_s +
                 direccion + u"\n\nPuede copiarla y abrirla con el programa que prefiera."_s);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->open();
}

void InterfazGrafica::terminateWithoutDatabase() {
    std::_Exit(0);
}

// The screens are registered by name once the frame is built; before that
// (or with none built) the line of a run without windows stands in.
void InterfazGrafica::abrirSeleccionBaseDatos(const QString& motivo) {
    if (!Pantallas::abrir(u"frmSelectDB"_s)) InterfazUsuario::abrirSeleccionBaseDatos(motivo);
}

void InterfazGrafica::altaCuenta() {
    if (!Pantallas::abrir(u"frmTipoRegistro"_s)) InterfazUsuario::altaCuenta();
}

void InterfazGrafica::completarCuentaPrincipal() {
    Pantallas::abrir(u"frmNewCanal.Principal"_s);
}

#include "base/HeadlessInterface.h"

#include "base/AppState.h"
#include "base/Settings.h"

#include <QTextStream>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {
void aviso(const QString& text) {
    QTextStream err(stderr);
    err << text << Qt::endl;
}
QString enUnaLinea(QString text) {
    text.replace(u"\r\n"_s, u" "_s).replace(u'\n', u' ').replace(u'\r', u' ');
    return text.simplified();
}
}  // namespace

int HeadlessInterface::msgBox(const QString& text, int style, const QString& title) {
    const int answer = Msg::defaultAnswer(style);
    const QString respuesta = answer == Msg::Yes      ? u"Sí"_s
                              : answer == Msg::No     ? u"No"_s
                              : answer == Msg::Cancel ? u"Cancelar"_s
                                                      : u"Aceptar"_s;
    aviso(u"[mensaje] "_s + (title.isEmpty() ? tituloAplicacion() : title) + u": " +
          enUnaLinea(text) + u" -> " + respuesta);
    return answer;
}

QString HeadlessInterface::askPassword() {
    aviso(u"[pantalla] Se pediría la contraseña de acceso; sin ventana no se introduce ninguna."_s);
    return QString();
}

void HeadlessInterface::showSelectDatabase() {
    aviso(u"[pantalla] No hay una base de datos utilizable (BD/Path: \""_s +
          Settings::getSetting(u"BD"_s, u"Path"_s) +
          u"\"). Sin ventana no se puede mostrar la selección de base de datos."_s);
}

void HeadlessInterface::showFirstRunSetup() {
    aviso(
        u"[pantalla] No hay una cuenta principal utilizable; sin ventana no se puede "
        u"configurar una cuenta."_s);
}

void HeadlessInterface::openUrl(const QString& target) {
    aviso(u"[pantalla] Se abriría: "_s + target);
}

void HeadlessInterface::terminateWithoutDatabase() {
    aviso(u"Sin base de datos utilizable, no se puede continuar."_s);
    std::fflush(stdout);
    std::exit(kSalidaSinBaseDatos);
}

#include "base/InterfazSinVentana.h"

#include "base/EstadoAplicacion.h"

#include <QTextStream>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

void avisoSinVentana(const QString& texto) {
    QTextStream err(stderr);
    err << texto << Qt::endl;
}

namespace {
QString enUnaLinea(QString text) {
    text.replace(u"\r\n"_s, u" "_s).replace(u'\n', u' ').replace(u'\r', u' ');
    return text.simplified();
}
}  // namespace

int InterfazSinVentana::msgBox(const QString& text, int style, const QString& title) {
    const int answer = Msg::defaultAnswer(style);
    const QString respuesta = answer == Msg::Yes      ? u"Sí"_s
                              : answer == Msg::No     ? u"No"_s
                              : answer == Msg::Cancel ? u"Cancelar"_s
                                                      : u"Aceptar"_s;
    avisoSinVentana(u"[mensaje] "_s + (title.isEmpty() ? tituloAplicacion() : title) + u": " +
                    enUnaLinea(text) + u" -> " + respuesta);
    return answer;
}

QString InterfazSinVentana::askPassword() {
    avisoSinVentana(
        u"[pantalla] Se pediría la contraseña de acceso; sin ventana no se introduce ninguna."_s);
    return QString();
}

void InterfazSinVentana::openUrl(const QString& target) {
    avisoSinVentana(u"[pantalla] Se abriría: "_s + target);
}

void InterfazSinVentana::terminateWithoutDatabase() {
    avisoSinVentana(u"Sin base de datos utilizable, no se puede continuar."_s);
    std::fflush(stdout);
    std::exit(kSalidaSinBaseDatos);
}

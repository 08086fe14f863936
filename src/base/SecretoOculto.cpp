#include "base/SecretoOculto.h"

#include <QRegularExpression>
#include <QStringList>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

std::vector<QRegularExpression>& secretos() {
    static std::vector<QRegularExpression> s;
    return s;
}

// One character of a secret as it may travel: itself, an XML reference
// (named or numeric, whose "&" may itself be escaped again), all of it
// percent-encoded or not. `amp`, `fin` and `almohadilla` are "&", ";" and
// "#" in the form at hand.
QString formasCaracter(char32_t c, bool porcentaje) {
    const QString amp = porcentaje ? u"%26"_s : u"&"_s;
    const QString fin = porcentaje ? u"%3[Bb]"_s : u";"_s;
    const QString almohadilla = porcentaje ? u"%23"_s : u"#"_s;
    const QString escape = amp + u"(?:amp"_s + fin + u")*";
    QStringList formas;
    const QString propio = QString::fromUcs4(&c, 1);
    if (!porcentaje) {
        formas << QRegularExpression::escape(propio);
    } else {
        QString bytes;
        for (const char b : propio.toUtf8())
            bytes += u"%(?i:%1)"_s.arg(uint(uchar(b)), 2, 16, QChar(u'0'));
        formas << bytes;
        if (c == U' ') formas << u"\\+"_s;
    }
    formas << escape + almohadilla + u"(?:0*"_s + QString::number(uint(c)) + u"|[xX]0*(?i:"_s +
                  QString::number(uint(c), 16) + u"))" + fin;
    const std::pair<char32_t, const char16_t*> nombres[] = {
        {U'&', u"amp"}, {U'<', u"lt"}, {U'>', u"gt"}, {U'"', u"quot"}, {U'\'', u"apos"}};
    for (const auto& [caracter, nombre] : nombres)
        if (c == caracter) formas << escape + QString::fromUtf16(nombre) + fin;
    return u"(?:"_s + formas.join(u'|') + u')';
}

}  // namespace

QString ocultarSecretos(const QString& texto) {
    if (secretos().empty()) return texto;
    QString t = texto;
    for (const QRegularExpression& re : secretos()) t.replace(re, u"****"_s);
    return t;
}

SecretoOculto::SecretoOculto(const QString& secreto) {
    if (secreto.isEmpty()) return;
    QString patron;
    for (const char32_t c : secreto.toUcs4())
        patron += u"(?:"_s + formasCaracter(c, false) + u'|' + formasCaracter(c, true) + u')';
    secretos().emplace_back(patron);
    m_activo = true;
}

SecretoOculto::~SecretoOculto() {
    if (m_activo) secretos().pop_back();
}

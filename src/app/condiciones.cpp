#include "app/condiciones.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

condiciones::condiciones(QWidget* parent) : QDialog(parent) {
    setObjectName(u"condiciones"_s);
    setWindowTitle(u"Condiciones de uso de Remitente"_s);

    auto* titulo = new QLabel(u"Uso de Remitente Personalizado"_s, this);
    titulo->setObjectName(u"lblTitulo"_s);
    QFont f = titulo->font();
    f.setPointSizeF(f.pointSizeF() * 1.3);
    f.setBold(true);
    titulo->setFont(f);

    auto parrafo = [this](const QString& nombre, const QString& html) {
        auto* l = new QLabel(html, this);
        l->setObjectName(nombre);
        l->setWordWrap(true);
        l->setTextFormat(Qt::RichText);
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
        return l;
    };
    auto* predeterminado = parrafo(
        u"lblPredeterminado"_s,
        u"<b>Predeterminado de Quelmo Mensajes:</b> sus mensajes llegan con el remitente que la "
        u"plataforma asigna a todos sus usuarios. No tiene que hacer nada para usarlo."_s);
    auto* movil = parrafo(
        u"lblMovil"_s,
        u"<b>Mi número de móvil registrado:</b> sus mensajes llegan con el número de móvil que "
        u"tiene registrado en su cuenta, de modo que los destinatarios pueden responderle "
        u"directamente."_s);
    auto* personalizado = parrafo(
        u"lblPersonalizado"_s,
        u"<b>Personalizado:</b> sus mensajes llegan con el texto que usted elija, por ejemplo el "
        u"nombre de su empresa. Para solicitarlo envíe un SMS con el texto<br>"
        u"<pre>REMITENTE   Usuario   Texto_Remitente</pre>"
        u"al 5303 con el nombre de remitente que desea utilizar. Sustituya Usuario por su nombre "
        u"de usuario, y Texto_Remitente por el texto que quiera."_s);
    auto* longitud = parrafo(u"lblLongitud"_s, u"* Longitud máxima del remitente 11 caracteres."_s);

    auto* botones = new QDialogButtonBox(this);
    QPushButton* cerrar = botones->addButton(u"Cerrar"_s, QDialogButtonBox::RejectRole);
    cerrar->setObjectName(u"cmdCerrar"_s);
    cerrar->setDefault(true);
    connect(botones, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* todo = new QVBoxLayout(this);
    todo->addWidget(titulo);
    todo->addSpacing(6);
    todo->addWidget(predeterminado);
    todo->addWidget(movil);
    todo->addWidget(personalizado);
    todo->addWidget(longitud);
    todo->addSpacing(6);
    todo->addWidget(botones);
    setFixedWidth(520);
}

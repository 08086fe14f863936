#include "app/frmWinfo.h"

#include "base/Despliegue.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "widgets/Iconos.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmWinfo::frmWinfo(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmWinfo"_s);
    setWindowTitle(u"Acerca de Quelmo Mensajes SMS"_s);

    auto* icono = new QLabel(this);
    icono->setPixmap(iconoQuelmo(u"aplicacion"_s).pixmap(64, 64));
    icono->setAlignment(Qt::AlignTop);

    auto* titulo = new QLabel(u"Quelmo Mensajes SMS"_s, this);
    titulo->setObjectName(u"lblTitulo"_s);
    QFont f = titulo->font();
    f.setPointSizeF(f.pointSizeF() * 1.6);
    f.setBold(true);
    titulo->setFont(f);

    auto* version = new QLabel(
        u"Versión %1.%2.%3"_s.arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision), this);
    version->setObjectName(u"lblVersion"_s);

    auto* texto = new QLabel(
        u"Envío de mensajes SMS a sus contactos y listas a través de la plataforma web de "
        u"mensajería: mensajes al momento, programados o importados desde ficheros de texto, "
        u"con el histórico de todo lo enviado."_s,
        this);
    texto->setWordWrap(true);

    auto* web =
        new QLabel(u"<a href=\"%1\">%2</a>"_s.arg(Despliegue::web(), Despliegue::web()), this);
    web->setObjectName(u"lblWeb"_s);
    web->setTextInteractionFlags(Qt::TextBrowserInteraction);
    connect(web, &QLabel::linkActivated, this, [](const QString& url) { msAbrirUrl(url); });

    auto* textos = new QVBoxLayout;
    textos->addWidget(titulo);
    textos->addWidget(version);
    textos->addSpacing(8);
    textos->addWidget(texto);
    textos->addWidget(web);
    textos->addStretch();

    auto* arriba = new QHBoxLayout;
    arriba->addWidget(icono);
    arriba->addSpacing(12);
    arriba->addLayout(textos, 1);

    auto* botones = new QDialogButtonBox(this);
    QPushButton* contacta = botones->addButton(u"C&ontacta"_s, QDialogButtonBox::ActionRole);
    contacta->setObjectName(u"cmdContacta"_s);
    QPushButton* cerrar = botones->addButton(u"&Cerrar"_s, QDialogButtonBox::RejectRole);
    cerrar->setObjectName(u"cmdCerrar"_s);
    cerrar->setDefault(true);
    connect(contacta, &QPushButton::clicked, this,
            [] { msAbrirUrl(Despliegue::web() + u"/paginas_de_programas/contactqm.php"_s); });
    connect(botones, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* todo = new QVBoxLayout(this);
    todo->addLayout(arriba);
    todo->addSpacing(12);
    todo->addWidget(botones);
    setFixedWidth(480);
}

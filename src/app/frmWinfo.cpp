#include "app/frmWinfo.h"

#include "base/Despliegue.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "widgets/Montaje.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmWinfo::frmWinfo(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmWinfo"_s);
    setWindowTitle(u"Acerca de Quelmo Mensajes SMS"_s);

    QLabel* icono = imagen(this, u"aplicacion"_s, 64);

    auto* titulo = control<QLabel>(this, u"lblTitulo"_s, u"Quelmo Mensajes SMS"_s);
    QFont f = titulo->font();
    f.setPointSizeF(f.pointSizeF() * 1.6);
    f.setBold(true);
    titulo->setFont(f);

    auto* version = control<QLabel>(
        this, u"lblVersion"_s,
        u"Versión %1.%2.%3"_s.arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision));

    auto* texto = new QLabel(
        u"Envío de mensajes SMS a sus contactos y listas a través de la plataforma web de "
        u"mensajería: mensajes al momento, programados o importados desde ficheros de texto, "
        u"con el histórico de todo lo enviado."_s,
        this);
    texto->setWordWrap(true);

    auto* web = control<QLabel>(
        this, u"lblWeb"_s, u"<a href=\"%1\">%2</a>"_s.arg(Despliegue::web(), Despliegue::web()));
    web->setTextInteractionFlags(Qt::TextBrowserInteraction);
    connect(web, &QLabel::linkActivated, this, [](const QString& url) { msAbrirUrl(url); });

    QVBoxLayout* textos = columna({titulo, version});
    textos->addSpacing(8);
    anadirPiezas(textos, {texto, web, nullptr});

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

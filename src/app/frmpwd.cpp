#include "app/frmpwd.h"

#include "base/EstadoAplicacion.h"
#include "widgets/Montaje.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmpwd::frmpwd(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmpwd"_s);
    setWindowTitle(u"Quelmo Mensajes SMS - Acceso Restringido"_s);

    QLabel* candado = imagen(this, u"aplicacion"_s, 48);
    auto* texto = new QLabel(u"Introduzca la contraseña de acceso a Quelmo Mensajes SMS:"_s, this);
    texto->setWordWrap(true);
    Text1 = campoClave(this, u"Text1"_s);
    texto->setBuddy(Text1);

    auto* botones = new QDialogButtonBox(this);
    QPushButton* aceptar = botones->addButton(u"&Aceptar"_s, QDialogButtonBox::AcceptRole);
    aceptar->setObjectName(u"cmdAñadir"_s);
    QPushButton* salir = botones->addButton(u"&Cancelar"_s, QDialogButtonBox::RejectRole);
    salir->setObjectName(u"CmdSalir"_s);
    salir->setAutoDefault(false);
    // Enter in the box is the same as Aceptar: the default button takes it.
    aceptar->setDefault(true);
    connect(aceptar, &QPushButton::clicked, this, [this] {
        estadoAplicacion().gsClaveIntroducida = Text1->text();
        accept();
    });
    connect(salir, &QPushButton::clicked, this, [this] {
        estadoAplicacion().gsClaveIntroducida.clear();
        reject();
    });

    auto* derecha = new QVBoxLayout;
    derecha->addWidget(texto);
    derecha->addWidget(Text1);
    auto* arriba = new QHBoxLayout;
    arriba->addWidget(candado);
    arriba->addLayout(derecha, 1);
    auto* todo = new QVBoxLayout(this);
    todo->addLayout(arriba);
    todo->addWidget(botones);
    setMinimumWidth(380);
}

#include "scheduling/frmSeleccionMensaje2.h"

#include "base/EstadoAplicacion.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Boton.h"
#include "widgets/Iconos.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSeleccionMensaje2::frmSeleccionMensaje2(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmSeleccionMensaje2"_s);
    setWindowTitle(u"Modificar mensaje"_s);
    setWindowIcon(iconoQuelmo(u"programar"_s));
    setModal(true);
    txtMensaje = new QPlainTextEdit(this);
    txtMensaje->setObjectName(u"txtMensaje"_s);
    txtMensaje->setTabChangesFocus(true);
    lblCaracteres = new QLabel(this);
    lblCaracteres->setObjectName(u"lblCaracteres"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Modificar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);

    auto* arriba = new QHBoxLayout;
    arriba->addWidget(new QLabel(u"Mensaje"_s, this));
    arriba->addStretch(1);
    arriba->addWidget(lblCaracteres);
    auto* botones = new QHBoxLayout;
    botones->addStretch(1);
    botones->addWidget(cmdAdd);
    botones->addWidget(cmdClose);
    auto* v = new QVBoxLayout(this);
    v->addLayout(arriba);
    v->addWidget(txtMensaje, 1);
    v->addLayout(botones);
    resize(460, 220);

    txtMensaje->setAccessibleName(u"Mensaje"_s);
    connect(txtMensaje, &QPlainTextEdit::textChanged, this, [this] {
        const QString n = QString::number(txtMensaje->toPlainText().size());
        lblCaracteres->setText(u"("_s + n + u")"_s);
        lblCaracteres->setAccessibleName(n + u" caracteres"_s);
    });
    connect(cmdAdd, &QPushButton::clicked, this, &frmSeleccionMensaje2::cmdAdd_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::reject);
}

void frmSeleccionMensaje2::setMensaje(const QString& mensaje) {
    txtMensaje->setPlainText(mensaje);
    txtMensaje->moveCursor(QTextCursor::End);
}

void frmSeleccionMensaje2::cmdAdd_Click() {
    const QString texto = recortarBlancos(txtMensaje->toPlainText());
    if (texto.isEmpty()) {
        ui().msgBox(u"Escriba un mensaje."_s, Msg::Exclamation);
        return;
    }
    Q_EMIT changeMensaje(m_id, texto);
    accept();
}

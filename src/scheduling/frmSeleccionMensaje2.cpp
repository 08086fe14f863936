#include "scheduling/frmSeleccionMensaje2.h"

#include "base/EstadoAplicacion.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Boton.h"
#include "widgets/Montaje.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSeleccionMensaje2::frmSeleccionMensaje2(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmSeleccionMensaje2"_s, u"Modificar mensaje"_s, u"programar"_s);
    setModal(true);
    txtMensaje = control<QPlainTextEdit>(this, u"txtMensaje"_s);
    txtMensaje->setTabChangesFocus(true);
    lblCaracteres = control<QLabel>(this, u"lblCaracteres"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Modificar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);

    auto* v = new QVBoxLayout(this);
    v->addLayout(fila({etiqueta(this, u"Mensaje"_s), nullptr, lblCaracteres}));
    v->addWidget(txtMensaje, 1);
    v->addLayout(fila({nullptr, cmdAdd, cmdClose}));
    resize(460, 220);

    txtMensaje->setAccessibleName(u"Mensaje"_s);
    contarCaracteres(txtMensaje, lblCaracteres);
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

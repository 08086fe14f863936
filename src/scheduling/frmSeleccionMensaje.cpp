#include "scheduling/frmSeleccionMensaje.h"

#include "base/EstadoAplicacion.h"
#include "composition/frmSeleccion.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Iconos.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSeleccionMensaje::frmSeleccionMensaje(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmSeleccionMensaje"_s);
    setWindowTitle(u"Selección de Destinatarios y Mensaje"_s);
    setWindowIcon(iconoQuelmo(u"contactos"_s));
    setModal(true);

    // The recipient picker itself, inside this screen: its lists, moves and
    // search stay its own; only what accepting does is this screen's.
    m_selector = new frmSeleccion(this);
    m_selector->setWindowFlags(Qt::Widget);
    cmdAdd = m_selector->findChild<QPushButton*>(u"cmdAdd"_s);
    disconnect(cmdAdd, &QPushButton::clicked, m_selector, nullptr);
    cmdAdd->setText(u"&Añadir"_s);
    connect(cmdAdd, &QPushButton::clicked, this, &frmSeleccionMensaje::cmdAdd_Click);
    connect(m_selector, &QDialog::rejected, this, &QDialog::reject);

    txtMensaje = new QPlainTextEdit(this);
    txtMensaje->setObjectName(u"txtMensaje"_s);
    txtMensaje->setTabChangesFocus(true);
    txtMensaje->setFixedHeight(70);
    lblCaracteres = new QLabel(this);
    lblCaracteres->setObjectName(u"lblCaracteres"_s);
    Check1 = new QCheckBox(u"Agregar Nombre de Contacto al inicio del Mensaje"_s, this);
    Check1->setObjectName(u"Check1"_s);

    auto* filaMensaje = new QHBoxLayout;
    filaMensaje->addWidget(new QLabel(u"Mensaje"_s, this));
    filaMensaje->addStretch(1);
    filaMensaje->addWidget(lblCaracteres);
    auto* v = new QVBoxLayout(this);
    v->addWidget(m_selector, 1);
    v->addLayout(filaMensaje);
    v->addWidget(txtMensaje);
    v->addWidget(Check1);
    resize(780, 640);

    txtMensaje->setAccessibleName(u"Mensaje"_s);
    connect(txtMensaje, &QPlainTextEdit::textChanged, this, [this] {
        const QString n = QString::number(txtMensaje->toPlainText().size());
        lblCaracteres->setText(u"("_s + n + u")"_s);
        lblCaracteres->setAccessibleName(n + u" caracteres"_s);
    });
}

void frmSeleccionMensaje::cmdAdd_Click() {
    const QString texto = txtMensaje->toPlainText();
    if (recortarBlancos(texto).isEmpty()) {
        ui().msgBox(u"Seleccione un texto para el mensaje"_s, Msg::Information);
        return;
    }
    Q_EMIT CambiaMensaje(texto, Check1->isChecked());
    // The picker leaves out a contact that a chosen list already names by
    // alias; this one would by number. The two differ only for contacts
    // sharing an alias, and the editor adds every contact of an alias
    // anyway, so the rows it stores are the same either way.
    estadoAplicacion().gsDestinos = m_selector->destinosElegidos();
    accept();
}

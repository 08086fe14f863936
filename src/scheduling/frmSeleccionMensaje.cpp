#include "scheduling/frmSeleccionMensaje.h"

#include "base/EstadoAplicacion.h"
#include "composition/frmSeleccion.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Listado.h"
#include "widgets/Montaje.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSeleccionMensaje::frmSeleccionMensaje(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmSeleccionMensaje"_s, u"Selección de Destinatarios y Mensaje"_s,
                u"contactos"_s);
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

    txtMensaje = control<QPlainTextEdit>(this, u"txtMensaje"_s);
    txtMensaje->setTabChangesFocus(true);
    txtMensaje->setFixedHeight(70);
    lblCaracteres = control<QLabel>(this, u"lblCaracteres"_s);
    Check1 = control<QCheckBox>(this, u"Check1"_s,
                                u"Agregar Nombre de Contacto al inicio del Mensaje"_s);

    auto* v = new QVBoxLayout(this);
    v->addWidget(m_selector, 1);
    v->addLayout(fila({etiqueta(this, u"Mensaje"_s), nullptr, lblCaracteres}));
    anadirPiezas(v, {txtMensaje, Check1});
    resize(780, 640);

    txtMensaje->setAccessibleName(u"Mensaje"_s);
    contarCaracteres(txtMensaje, lblCaracteres);
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
    QPointer<frmSeleccionMensaje> pantalla(this);
    m_selector->elegirDestinos([pantalla](const QString& aliases) {
        estadoAplicacion().gsDestinos = aliases;
        if (pantalla) pantalla->accept();
    });
}

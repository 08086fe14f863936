#include "addressbook/frmSelecMenPro.h"

#include "addressbook/mdoAgenda.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "widgets/Boton.h"
#include "widgets/Iconos.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QPushButton>
#include <QStringListModel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSelecMenPro::frmSelecMenPro(QWidget* parent)
    : QDialog(parent), m_textos(new QStringListModel(this)) {
    setObjectName(u"frmSelecMenPro"_s);
    setWindowTitle(u"Selección de Mensajes Predefinidos"_s);
    setWindowIcon(iconoQuelmo(u"predefinidos"_s));
    setModal(true);
    lstMensajes = new QListView(this);
    lstMensajes->setObjectName(u"lstMensajes"_s);
    lstMensajes->setModel(m_textos);
    lstMensajes->setUniformItemSizes(true);
    lstMensajes->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstMensajes->installEventFilter(this);
    lstMensajes->setAccessibleName(u"Mensajes Predefinidos"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Aceptar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);
    auto* botones = new QHBoxLayout;
    botones->addStretch();
    botones->addWidget(cmdAdd);
    botones->addWidget(cmdClose);
    auto* v = new QVBoxLayout(this);
    v->addWidget(lstMensajes, 1);
    v->addLayout(botones);
    resize(520, 320);

    connect(cmdAdd, &QPushButton::clicked, this, &frmSelecMenPro::cmdAdd_Click);
    connect(lstMensajes, &QListView::doubleClicked, this, &frmSelecMenPro::cmdAdd_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::reject);

    m_textos->setStringList(leerTextosPredefinidos());
}

void frmSelecMenPro::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    lstMensajes->setFocus();
}

bool frmSelecMenPro::eventFilter(QObject* watched, QEvent* event) {
    if (watched == lstMensajes && event->type() == QEvent::KeyPress) {
        const int tecla = static_cast<QKeyEvent*>(event)->key();
        if (tecla == Qt::Key_Return || tecla == Qt::Key_Enter) {
            cmdAdd_Click();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmSelecMenPro::cmdAdd_Click() {
    const QModelIndex i = lstMensajes->currentIndex();
    if (i.isValid() && lstMensajes->selectionModel()->isSelected(i)) {
        const QString texto = m_textos->data(i).toString();
        if (!texto.isEmpty()) Q_EMIT Avisos::instancia().textoElegido(texto);
    }
    accept();
}

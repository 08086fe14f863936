#include "addressbook/frmSelecMenPro.h"

#include "addressbook/mdoAgenda.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "widgets/Boton.h"
#include "widgets/Montaje.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QPushButton>
#include <QStringListModel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSelecMenPro::frmSelecMenPro(QWidget* parent)
    : QDialog(parent), m_textos(new QStringListModel(this)) {
    identificar(this, u"frmSelecMenPro"_s, u"Selección de Mensajes Predefinidos"_s,
                u"predefinidos"_s);
    setModal(true);
    lstMensajes = control<QListView>(this, u"lstMensajes"_s);
    lstMensajes->setModel(m_textos);
    lstMensajes->setUniformItemSizes(true);
    lstMensajes->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstMensajes->installEventFilter(this);
    lstMensajes->setAccessibleName(u"Mensajes Predefinidos"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Aceptar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);
    auto* v = new QVBoxLayout(this);
    v->addWidget(lstMensajes, 1);
    v->addLayout(fila({nullptr, cmdAdd, cmdClose}));
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

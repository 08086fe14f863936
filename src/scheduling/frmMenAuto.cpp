#include "scheduling/frmMenAuto.h"

#include "base/EstadoAplicacion.h"
#include "scheduling/frmNewMenAuto2.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Iconos.h"
#include "widgets/Listado.h"
#include "widgets/PantallasHijas.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmMenAuto::frmMenAuto(QWidget* parent) : QWidget(parent) {
    setObjectName(u"frmMenAuto"_s);
    setWindowTitle(u"Mensajes Programados"_s);
    setWindowIcon(iconoQuelmo(u"programar"_s));
    ListView1 = new Listado(u"ListView1"_s,
                            {u"Nombre"_s, u"Nº Men."_s, u"Programado"_s, u"Último envío"_s}, this);
    nombreAccesible(ListView1, u"Mensajes Programados"_s);
    ListView1->setColumnWidth(0, 220);
    ListView1->setColumnWidth(1, 70);
    ListView1->setColumnWidth(2, 150);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"Ag&regar"_s);
    cmdEdit = botonConNombre(this, u"cmdEdit"_s, u"&Editar"_s);
    cmdDelete = botonConNombre(this, u"cmdDelete"_s, u"E&liminar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cerrar"_s);
    auto* botones = new QVBoxLayout;
    for (QPushButton* b : {cmdAdd, cmdEdit, cmdDelete}) botones->addWidget(b);
    botones->addStretch(1);
    botones->addWidget(cmdClose);
    auto* h = new QHBoxLayout(this);
    h->addWidget(ListView1, 1);
    h->addLayout(botones);
    resize(720, 400);

    connect(cmdAdd, &QPushButton::clicked, this, &frmMenAuto::cmdAdd_Click);
    connect(cmdEdit, &QPushButton::clicked, this, &frmMenAuto::cmdEdit_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmMenAuto::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmMenAuto::cmdDelete_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });

    requery();
}

void frmMenAuto::requery() {
    try {
        m_lineas = leerMensajesProgramados();
    } catch (const ErrorQuelmo&) {
        m_lineas = LineasMenAuto();
    }
    ListView1->modelo()->asignar(m_lineas.celdas);
}

int32_t frmMenAuto::codigoElegido() const {
    const int fila = ListView1->filaActual();
    if (fila < 0) return -1;
    return codigoDeLinea(m_lineas, ListView1->modelo()->texto(fila, 0));
}

void frmMenAuto::cmdAdd_Click() {
    int32_t codigo = 1;
    try {
        codigo = proximoCodigoAutomatico();
    } catch (const ErrorQuelmo&) {
        // Unreadable codes: the first one is proposed, the save checks it.
    }
    {
        frmNewMenAuto2 editor(ventanaPadreModal());
        editor.setCodigo(codigo);
        editor.txtNombre->setText(u"Envío Múltiple nº "_s + QString::number(codigo));
        editor.exec();
    }
    requery();
}

void frmMenAuto::cmdEdit_Click() {
    const int32_t codigo = codigoElegido();
    if (codigo < 0) return;
    frmNewMenAuto2::editar(codigo, ventanaPadreModal());
    requery();
}

void frmMenAuto::cmdDelete_Click() {
    const int32_t codigo = codigoElegido();
    if (codigo < 0) return;
    const QString nombre = ListView1->modelo()->texto(ListView1->filaActual(), 0);
    if (ui().msgBox(u"Esta seguro que desea eliminar este Envío Múltiple ?\n"_s + nombre,
                    Msg::YesNo | 32) != Msg::Yes)
        return;
    borrarMensajeProgramado(codigo);
    requery();
}

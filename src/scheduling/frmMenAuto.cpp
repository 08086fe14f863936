#include "scheduling/frmMenAuto.h"

#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "scheduling/ProximasTareas.h"
#include "scheduling/clsTareasPendientes.h"
#include "scheduling/frmNewMenAuto2.h"
#include "scheduling/mdoProgramacion.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/Montaje.h"
#include "widgets/PantallasHijas.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmMenAuto::frmMenAuto(QWidget* parent) : QWidget(parent) {
    identificar(this, u"frmMenAuto"_s, u"Mensajes Programados"_s, u"programar"_s);
    const QStringList cabeceras{u"Nombre"_s, u"Nº Men."_s, u"Programado"_s, u"Último envío"_s};
    ListView1 = new Listado(u"ListView1"_s, cabeceras, this);
    m_modelo = new ModeloPaginado(definicionMensajesProgramados(), cabeceras, this);
    ListView1->usarModelo(m_modelo);
    m_repaso = new QTimer(this);
    m_repaso->setInterval(250);
    connect(m_repaso, &QTimer::timeout, this, &frmMenAuto::seguirRepaso);
    nombreAccesible(ListView1, u"Mensajes Programados"_s);
    ListView1->setColumnWidth(0, 220);
    ListView1->setColumnWidth(1, 70);
    ListView1->setColumnWidth(2, 150);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"Ag&regar"_s);
    cmdEdit = botonConNombre(this, u"cmdEdit"_s, u"&Editar"_s);
    cmdDelete = botonConNombre(this, u"cmdDelete"_s, u"E&liminar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cerrar"_s);
    auto* h = new QHBoxLayout(this);
    h->addWidget(ListView1, 1);
    h->addLayout(columnaBotones({cmdAdd, cmdEdit, cmdDelete}, cmdClose));
    resize(720, 400);

    connect(cmdAdd, &QPushButton::clicked, this, &frmMenAuto::cmdAdd_Click);
    connect(cmdEdit, &QPushButton::clicked, this, &frmMenAuto::cmdEdit_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmMenAuto::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmMenAuto::cmdDelete_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });

    requery();
}

void frmMenAuto::requery() {
    // The stored next runs are what the list shows: after an open of the
    // database or a jump of the clock they are worked out again first.
    try {
        ProximasTareas::ponerAlDia();
    } catch (const ErrorQuelmo&) {
        // The stored ones show meanwhile; the next look tries again.
    }
    if (ProximasTareas::repasadoHasta()) {
        clsTareasPendientes::programarRepaso();
        m_repaso->start();
    }
    m_modelo->cargar();
}

void frmMenAuto::seguirRepaso() {
    if (ProximasTareas::repasadoHasta()) return;
    m_repaso->stop();
    m_modelo->cargar();
}

int32_t frmMenAuto::codigoElegido() const {
    const int fila = ListView1->filaActual();
    if (fila < 0) return -1;
    try {
        return primerCodigoConNombre(ListView1->modelo()->texto(fila, 0));
    } catch (const ErrorQuelmo&) {
        return -1;
    }
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
    m_ocupacion.ocupar(this, {ListView1, cmdAdd, cmdEdit, cmdDelete});
    QPointer<frmMenAuto> pantalla(this);
    borrarMensajeProgramado(codigo, [pantalla](bool) {
        if (!pantalla) return;
        pantalla->m_ocupacion.soltar();
        pantalla->requery();
    });
}

#include "addressbook/frmMenPro.h"

#include "addressbook/mdoAgenda.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Listado.h"
#include "widgets/Montaje.h"
#include "widgets/PantallasHijas.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmMenPro::frmMenPro(QWidget* parent) : QWidget(parent) {
    identificar(this, u"frmMenPro"_s, u"Mensajes Predefinidos"_s, u"predefinidos"_s);
    ListView1 = new Listado(u"ListView1"_s, {u"Texto del Mensaje Predefinido"_s}, this);
    nombreAccesible(ListView1, u"Mensajes Predefinidos"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"Ag&regar"_s);
    cmdEdit = botonConNombre(this, u"cmdEdit"_s, u"&Editar"_s);
    cmdDelete = botonConNombre(this, u"cmdDelete"_s, u"E&liminar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cerrar"_s);
    auto* v = new QVBoxLayout(this);
    v->addWidget(ListView1, 1);
    v->addLayout(fila({nullptr, cmdAdd, cmdEdit, cmdDelete, cmdClose}));
    resize(600, 360);

    connect(cmdAdd, &QPushButton::clicked, this, &frmMenPro::cmdAdd_Click);
    connect(cmdEdit, &QPushButton::clicked, this, &frmMenPro::cmdEdit_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmMenPro::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmMenPro::cmdDelete_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });

    requery();
}

void frmMenPro::requery() {
    try {
        adoPrimaryRS = abrirMensajesPredefinidos();
    } catch (const ErrorBD&) {
        adoPrimaryRS = ResultadoConsulta();
    }
    msPintarMensajes();
}

void frmMenPro::msPintarMensajes() {
    QVector<QString> celdas;
    for (int f = 0; f < adoPrimaryRS.recordCount(); ++f)
        celdas.append(textoDe(adoPrimaryRS.value(f, u"Texto"_s)));
    ListView1->modelo()->asignar(std::move(celdas));
}

int frmMenPro::filaElegida() const {
    const QString texto = ListView1->modelo()->texto(ListView1->filaActual(), 0);
    if (texto.isEmpty()) return -1;
    // Of two equal texts the first one is acted on.
    return primeraFilaCon(adoPrimaryRS, u"Texto"_s, texto);
}

void frmMenPro::cmdAdd_Click() {
    const QString texto = ui().inputBox(u"Inserte el texto para el nuevo mensaje"_s,
                                        u"Alta de Mensajes Programados"_s, QString());
    if (texto.isEmpty()) return;
    mostrar(msAltaMensaje(texto));
    requery();
}

void frmMenPro::cmdEdit_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    const QString texto =
        ui().inputBox(u"Inserte el nuevo texto para el mensaje"_s, u"Edicion de Mensajes"_s,
                      textoDe(adoPrimaryRS.value(f, u"Texto"_s)));
    if (texto.isEmpty()) return;
    const Resultado<bool> cambiado =
        msCambiarMensaje(int(numeroDe(adoPrimaryRS.value(f, u"Mensaje"_s))), texto);
    if (mostrar(cambiado) && *cambiado) requery();
}

void frmMenPro::cmdDelete_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    if (!confirmar(u"Esta a punto de eliminar un Mensaje, esta seguro ?"_s)) return;
    if (msBorrarMensaje(int(numeroDe(adoPrimaryRS.value(f, u"Mensaje"_s))))) requery();
}

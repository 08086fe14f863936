#include "history/frmEmergencias.h"

#include "base/EstadoAplicacion.h"
#include "base/Pantallas.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Listado.h"
#include "widgets/Montaje.h"
#include "widgets/PantallasHijas.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmEmergencias::frmEmergencias(QWidget* parent) : QWidget(parent) {
    identificar(this, u"frmEmergencias"_s,
                u"Selección de Mensajes Programados para envío inmediato"_s, u"programar"_s);
    ListView1 = new Listado(
        u"ListView1"_s, {u"Descripción"_s, u"Nº de Mensajes"_s, u"Programado"_s, u"Ultimo envío"_s},
        this);
    nombreAccesible(ListView1, u"Mensajes Programados"_s);
    ListView1->setColumnWidth(0, 260);
    ListView1->setColumnWidth(1, 110);
    ListView1->setColumnWidth(2, 110);
    cmdEnviar = botonConNombre(this, u"cmdEnviar"_s, u"&Enviar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);
    auto* v = new QVBoxLayout(this);
    v->addWidget(ListView1, 1);
    v->addLayout(fila({nullptr, cmdEnviar, cmdClose}));
    resize(640, 380);

    conectarUnaVez(cmdEnviar, this, &frmEmergencias::cmdEnviar_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });
    connect(ListView1, &Listado::dobleClicFila, this, &frmEmergencias::editar);
    msCargar();
}

void frmEmergencias::abrir() {
    const bool abierta = PantallasHijas::isLoaded<frmEmergencias>();
    auto* pantalla = PantallasHijas::instance<frmEmergencias>();
    if (abierta ? pantalla->msCargar() : pantalla->ListView1->modelo()->rowCount() > 0) {
        PantallasHijas::show(pantalla);
        return;
    }
    ui().msgBox(u"No existen Mensajes Programados"_s, Msg::Critical);
    cerrarPantallaHija(pantalla);
}

bool frmEmergencias::msCargar() {
    const QList<FilaEmergencia> filas = msCargarEmergencias();
    QVector<QString> celdas;
    celdas.reserve(filas.size() * 4);
    for (const FilaEmergencia& f : filas)
        celdas << f.nombre << f.mensajes << f.programado << f.ultimo;
    ListView1->modelo()->asignar(std::move(celdas));
    return !filas.isEmpty();
}

int frmEmergencias::codigoDeFila(int fila) const {
    if (fila < 0) return -1;
    // The line's name finds the multi-send: of two equal names the first
    // by code, whichever line was chosen.
    return codigoDeNombre(ListView1->modelo()->texto(fila, 0));
}

void frmEmergencias::cmdEnviar_Click() {
    const int codigo = codigoDeFila(ListView1->filaActual());
    if (codigo < 0) return;
    // The user sees at once what went into the outbox.
    if (mostrar(msEnviarEmergencia(codigo))) Pantallas::abrir(u"frmEnvio"_s);
}

void frmEmergencias::editar(int fila) {
    const int codigo = codigoDeFila(fila);
    if (codigo < 0) return;
    Pantallas::abrir(u"frmNewMenAuto2"_s, codigo);
    msCargar();
}

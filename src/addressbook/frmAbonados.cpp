#include "addressbook/frmAbonados.h"

#include "addressbook/frmNewUser.h"
#include "addressbook/mdoAgenda.h"
#include "base/Avisos.h"
#include "base/EstadoAplicacion.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/Montaje.h"
#include "widgets/PantallasHijas.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmAbonados::frmAbonados(QWidget* parent) : QWidget(parent) {
    identificar(this, u"frmAbonados"_s, u"Contactos"_s, u"contactos"_s);
    ListView1 =
        new Listado(u"ListView1"_s, {u"Nombre"_s, u"Número"_s, u"Comentario"_s, u"Cuenta"_s}, this);
    m_contactos = new ModeloPaginado(
        definicionContactos(), {u"Nombre"_s, u"Número"_s, u"Comentario"_s, u"Cuenta"_s}, this);
    // Loaded by name, the arrow on the first column.
    m_contactos->ordenar(0, false);
    ListView1->usarModelo(m_contactos);
    nombreAccesible(ListView1, u"Contactos"_s);
    ListView1->setSeleccionMultiple(true);
    // Each column as wide as what it usually holds, so that all four show.
    const QFontMetrics fm = ListView1->fontMetrics();
    const int margen = 2 * ListView1->style()->pixelMetric(QStyle::PM_HeaderMargin) + 12;
    int ancho = 0;
    const QStringList muestras{u"Nombre de un contacto"_s, u"000000000000000"_s,
                               u"Comentario de un contacto"_s, u"Cuenta principal"_s};
    for (int c = 0; c < muestras.size(); ++c) {
        ListView1->setColumnWidth(c, fm.horizontalAdvance(muestras[c]) + margen);
        ancho += ListView1->columnWidth(c);
    }
    lblcont = control<QLabel>(this, u"lblcont"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"Ag&regar"_s);
    cmdEdit = botonConNombre(this, u"cmdEdit"_s, u"&Editar"_s);
    cmdDelete = botonConNombre(this, u"cmdDelete"_s, u"E&liminar"_s);
    cmdDeletetodos = botonConNombre(this, u"cmdDeletetodos"_s, u"Eliminar &Todos"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cerrar"_s);

    QHBoxLayout* botones =
        fila({{lblcont, 1}, cmdAdd, cmdEdit, cmdDelete, cmdDeletetodos, cmdClose});
    auto* v = new QVBoxLayout(this);
    v->addWidget(ListView1, 1);
    v->addLayout(botones);
    const int bordes = 2 * ListView1->frameWidth() + v->contentsMargins().left() +
                       v->contentsMargins().right() +
                       ListView1->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    m_tamano = QSize(qMax(ancho + bordes, botones->sizeHint().width() + bordes), 460);
    resize(m_tamano);

    connect(cmdAdd, &QPushButton::clicked, this, &frmAbonados::cmdAdd_Click);
    connect(cmdEdit, &QPushButton::clicked, this, &frmAbonados::cmdEdit_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmAbonados::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmAbonados::cmdDelete_Click);
    connect(cmdDeletetodos, &QPushButton::clicked, this, &frmAbonados::cmdDeletetodos_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });
    // A contact saved here or from another screen shows at once.
    connect(&Avisos::instancia(), &Avisos::contactosCambiados, this, &frmAbonados::requery);

    requery();
}

QSize frmAbonados::sizeHint() const {
    // What the frame gives the screen when it opens.
    return m_tamano;
}

void frmAbonados::requery() {
    msPintarContactos();
}

void frmAbonados::msPintarContactos() {
    // A list that can't be read shows empty.
    m_contactos->cargar();
    lblcont->setText(QString::number(m_contactos->rowCount()) + u" Contactos"_s);
}

bool frmAbonados::msNuevoContacto(QWidget* padre) {
    frmNewUser editor(padre);
    if (!editor.msLoad()) {
        ui().msgBox(u"Atención, primero debe crear una Cuenta, desea hacerlo en este momento ?"_s,
                    Msg::Critical);
        return false;
    }
    editor.exec();
    return true;
}

void frmAbonados::cmdAdd_Click() {
    msNuevoContacto(this);
}

void frmAbonados::cmdEdit_Click() {
    const int linea = ListView1->filaActual();
    const QString texto = ListView1->modelo()->texto(linea, 0);
    if (texto.isEmpty()) return;
    // Of two contacts with the same name, the first in the order opens.
    std::optional<ContactoLeido> c;
    try {
        c = primerContactoConAlias(texto);
    } catch (const ErrorBD&) {
        return;
    }
    if (!c) return;
    frmNewUser editor(this);
    editor.prepararEdicion(c->codigo, c->canal, texto, c->comentario);
    editor.msLoad();
    editor.exec();
}

void frmAbonados::permitirCambios(bool si) {
    if (si) {
        m_ocupacion.soltar();
        return;
    }
    // The list too: read while the contacts go, a page could find their
    // indexes gone for a moment and sort them all.
    m_ocupacion.ocupar(this, {cmdAdd, cmdEdit, cmdDelete, cmdDeletetodos, ListView1});
}

void frmAbonados::borrarFilas(const QStringList& codigos, bool todos) {
    permitirCambios(false);
    // Each failure has its own box; the summary tells the successes only.
    QPointer<frmAbonados> pantalla(this);
    auto alTerminar = [pantalla](const ContactosBorrados& borrados) {
        for (const Hecho& fallo : borrados.fallos) mostrar(fallo);
        ui().msgBox(u"Se han borrado %1 Contactos con éxito.\n"_s.arg(borrados.cuantos),
                    Msg::Information);
        if (!pantalla) return;
        pantalla->permitirCambios(true);
        pantalla->requery();
    };
    if (todos)
        msBorrarTodosLosContactos(alTerminar);
    else
        msBorrarContactosPorBloques(codigos, alTerminar);
}

void frmAbonados::cmdDelete_Click() {
    if (!confirmar(u"Esta a punto de eliminar los Contactos Seleccionados, ¿esta seguro?"_s))
        return;
    const QList<int> filas = ListView1->filasSeleccionadas();
    QStringList codigos;
    codigos.reserve(filas.size());
    for (auto it = filas.crbegin(); it != filas.crend(); ++it)
        codigos.append(ListView1->modelo()->texto(*it, 1));
    borrarFilas(codigos);
}

void frmAbonados::cmdDeletetodos_Click() {
    if (!confirmar(u"¿Quiere eliminar TODOS sus Contactos?"_s)) return;
    borrarFilas({}, true);
}

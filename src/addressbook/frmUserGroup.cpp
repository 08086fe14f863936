#include "addressbook/frmUserGroup.h"

#include "addressbook/mdoAgenda.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Listado.h"
#include "widgets/Montaje.h"
#include "widgets/ReglasPantallas.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmUserGroup::frmUserGroup(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmUserGroup"_s, u"Contactos de la Lista"_s, u"listas"_s);
    setModal(true);
    lstcontactos = new Listado(u"lstcontactos"_s, {u"Nombre"_s, u"Número"_s}, this);
    lstLista = new Listado(u"lstLista"_s, {u"Nombre"_s, u"Número"_s}, this);
    for (Listado* l : {lstcontactos, lstLista}) {
        l->setSeleccionMultiple(true);
        l->setColumnWidth(0, 170);
    }
    Command1 = botonConNombre(this, u"Command1"_s, u"Añadir >"_s,
                              u"Añadir Contacto Seleccionados a Lista"_s);
    cmdTodos = botonConNombre(this, u"cmdTodos"_s, u"Todos >>>"_s,
                              u"Añadir Contacto Seleccionados a Lista"_s);
    cmdQuitar = botonConNombre(this, u"cmdQuitar"_s, u"< Eliminar"_s,
                               u"Quitar Contacto Seleccionado de la Lista"_s);
    cmdquitarTodos = botonConNombre(this, u"cmdquitarTodos"_s, u"<<< Todos"_s,
                                    u"Quitar Todos los Contactos de la Lista"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Guardar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);
    lblcont = control<QLabel>(this, u"lblcont"_s);
    // The arrows of the captions say nothing read aloud.
    nombreAccesible(lstcontactos, u"Contactos disponibles"_s);
    nombreAccesible(lstLista, u"Contactos en la Lista"_s);
    nombreAccesible(Command1, u"Añadir los contactos elegidos a la lista"_s);
    nombreAccesible(cmdTodos, u"Añadir todos los contactos a la lista"_s);
    nombreAccesible(cmdQuitar, u"Quitar los contactos elegidos de la lista"_s);
    nombreAccesible(cmdquitarTodos, u"Quitar todos los contactos de la lista"_s);

    auto* g = new QGridLayout;
    g->addWidget(etiqueta(this, u"Contactos disponibles"_s), 0, 0);
    g->addWidget(etiqueta(this, u"Contactos en la Lista"_s), 0, 2);
    g->addWidget(lstcontactos, 1, 0);
    g->addLayout(columna({nullptr, Command1, cmdTodos, cmdQuitar, cmdquitarTodos, nullptr}), 1, 1);
    g->addWidget(lstLista, 1, 2);
    auto* v = new QVBoxLayout(this);
    v->addLayout(g, 1);
    v->addLayout(fila({{lblcont, 1}, cmdAdd, cmdClose}));
    resize(720, 440);

    connect(Command1, &QPushButton::clicked, this, &frmUserGroup::Command1_Click);
    connect(cmdTodos, &QPushButton::clicked, this, &frmUserGroup::cmdTodos_Click);
    connect(cmdQuitar, &QPushButton::clicked, this, &frmUserGroup::cmdQuitar_Click);
    connect(cmdquitarTodos, &QPushButton::clicked, this, &frmUserGroup::cmdquitarTodos_Click);
    connect(cmdAdd, &QPushButton::clicked, this, &frmUserGroup::cmdAdd_Click);
    connect(cmdClose, &QPushButton::clicked, this, &frmUserGroup::cmdClose_Click);
    ReglasPantallas::marcarCierre(cmdClose);
    connect(lstcontactos, &Listado::dobleClicFila, this, [this](int fila) {
        if (!lstcontactos->modelo()->texto(fila, 0).isEmpty())
            mover(lstcontactos, lstLista, {fila});
    });
    connect(lstLista, &Listado::dobleClicFila, this, [this](int fila) {
        if (!lstLista->modelo()->texto(fila, 0).isEmpty()) mover(lstLista, lstcontactos, {fila});
    });
}

void frmUserGroup::msCargarUsuariosParaGrupo() {
    setWindowTitle(u"Contactos de la Lista: "_s + sNombreGrupo.toUpper());
    QVector<QString> miembros;
    QVector<QString> resto;
    try {
        miembros = leerMiembrosLista(nCodGrupo);
        resto = leerNoMiembrosLista(nCodGrupo);
    } catch (const ErrorBD&) {
        // Lists that can't be read show empty, like the other address book lists.
    }
    lblcont->setText(QString::number(miembros.size() / 2) + u" Contactos en la lista"_s);
    lstLista->modelo()->asignar(std::move(miembros));
    lstcontactos->modelo()->asignar(std::move(resto));
}

void frmUserGroup::mover(Listado* origen, Listado* destino, const QList<int>& filas) {
    ModeloListado* o = origen->modelo();
    QList<QStringList> llevadas;
    llevadas.reserve(filas.size());
    for (auto it = filas.crbegin(); it != filas.crend(); ++it) llevadas.append(o->fila(*it));
    destino->modelo()->anadirFilas(llevadas);
    o->quitarFilas(filas);
}

namespace {
QList<int> todas(const Listado* l) {
    QList<int> filas;
    for (int f = 0; f < l->modelo()->rowCount(); ++f) filas.append(f);
    return filas;
}
}  // namespace

void frmUserGroup::Command1_Click() {
    mover(lstcontactos, lstLista, lstcontactos->filasSeleccionadas());
}

void frmUserGroup::cmdTodos_Click() {
    mover(lstcontactos, lstLista, todas(lstcontactos));
}

void frmUserGroup::cmdQuitar_Click() {
    mover(lstLista, lstcontactos, lstLista->filasSeleccionadas());
}

void frmUserGroup::cmdquitarTodos_Click() {
    mover(lstLista, lstcontactos, todas(lstLista));
}

void frmUserGroup::cmdAdd_Click() {
    QStringList numeros;
    for (int f = 0; f < lstLista->modelo()->rowCount(); ++f)
        numeros.append(lstLista->modelo()->texto(f, 1));
    msGuardarMiembrosLista(nCodGrupo, numeros);
    sNombreGrupo.clear();
    nCodGrupo = -1;
    accept();
}

void frmUserGroup::cmdClose_Click() {
    sNombreGrupo.clear();
    nCodGrupo = -1;
    reject();
}

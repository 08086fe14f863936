#include "addressbook/frmUserGroup.h"

#include "addressbook/mdoAgenda.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/Montaje.h"
#include "widgets/ReglasPantallas.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmUserGroup::frmUserGroup(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmUserGroup"_s, u"Contactos de la Lista"_s, u"listas"_s);
    setModal(true);
    lstcontactos = new Listado(u"lstcontactos"_s, {u"Nombre"_s, u"Número"_s}, this);
    lstLista = new Listado(u"lstLista"_s, {u"Nombre"_s, u"Número"_s}, this);
    m_fuera = new ModeloPaginado(definicionMiembros(false), {u"Nombre"_s, u"Número"_s}, this);
    m_dentro = new ModeloPaginado(definicionMiembros(true), {u"Nombre"_s, u"Número"_s}, this);
    m_fuera->ordenar(0, false);
    m_dentro->ordenar(0, false);
    lstcontactos->usarModelo(m_fuera);
    lstLista->usarModelo(m_dentro);
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
        if (!m_fuera->texto(fila, 0).isEmpty()) mover(true, {fila});
    });
    connect(lstLista, &Listado::dobleClicFila, this, [this](int fila) {
        if (!m_dentro->texto(fila, 0).isEmpty()) mover(false, {fila});
    });
}

void frmUserGroup::msCargarUsuariosParaGrupo() {
    setWindowTitle(u"Contactos de la Lista: "_s + sNombreGrupo.toUpper());
    // A list of many is read over a moment: the screen shows when it's
    // ready, and waits for it to close. Both sides are counted at once.
    ocupar(true);
    QPointer<frmUserGroup> pantalla(this);
    msPrepararMiembrosLista(nCodGrupo, [pantalla](std::optional<std::pair<int, int>> filas) {
        if (!pantalla) return;
        // Lists that can't be read show empty, like the other address book lists.
        if (!filas) msSoltarMiembrosLista();
        pantalla->m_dentro->cargar(filas ? filas->first : 0);
        pantalla->lblcont->setText(QString::number(pantalla->m_dentro->rowCount()) +
                                   u" Contactos en la lista"_s);
        // The outer side in a turn of its own: the first page of each may
        // walk past many lines of the other, and the paint reads both.
        QTimer::singleShot(1, pantalla, [pantalla, fuera = filas ? filas->second : 0] {
            pantalla->m_fuera->cargar(fuera);
            pantalla->ocupar(false);
        });
    });
}

void frmUserGroup::ocupar(bool ocupada) {
    // The screen's own controls; what they hold follows them.
    if (ocupada)
        m_ocupacion.ocupar(this, findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
    else
        m_ocupacion.soltar();
}

void frmUserGroup::mover(bool haciaDentro, const QList<int>& filas) {
    const ModeloPaginado* origen = haciaDentro ? m_fuera : m_dentro;
    std::vector<int64_t> claves;
    claves.reserve(size_t(filas.size()));
    // From the last line up, as they go to the end of the other side.
    for (auto it = filas.crbegin(); it != filas.crend(); ++it)
        if (const int64_t c = origen->clave(*it); c > 0) claves.push_back(c);
    if (claves.empty()) return;
    trasMover([&](std::function<void()> hecho) {
        msMoverMiembros(haciaDentro, claves, std::move(hecho));
    });
}

void frmUserGroup::moverTodos(bool haciaDentro) {
    const auto [columna, descendente] = (haciaDentro ? m_fuera : m_dentro)->ordenLista();
    trasMover([&](std::function<void()> hecho) {
        msMoverTodosLosMiembros(haciaDentro, columna, descendente, std::move(hecho));
    });
}

void frmUserGroup::trasMover(const std::function<void(std::function<void()>)>& mover) {
    // Most moves end within the click. One that waits for another write of
    // ours keeps the screen closed to clicks until it is done, so that the
    // lines clicked next are the ones shown.
    auto hecho = std::make_shared<bool>(false);
    QPointer<frmUserGroup> pantalla(this);
    mover([pantalla, hecho] {
        *hecho = true;
        if (!pantalla) return;
        if (pantalla->ocupada()) pantalla->ocupar(false);
        pantalla->recargar();
    });
    if (!*hecho) ocupar(true);
}

void frmUserGroup::recargar() {
    // Each side's count is its runs': nothing is counted row by row.
    m_dentro->cargar();
    m_fuera->cargar();
}

void frmUserGroup::Command1_Click() {
    mover(true, lstcontactos->filasSeleccionadas());
}

void frmUserGroup::cmdTodos_Click() {
    moverTodos(true);
}

void frmUserGroup::cmdQuitar_Click() {
    mover(false, lstLista->filasSeleccionadas());
}

void frmUserGroup::cmdquitarTodos_Click() {
    moverTodos(false);
}

void frmUserGroup::cmdAdd_Click() {
    // A large list is stored over a moment: the screen waits for it, closed
    // by nothing, and then closes as before.
    ocupar(true);
    QPointer<frmUserGroup> pantalla(this);
    msGuardarMiembrosLista(nCodGrupo, [pantalla](bool) {
        if (!pantalla) return;
        pantalla->ocupar(false);
        pantalla->sNombreGrupo.clear();
        pantalla->nCodGrupo = -1;
        pantalla->accept();
    });
}

void frmUserGroup::cmdClose_Click() {
    sNombreGrupo.clear();
    nCodGrupo = -1;
    reject();
}

void frmUserGroup::done(int resultado) {
    if (m_ocupacion.activa()) return;
    // However the screen closes, the moves go with it.
    msSoltarMiembrosLista();
    QDialog::done(resultado);
}

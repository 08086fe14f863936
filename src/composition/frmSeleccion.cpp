#include "composition/frmSeleccion.h"

#include "base/EstadoAplicacion.h"
#include "base/Turno.h"
#include "composition/Envio.h"
#include "composition/Seleccion.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Listado.h"
#include "widgets/Montaje.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

frmSeleccion::frmSeleccion(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmSeleccion"_s, u"Selección de destinatarios"_s, u"contactos"_s);
    setModal(true);

    crearControles();
    colocar();

    connect(cmdBuscar, &QPushButton::clicked, this, &frmSeleccion::cmdBuscar_Click);
    connect(txtBuscar, &QLineEdit::textChanged, this, &frmSeleccion::cmdBuscar_Click);
    // From the last, the order the moves visit them in.
    auto todas = [](const Listado* l) {
        QList<int> filas;
        filas.reserve(l->modelo()->rowCount());
        for (int f = l->modelo()->rowCount() - 1; f >= 0; --f) filas.append(f);
        return filas;
    };
    connect(Command1, &QPushButton::clicked, this,
            [this] { moverContactos(lstcontactos->filasSeleccionadas()); });
    connect(cmdTodos, &QPushButton::clicked, this,
            [this, todas] { moverContactos(todas(lstcontactos)); });
    connect(Command2, &QPushButton::clicked, this,
            [this] { anadirListas(lstlistas->filasSeleccionadas()); });
    connect(cmdTodoslista, &QPushButton::clicked, this,
            [this, todas] { anadirListas(todas(lstlistas)); });
    connect(lstcontactos, &Listado::dobleClicFila, this, [this](int fila) {
        if (!lstcontactos->modelo()->texto(fila, 0).isEmpty()) moverContactos({fila});
    });
    connect(lstlistas, &Listado::dobleClicFila, this, [this](int fila) {
        if (!lstlistas->modelo()->texto(fila, 0).isEmpty()) anadirListas({fila});
    });
    connect(lstdestinos, &Listado::dobleClicFila, this, &frmSeleccion::devolverDestino);
    connect(cmdVaciarLista, &QPushButton::clicked, this, &frmSeleccion::cmdVaciarLista_Click);
    connect(cmdAdd, &QPushButton::clicked, this, &frmSeleccion::cmdAdd_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::reject);

    nombrarControles();
    msCargarListados();
}

frmSeleccion::~frmSeleccion() {
    // Half a million lines are freed over turns, not in the closing click.
    for (Listado* l : {lstcontactos, lstdestinos}) liberarPorTurnos(l->modelo()->tomarCeldas());
}

void frmSeleccion::crearControles() {
    lstcontactos = new Listado(u"lstcontactos"_s, {u"Nombre"_s, u"Número"_s}, this);
    lstcontactos->setSeleccionMultiple(true);
    lstlistas = new Listado(u"lstlistas"_s, {u"Lista"_s, u"Nombre"_s, u"Nº Contactos"_s}, this);
    lstlistas->setSeleccionMultiple(true);
    lstdestinos = new Listado(u"lstdestinos"_s, {u"Nombre"_s, u"Número"_s}, this);
    txtBuscar = control<QLineEdit>(this, u"txtBuscar"_s);

    cmdBuscar = botonConNombre(this, u"cmdBuscar"_s, u"&Buscar"_s);
    Command1 = botonConNombre(this, u"Command1"_s, u"Para >"_s);
    cmdTodos = botonConNombre(this, u"cmdTodos"_s, u"Todos >>"_s);
    Command2 = botonConNombre(this, u"Command2"_s, u"Para >"_s);
    cmdTodoslista = botonConNombre(this, u"cmdTodoslista"_s, u"Todos >>"_s);
    cmdVaciarLista = botonConNombre(this, u"cmdVaciarLista"_s, u"<<<<"_s, u"Vaciar Lista"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Aceptar"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);
    // The search runs as the text changes, so Enter in the search field or
    // in a list has nothing to do; were any button a dialog's default, Enter
    // would press it, and "Aceptar" would close the picker half chosen.
    for (QPushButton* b : findChildren<QPushButton*>()) {
        b->setAutoDefault(false);
        b->setDefault(false);
    }
}

void frmSeleccion::colocar() {
    QVBoxLayout* izquierda = columna({etiqueta(this, u"Buscar Contactos"_s)});
    izquierda->addLayout(fila({{txtBuscar, 1}, cmdBuscar}));
    anadirPiezas(izquierda, {etiqueta(this, u"Contactos"_s),
                             {lstcontactos, 2},
                             etiqueta(this, u"Listas"_s),
                             {lstlistas, 1}});
    QVBoxLayout* derecha = columna({etiqueta(this, u"Destinos Seleccionados"_s), {lstdestinos, 1}});
    derecha->addLayout(fila({nullptr, cmdAdd, cmdClose}));

    auto* capa = new QHBoxLayout(this);
    capa->addLayout(izquierda, 3);
    capa->addLayout(columna(
        {nullptr, Command1, cmdTodos, nullptr, Command2, cmdTodoslista, nullptr, cmdVaciarLista}));
    capa->addLayout(derecha, 3);
    resize(760, 520);
}

void frmSeleccion::nombrarControles() {
    // The arrows' captions say nothing read aloud, and two pairs are alike.
    nombreAccesible(txtBuscar, u"Buscar Contactos"_s);
    nombreAccesible(lstcontactos, u"Contactos"_s, u"Intro añade el contacto a los destinos"_s);
    nombreAccesible(lstlistas, u"Listas"_s, u"Intro añade la lista a los destinos"_s);
    nombreAccesible(lstdestinos, u"Destinos Seleccionados"_s,
                    u"Intro quita el destino de la selección"_s);
    nombreAccesible(Command1, u"Añadir los contactos elegidos"_s);
    nombreAccesible(cmdTodos, u"Añadir todos los contactos"_s);
    nombreAccesible(Command2, u"Añadir las listas elegidas"_s);
    nombreAccesible(cmdTodoslista, u"Añadir todas las listas"_s);
    nombreAccesible(cmdVaciarLista, u"Vaciar Lista"_s);
    ordenTabulacion({txtBuscar, cmdBuscar, lstcontactos, Command1, cmdTodos, lstlistas, Command2,
                     cmdTodoslista, cmdVaciarLista, lstdestinos, cmdAdd, cmdClose});
}

void frmSeleccion::msCargarListados() {
    QVector<QString> celdas;
    if (leerListasSeleccion(&celdas)) lstlistas->modelo()->asignar(std::move(celdas));
    // The contacts come over turns, a stretch at a time: meanwhile "Todos"
    // and the search, which need them all, wait. A reading begun before
    // (the list emptied again) is left.
    if (!m_ocupacion.activa()) m_ocupacion.ocupar(this, {cmdTodos, txtBuscar, cmdBuscar});
    seguirContactos(std::make_shared<LecturaContactos>(), ++m_lectura, true);
}

void frmSeleccion::seguirContactos(std::shared_ptr<LecturaContactos> lectura, int numero,
                                   bool primera) {
    if (numero != m_lectura) return;
    QVector<QString> celdas;
    try {
        leerContactosEnOrden(*lectura, celdas, 12);
    } catch (const ErrorQuelmo&) {
        // Silent, as ever: the list shows what was read.
        lectura->terminada = true;
    }
    // With no contacts at all the list is left as it stood.
    if (primera && !celdas.isEmpty())
        lstcontactos->modelo()->asignar(std::move(celdas));
    else if (!celdas.isEmpty())
        lstcontactos->modelo()->anadirCeldas(std::move(celdas));
    if (lectura->terminada) {
        m_ocupacion.soltar();
        return;
    }
    const bool vacia = primera && lstcontactos->modelo()->rowCount() == 0;
    QTimer::singleShot(1, this,
                       [this, lectura, numero, vacia] { seguirContactos(lectura, numero, vacia); });
}

// Lines are visited from the last to the first, as the user's list shows
// them: that order reaches the chosen list, and has no bearing on the result.
void frmSeleccion::moverContactos(QList<int> filas) {
    ModeloListado* m = lstcontactos->modelo();
    // Every line ("Todos"): the cells change hands. A copy of each of a
    // million cells reads every one of them, 47 ms.
    if (filas.size() == m->rowCount() && !filas.isEmpty()) {
        QVector<QString> celdas = m->tomarCeldas();
        // From the last, as the lines of a choice go.
        for (qsizetype a = 0, b = celdas.size() - 2; a < b; a += 2, b -= 2) {
            celdas[a].swap(celdas[b]);
            celdas[a + 1].swap(celdas[b + 1]);
        }
        lstdestinos->modelo()->anadirCeldas(std::move(celdas));
        return;
    }
    if (!std::is_sorted(filas.begin(), filas.end(), std::greater<int>()))
        std::sort(filas.begin(), filas.end(), std::greater<int>());
    // Cells, not a list per line: "Todos" moves half a million of them.
    const QVector<QString>& origen = m->celdas();
    QVector<QString> celdas;
    celdas.reserve(filas.size() * 2);
    for (int f : std::as_const(filas)) {
        celdas.append(origen.at(qsizetype(f) * 2));
        celdas.append(origen.at(qsizetype(f) * 2 + 1));
    }
    lstdestinos->modelo()->anadirCeldas(std::move(celdas));
    m->quitarFilas(filas);
}

// A list stays where it is and can be added again.
void frmSeleccion::anadirListas(QList<int> filas) {
    const ModeloListado* m = lstlistas->modelo();
    std::sort(filas.begin(), filas.end(), std::greater<int>());
    QList<QStringList> lineas;
    for (int f : filas) lineas.append({m->texto(f, 1), detalleLista(m->texto(f, 2))});
    lstdestinos->modelo()->anadirFilas(lineas);
}

void frmSeleccion::devolverDestino(int fila) {
    ModeloListado* m = lstdestinos->modelo();
    if (m->texto(fila, 0).isEmpty()) return;
    // A list never left its own list; a contact goes back to the end.
    if (!m->texto(fila, 1).contains(u"Lista"_s)) lstcontactos->modelo()->anadirFila(m->fila(fila));
    m->quitarFilas({fila});
}

void frmSeleccion::cmdVaciarLista_Click() {
    lstdestinos->modelo()->limpiar();
    msCargarListados();
}

void frmSeleccion::cmdBuscar_Click() {
    const ModeloListado* m = lstcontactos->modelo();
    QStringList nombres;
    for (int f = 0; f < m->rowCount(); ++f) nombres.append(m->texto(f, 0));
    const int fila = buscarContacto(nombres, txtBuscar->text());
    if (fila < 0) {
        if (m->rowCount() > 0) ui().msgBox(u"Usuario inexistente"_s, Msg::Information);
        return;
    }
    lstcontactos->clearSelection();
    lstcontactos->selectionModel()->select(lstcontactos->modelo()->index(fila, 0),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void frmSeleccion::elegirDestinos(std::function<void(const QString&)> alTerminar) {
    const QVector<QString>& destinos = lstdestinos->modelo()->celdas();
    if (destinos.isEmpty()) {
        alTerminar({});
        return;
    }
    // Every contact of a large book takes some turns: the screen takes
    // nothing meanwhile.
    m_ocupacion.soltar();
    m_ocupacion.ocupar(this, {lstcontactos, lstlistas, lstdestinos, txtBuscar, cmdBuscar, Command1,
                              cmdTodos, Command2, cmdTodoslista, cmdVaciarLista, cmdAdd, cmdClose});
    ++m_lectura;
    QPointer<frmSeleccion> pantalla(this);
    msDestinosSeleccionados(destinos, [pantalla, alTerminar = std::move(alTerminar)](
                                          const Hecho& hecho, const QString& aliases) {
        if (!pantalla) return;
        pantalla->m_ocupacion.soltar();
        mostrar(hecho);
        alTerminar(aliases);
    });
}

void frmSeleccion::cmdAdd_Click() {
    QPointer<frmSeleccion> pantalla(this);
    elegirDestinos([pantalla](const QString& aliases) {
        estadoAplicacion().gsDestinos = aliases;
        if (pantalla) pantalla->accept();
    });
}

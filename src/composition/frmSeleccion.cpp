#include "composition/frmSeleccion.h"

#include "app/AppState.h"
#include "composition/ListaInforme.h"
#include "composition/Seleccion.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
QPushButton* boton(QWidget* padre, const QString& nombre, const QString& texto) {
    auto* b = new QPushButton(texto, padre);
    b->setObjectName(nombre);
    b->setAutoDefault(false);
    return b;
}
}  // namespace

frmSeleccion::frmSeleccion(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmSeleccion"_s);
    setWindowTitle(u"Selección de destinatarios"_s);
    setWindowIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    setModal(true);

    lstcontactos = new ListaInforme(u"lstcontactos"_s, {u"Nombre"_s, u"Número"_s}, this);
    lstcontactos->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lstlistas =
        new ListaInforme(u"lstlistas"_s, {u"Lista"_s, u"Nombre"_s, u"Nº Contactos"_s}, this);
    lstlistas->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lstdestinos = new ListaInforme(u"lstdestinos"_s, {u"Nombre"_s, u"Número"_s}, this);
    lstdestinos->setSelectionMode(QAbstractItemView::SingleSelection);
    txtBuscar = new QLineEdit(this);
    txtBuscar->setObjectName(u"txtBuscar"_s);

    auto* cmdBuscar = boton(this, u"cmdBuscar"_s, u"&Buscar"_s);
    auto* Command1 = boton(this, u"Command1"_s, u"Para >"_s);
    auto* cmdTodos = boton(this, u"cmdTodos"_s, u"Todos >>"_s);
    auto* Command2 = boton(this, u"Command2"_s, u"Para >"_s);
    auto* cmdTodoslista = boton(this, u"cmdTodoslista"_s, u"Todos >>"_s);
    auto* cmdVaciarLista = boton(this, u"cmdVaciarLista"_s, u"<<<<"_s);
    cmdVaciarLista->setToolTip(u"Vaciar Lista"_s);
    auto* cmdAdd = boton(this, u"cmdAdd"_s, u"&Aceptar"_s);
    auto* cmdClose = boton(this, u"cmdClose"_s, u"&Cancelar"_s);

    auto* izquierda = new QVBoxLayout();
    izquierda->addWidget(new QLabel(u"Buscar Contactos"_s, this));
    auto* filaBuscar = new QHBoxLayout();
    filaBuscar->addWidget(txtBuscar, 1);
    filaBuscar->addWidget(cmdBuscar);
    izquierda->addLayout(filaBuscar);
    izquierda->addWidget(new QLabel(u"Contactos"_s, this));
    izquierda->addWidget(lstcontactos, 2);
    izquierda->addWidget(new QLabel(u"Listas"_s, this));
    izquierda->addWidget(lstlistas, 1);

    auto* botonesContactos = new QVBoxLayout();
    botonesContactos->addStretch(1);
    botonesContactos->addWidget(Command1);
    botonesContactos->addWidget(cmdTodos);
    botonesContactos->addStretch(1);
    botonesContactos->addWidget(Command2);
    botonesContactos->addWidget(cmdTodoslista);
    botonesContactos->addStretch(1);
    botonesContactos->addWidget(cmdVaciarLista);

    auto* derecha = new QVBoxLayout();
    derecha->addWidget(new QLabel(u"Destinos Seleccionados"_s, this));
    derecha->addWidget(lstdestinos, 1);
    auto* filaAceptar = new QHBoxLayout();
    filaAceptar->addStretch(1);
    filaAceptar->addWidget(cmdAdd);
    filaAceptar->addWidget(cmdClose);
    derecha->addLayout(filaAceptar);

    auto* capa = new QHBoxLayout(this);
    capa->addLayout(izquierda, 3);
    capa->addLayout(botonesContactos);
    capa->addLayout(derecha, 3);
    resize(760, 520);

    connect(cmdBuscar, &QPushButton::clicked, this, &frmSeleccion::cmdBuscar_Click);
    connect(txtBuscar, &QLineEdit::textChanged, this, &frmSeleccion::cmdBuscar_Click);
    connect(Command1, &QPushButton::clicked, this, [this] { moverContactos(false); });
    connect(cmdTodos, &QPushButton::clicked, this, [this] { moverContactos(true); });
    connect(Command2, &QPushButton::clicked, this, [this] { anadirListas(false); });
    connect(cmdTodoslista, &QPushButton::clicked, this, [this] { anadirListas(true); });
    connect(lstcontactos, &QAbstractItemView::doubleClicked, this,
            [this](const QModelIndex& i) { moverContacto(i.row()); });
    connect(lstlistas, &QAbstractItemView::doubleClicked, this,
            [this](const QModelIndex& i) { anadirLista(i.row()); });
    connect(lstdestinos, &QAbstractItemView::doubleClicked, this,
            [this](const QModelIndex& i) { devolverDestino(i.row()); });
    connect(cmdVaciarLista, &QPushButton::clicked, this, &frmSeleccion::cmdVaciarLista_Click);
    connect(cmdAdd, &QPushButton::clicked, this, &frmSeleccion::cmdAdd_Click);
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::reject);

    msCargarListados();
}

void frmSeleccion::msCargarListados() {
    QVector<QString> celdas;
    if (leerContactosSeleccion(&celdas)) lstcontactos->modelo()->asignar(std::move(celdas));
    if (leerListasSeleccion(&celdas)) lstlistas->modelo()->asignar(std::move(celdas));
}

void frmSeleccion::moverContacto(int fila) {
    ModeloInforme* m = lstcontactos->modelo();
    if (fila < 0 || fila >= m->rowCount() || m->texto(fila, 0).isEmpty()) return;
    lstdestinos->modelo()->anadirFila(m->fila(fila));
    m->quitarFila(fila);
}

void frmSeleccion::moverContactos(bool todos) {
    ModeloInforme* m = lstcontactos->modelo();
    QList<int> filas;
    if (todos) {
        for (int f = m->rowCount() - 1; f >= 0; --f) filas.append(f);
    } else {
        filas = lstcontactos->filasSeleccionadas();
    }
    // From the last line up, so the lines still to visit keep their place.
    for (int f : filas) {
        lstdestinos->modelo()->anadirFila(m->fila(f));
        m->quitarFila(f);
    }
}

void frmSeleccion::anadirLista(int fila) {
    const ModeloInforme* m = lstlistas->modelo();
    if (fila < 0 || fila >= m->rowCount() || m->texto(fila, 0).isEmpty()) return;
    lstdestinos->modelo()->anadirFila({m->texto(fila, 1), detalleLista(m->texto(fila, 2))});
}

void frmSeleccion::anadirListas(bool todos) {
    const ModeloInforme* m = lstlistas->modelo();
    QList<int> filas;
    if (todos) {
        for (int f = m->rowCount() - 1; f >= 0; --f) filas.append(f);
    } else {
        filas = lstlistas->filasSeleccionadas();
    }
    for (int f : filas)
        lstdestinos->modelo()->anadirFila({m->texto(f, 1), detalleLista(m->texto(f, 2))});
}

void frmSeleccion::devolverDestino(int fila) {
    ModeloInforme* m = lstdestinos->modelo();
    if (fila < 0 || fila >= m->rowCount() || m->texto(fila, 0).isEmpty()) return;
    // A list never left its own list; a contact goes back to the end.
    if (!m->texto(fila, 1).contains(u"Lista"_s)) lstcontactos->modelo()->anadirFila(m->fila(fila));
    m->quitarFila(fila);
}

void frmSeleccion::cmdVaciarLista_Click() {
    lstdestinos->modelo()->limpiar();
    msCargarListados();
}

void frmSeleccion::cmdBuscar_Click() {
    const int fila = buscarContacto(lstcontactos->modelo()->textos(), txtBuscar->text());
    if (fila < 0) {
        if (lstcontactos->modelo()->rowCount() > 0)
            ui().msgBox(u"Usuario inexistente"_s, Msg::Information);
        return;
    }
    lstcontactos->clearSelection();
    lstcontactos->selectionModel()->select(lstcontactos->modelo()->index(fila, 0),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

void frmSeleccion::cmdAdd_Click() {
    const ModeloInforme* m = lstdestinos->modelo();
    QVector<DestinoElegido> destinos;
    for (int f = 0; f < m->rowCount(); ++f) destinos.append({m->texto(f, 0), m->texto(f, 1)});
    appState().gsDestinos = destinos.isEmpty() ? QString() : msDestinosSeleccionados(destinos);
    accept();
}

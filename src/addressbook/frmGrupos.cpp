#include "addressbook/frmGrupos.h"

#include "addressbook/frmUserGroup.h"
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
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmGrupos::frmGrupos(QWidget* parent) : QWidget(parent) {
    identificar(this, u"frmGrupos"_s, u"Listas Locales"_s, u"listas"_s);
    ListView1 =
        new Listado(u"ListView1"_s, {u"Código"_s, u"Nombre de Lista"_s, u"Nº Contactos"_s}, this);
    nombreAccesible(ListView1, u"Listas Locales"_s);
    ListView1->setColumnWidth(0, 70);
    ListView1->setColumnWidth(1, 260);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Nueva Lista"_s);
    cmdEdit = botonConNombre(this, u"cmdEdit"_s, u"&Editar Nombre"_s);
    cmdDelete = botonConNombre(this, u"cmdDelete"_s, u"E&liminar"_s);
    cmdUsuarios = botonConNombre(this, u"cmdUsuarios"_s, u"C&ontactos de la Lista"_s);
    cmdPublicar = botonConNombre(this, u"cmdPublicar"_s, u"Publicar Lista Web"_s,
                                 u"Publicar como Lista Web"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cerrar"_s);
    auto* h = new QHBoxLayout(this);
    h->addWidget(ListView1, 1);
    h->addLayout(columnaBotones({cmdAdd, cmdEdit, cmdDelete, cmdUsuarios, cmdPublicar}, cmdClose));
    resize(620, 380);

    connect(cmdAdd, &QPushButton::clicked, this, &frmGrupos::cmdAdd_Click);
    connect(cmdEdit, &QPushButton::clicked, this, &frmGrupos::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmGrupos::cmdDelete_Click);
    connect(cmdUsuarios, &QPushButton::clicked, this, &frmGrupos::cmdUsuarios_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmGrupos::cmdUsuarios_Click);
    connect(cmdPublicar, &QPushButton::clicked, this, &frmGrupos::cmdPublicar_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });
    connect(ListView1->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (ListView1->filaActual() >= 0)
            ListView1->setToolTip(u"Doble Clic para editar usuarios de la Lista"_s);
    });

    msAbrirListas();
}

void frmGrupos::msAbrirListas() {
    try {
        adoPrimaryRS = abrirListasConContactos();
    } catch (const ErrorBD&) {
        adoPrimaryRS = ResultadoConsulta();
    }
    msPintarListas();
}

void frmGrupos::msPintarListas() {
    const ResultadoConsulta& rs = adoPrimaryRS;
    QVector<QString> celdas;
    for (int f = 0; f < rs.recordCount(); ++f) {
        celdas.append(u"%1"_s.arg(numeroDe(rs.value(f, u"Grupo"_s)), 3, 10, QChar(u'0')));
        celdas.append(textoDe(rs.value(f, u"Nombre"_s)));
        celdas.append(textoDe(rs.value(f, u"Contactos"_s)));
    }
    ListView1->modelo()->asignar(std::move(celdas));
}

int frmGrupos::filaElegida() const {
    const int linea = ListView1->filaActual();
    if (ListView1->modelo()->texto(linea, 0).isEmpty()) return -1;
    // Lists are found again by name: of two equal names the first one wins.
    return primeraFilaCon(adoPrimaryRS, u"Nombre"_s, ListView1->modelo()->texto(linea, 1));
}

void frmGrupos::abrirMiembros(const QString& nombre, int16_t grupo) {
    frmUserGroup miembros(this);
    miembros.sNombreGrupo = nombre;
    miembros.nCodGrupo = grupo;
    miembros.msCargarUsuariosParaGrupo();
    miembros.exec();
}

void frmGrupos::cmdAdd_Click() {
    const QString nombre =
        ui().inputBox(u"Inserte un nombre para la nueva Lista"_s, u"Alta de Listas"_s, QString());
    if (!nombre.isEmpty()) {
        const Resultado<int> grupo = msAltaLista(nombre);
        // A new list gets its members at once.
        if (mostrar(grupo)) abrirMiembros(nombre, int16_t(*grupo));
    }
    msAbrirListas();
}

void frmGrupos::cmdEdit_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    const QString actual = textoDe(adoPrimaryRS.value(f, u"Nombre"_s));
    const QString nombre =
        ui().inputBox(u"Inserte el nuevo nombre para la Lista"_s, u"Edicion de Lista"_s, actual);
    if (!nombre.isEmpty())
        mostrar(
            msRenombrarLista(int16_t(numeroDe(adoPrimaryRS.value(f, u"Grupo"_s))), actual, nombre));
    msAbrirListas();
}

void frmGrupos::cmdDelete_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    const auto grupo = int16_t(numeroDe(adoPrimaryRS.value(f, u"Grupo"_s)));
    const QString nombre = textoDe(adoPrimaryRS.value(f, u"Nombre"_s));
    bool miembros = false;
    try {
        miembros = listaConMiembros(grupo);
    } catch (const ErrorBD&) {
        // Errors are ignored here, as in the lists' other routines.
        msAbrirListas();
        return;
    }
    // The question names the members when there are any.
    if (!confirmar(miembros ? u"La Lista   '"_s + nombre +
                                  u"'   tiene Contactos asignados. ¿Quiere eliminar la Lista ?"_s
                            : u"Esta a punto de eliminar la Lista   '"_s + nombre +
                                  u"'   , ¿esta seguro ?"_s)) {
        msAbrirListas();
        return;
    }
    m_ocupacion.ocupar(this, {ListView1, cmdAdd, cmdEdit, cmdDelete, cmdUsuarios, cmdPublicar});
    QPointer<frmGrupos> pantalla(this);
    msBorrarLista(grupo, [pantalla](bool) {
        if (!pantalla) return;
        pantalla->m_ocupacion.soltar();
        pantalla->msAbrirListas();
    });
}

void frmGrupos::cmdUsuarios_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    abrirMiembros(textoDe(adoPrimaryRS.value(f, u"Nombre"_s)),
                  int16_t(numeroDe(adoPrimaryRS.value(f, u"Grupo"_s))));
    msAbrirListas();
}

void frmGrupos::cmdPublicar_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    m_listaAPublicar = {textoDe(adoPrimaryRS.value(f, u"Nombre"_s)),
                        int16_t(numeroDe(adoPrimaryRS.value(f, u"Grupo"_s)))};
    Q_EMIT publicacionPedida(m_listaAPublicar);
    msAbrirListas();
}

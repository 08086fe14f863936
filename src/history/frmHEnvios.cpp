#include "history/frmHEnvios.h"

#include "base/EstadoAplicacion.h"
#include "base/Reloj.h"
#include "db/BaseDatos.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/Montaje.h"
#include "widgets/Ocupacion.h"
#include "widgets/PantallasHijas.h"

#include <QDateEdit>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
const QStringList& cabeceras() {
    static const QStringList c{u"Enviado      "_s, u"Número"_s,    u"Cuenta (Remitente)"_s,
                               u"Mensaje"_s,       u"Resultado"_s, u"id"_s};
    return c;
}
}  // namespace

frmHEnvios::frmHEnvios(QWidget* parent)
    : QWidget(parent), m_modelo(new ModeloPaginado(Historico::definicion(), cabeceras(), this)) {
    identificar(this, u"frmHEnvios"_s, u"Mensajes Enviados"_s, u"enviados"_s);

    crearLista();
    crearEliminacion();
    XPButton2 = botonConNombre(this, u"XPButton2"_s, u"&Reenviar Mensaje Seleccionado"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cerrar"_s);
    auto* v = new QVBoxLayout(this);
    v->addWidget(ListView1, 1);
    v->addWidget(Frame1);
    v->addLayout(fila({XPButton2, nullptr, cmdClose}));
    resize(900, 520);

    connect(Option1_1, &QRadioButton::toggled, txtfecha, &QDateEdit::setEnabled);
    Option1_1->setChecked(true);
    connect(ListView1->header(), &QHeaderView::sectionClicked, this,
            &frmHEnvios::ordenarPorColumna);
    connect(ListView1, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& i) {
        if (i.isValid()) XPButton2_Click();
    });
    connect(XPButton1, &QPushButton::clicked, this, &frmHEnvios::XPButton1_Click);
    nombreAccesible(ListView1, u"Mensajes Enviados"_s);
    nombreAccesible(txtfecha, u"Fecha anterior a"_s);
    conectarUnaVez(XPButton2, this, &frmHEnvios::XPButton2_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });

    msCargarHistorico();
}

void frmHEnvios::crearLista() {
    ListView1 = control<VistaLineas>(this, u"ListView1"_s);
    ListView1->setModel(m_modelo);
    ListView1->setColumnWidth(Historico::Enviado, 140);
    ListView1->setColumnWidth(Historico::Numero, 120);
    ListView1->setColumnWidth(Historico::Cuenta, 130);
    ListView1->setColumnWidth(Historico::Mensaje, 300);
    ListView1->setColumnWidth(Historico::Resultado, 160);
    // The date's sort key is there for the sort, not to be read.
    ListView1->setColumnHidden(Historico::Id, true);
}

void frmHEnvios::crearEliminacion() {
    Frame1 = control<QGroupBox>(this, u"Frame1"_s, u"Eliminación de Mensajes Enviados"_s);
    Option1_0 = control<QRadioButton>(Frame1, u"Option1_0"_s, u"Todos"_s);
    Option1_1 = control<QRadioButton>(Frame1, u"Option1_1"_s, u"Fecha anterior a:"_s);
    txtfecha = control<QDateEdit>(Frame1, u"txtfecha"_s, Reloj::today());
    txtfecha->setDisplayFormat(u"dd/MM/yyyy"_s);
    txtfecha->setCalendarPopup(true);
    XPButton1 = botonConNombre(Frame1, u"XPButton1"_s, u"Eliminar mensajes segun selección"_s);
    auto* marco = new QHBoxLayout(Frame1);
    marco->addWidget(Option1_0);
    marco->addSpacing(12);
    anadirPiezas(marco, {Option1_1, txtfecha});
    marco->addSpacing(12);
    anadirPiezas(marco, {XPButton1, nullptr});
}

void frmHEnvios::msCargarHistorico() {
    m_modelo->ordenar(Historico::Id, true);
    // The table comes newest first: that is the date's order, descending.
    m_columna = Historico::Id;
    m_descendente = true;
    pintarCabecera();
    // A million rows are counted over turns; meanwhile the screen takes
    // nothing but "Cerrar", as while it deletes.
    const int lectura = ++m_lectura;
    if (!ocupada()) ocupar(true);
    QPointer<frmHEnvios> pantalla(this);
    Historico::contar([pantalla, lectura](std::optional<int> filas) {
        if (!pantalla || lectura != pantalla->m_lectura) return;
        pantalla->ocupar(false);
        // Unreadable, the list shows empty.
        pantalla->m_modelo->cargar(filas.value_or(0));
    });
}

void frmHEnvios::ordenarPorColumna(int columna) {
    // The date shows day first: its header sorts by the hidden key.
    const int clave = columna == Historico::Enviado ? Historico::Id : columna;
    m_descendente = clave == m_columna ? !m_descendente : false;
    m_columna = clave;
    m_modelo->ordenar(m_columna, m_descendente);
    pintarCabecera();
}

void frmHEnvios::pintarCabecera() {
    const int visible = m_columna == Historico::Id ? int(Historico::Enviado) : m_columna;
    ListView1->header()->setSortIndicator(visible,
                                          m_descendente ? Qt::DescendingOrder : Qt::AscendingOrder);
}

int frmHEnvios::filaElegida() const {
    const QModelIndexList filas = ListView1->selectionModel()->selectedRows();
    return filas.isEmpty() ? -1 : filas.first().row();
}

void frmHEnvios::XPButton2_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    const QString numero = m_modelo->texto(f, Historico::Numero);
    const QString mensaje = m_modelo->texto(f, Historico::Mensaje);
    if (!confirmar(u"¿Seguro que desea Reenviar el Mensaje Seleccionado? \n\nMensaje: "_s +
                   mensaje + u"\nNúmero: "_s + numero + u"\nDe fecha : "_s +
                   m_modelo->texto(f, Historico::Enviado)))
        return;
    if (!mostrar(msReenviarMensaje(numero, mensaje))) return;
    ui().msgBox(
        u"El mensaje está listo para enviar en la Bandeja de Salida\nsi tiene activado el Modo "
        u"Transmisor el mensaje se enviará en unos segundos."_s,
        Msg::Information);
}

void frmHEnvios::XPButton1_Click() {
    if (Option1_0->isChecked()) {
        if (!confirmar(
                u"Está seguro de querer eliminar todos los mensajes enviados del histórico?"_s))
            return;
        borrar(true, {});
    } else {
        const QString fecha = txtfecha->text();
        const Resultado<QDate> dia = diaParaBorrar(fecha);
        if (!mostrar(dia)) return;
        if (!confirmar(u"Se van a elminar todos los mensajes con fecha anterior a "_s + fecha +
                       u"\n\n¿Está seguro de elminar estos mensajes?"_s))
            return;
        borrar(false, *dia);
    }
}

void frmHEnvios::borrar(bool todos, const QDate& dia) {
    ocupar(true);
    // The screen may be closed meanwhile; the deletion goes on without it.
    QPointer<frmHEnvios> pantalla(this);
    auto alTerminar = [pantalla] {
        if (!pantalla) return;
        pantalla->ocupar(false);
        pantalla->msCargarHistorico();
    };
    if (todos)
        msBorrarTodos(alTerminar);
    else
        msBorrarAnteriores(dia, alTerminar);
}

void frmHEnvios::ocupar(bool ocupada) {
    if (!ocupada) {
        m_ocupacion.soltar();
        return;
    }
    // The list too: its pages would show the deletion half done.
    QList<QWidget*> controles = findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    controles.removeOne(cmdClose);
    m_ocupacion.ocupar(this, controles);
}

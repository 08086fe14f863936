#include "accounts/frmCanales.h"

#include "accounts/frmNewCanal.h"
#include "accounts/mdoCuentas.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/InterfazUsuario.h"
#include "base/Pantallas.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
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

frmCanales::frmCanales(QWidget* parent) : QWidget(parent) {
    identificar(this, u"frmCanales"_s, u"Cuentas"_s, u"cuentas"_s);
    ListView1 = new Listado(u"ListView1"_s,
                            {u"Cuenta"_s, u"Remitente"_s, u"Principal"_s, u"Saldo"_s, u"Usuario"_s,
                             u"Codigo de Cuenta"_s},
                            this);
    nombreAccesible(ListView1, u"Cuentas"_s);
    ListView1->setColumnWidth(0, 170);
    for (int c = 1; c < 5; ++c) ListView1->setColumnWidth(c, 90);

    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"Ag&regar Cuenta"_s);
    cmdEdit = botonConNombre(this, u"cmdEdit"_s, u"&Editar cuenta"_s);
    cmdDelete = botonConNombre(this, u"cmdDelete"_s, u"E&liminar Cuenta"_s);
    cmdPrede = botonConNombre(this, u"cmdPrede"_s, u"Hacer Cuenta &Principal"_s);
    cmdGetSaldo =
        botonConNombre(this, u"cmdGetSaldo"_s, u"Ver Saldo"_s, u"Consultar Saldo de Cuenta"_s);
    cmdRecarga =
        botonConNombre(this, u"cmdRecarga"_s, u"Recarga"_s, u"Ir a página de Recarga de Saldo"_s);
    cmdRegistro = botonConNombre(this, u"cmdRegistro"_s,
                                 u"Registrar &NUEVA CUENTA en Plataforma de Mensajes"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cerrar"_s);

    QHBoxLayout* arriba = fila({{ListView1, 1}});
    arriba->addLayout(
        columna({cmdAdd, cmdEdit, cmdDelete, cmdPrede, cmdGetSaldo, cmdRecarga, nullptr}));
    // Cerrar last, in the lower right corner as on every screen, so Tab
    // meets the buttons in the order they stand.
    auto* v = new QVBoxLayout(this);
    v->addLayout(arriba, 1);
    v->addLayout(fila({{cmdRegistro, 1}, cmdClose}));
    resize(860, 380);

    connect(cmdAdd, &QPushButton::clicked, this, &frmCanales::cmdAdd_Click);
    connect(cmdEdit, &QPushButton::clicked, this, &frmCanales::cmdEdit_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmCanales::cmdEdit_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmCanales::cmdDelete_Click);
    connect(cmdPrede, &QPushButton::clicked, this, &frmCanales::cmdPrede_Click);
    conectarUnaVez(cmdGetSaldo, this, &frmCanales::cmdGetSaldo_Click);
    connect(cmdRecarga, &QPushButton::clicked, this, &frmCanales::cmdRecarga_Click);
    connect(cmdRegistro, &QPushButton::clicked, this, &frmCanales::cmdRegistro_Click);
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarPantallaHija(this); });
    // Whoever changed the accounts, this list shows them as they are.
    connect(&Avisos::instancia(), &Avisos::cuentasCambiadas, this, &frmCanales::msrefrescar);

    msrefrescar();
    ListView1->modelo()->sort(0, Qt::AscendingOrder);
}

void frmCanales::msrefrescar() {
    msCargarListaCuentas();
}

void frmCanales::msCargarListaCuentas() {
    try {
        adoPrimaryRS = msAbrirCuentas();
    } catch (const ErrorQuelmo&) {
        adoPrimaryRS = ResultadoConsulta();
        ListView1->modelo()->limpiar();
        msBaseNoValida();
        return;
    }
    const ResultadoConsulta& rs = adoPrimaryRS;
    QVector<QString> celdas;
    celdas.reserve(rs.recordCount() * 6);
    for (int f = 0; f < rs.recordCount(); ++f) {
        celdas.append(textoDe(rs.value(f, u"Nombre"_s)));
        celdas.append(textoDe(rs.value(f, u"Remitente"_s)));
        celdas.append(numeroDe(rs.value(f, u"Principal"_s)) == 1 ? u"Sí"_s : u"No"_s);
        celdas.append(textoSaldo(rs.value(f, u"saldo"_s)));
        celdas.append(textoDe(rs.value(f, u"usuario"_s)));
        celdas.append(textoDe(rs.value(f, u"canal"_s)));
    }
    ListView1->modelo()->asignar(std::move(celdas));
}

int frmCanales::filaElegida() const {
    const int linea = ListView1->filaActual();
    if (linea < 0) return -1;
    return msFilaDeCuenta(adoPrimaryRS, ListView1->modelo()->texto(linea, 0));
}

int16_t frmCanales::canalDe(int fila) const {
    return int16_t(numeroDe(adoPrimaryRS.value(fila, u"canal"_s)));
}

void frmCanales::cmdAdd_Click() {
    frmNewCanal::editar(false, int16_t(msSiguienteCanal()), ventanaPadreModal());
    msComprobarPrincipal();
    msAvisarCuentas();
}

void frmCanales::cmdEdit_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    frmNewCanal::editar(true, canalDe(f), ventanaPadreModal());
    // Answering no to a refusal changes nothing, yet the list is read again.
    msAvisarCuentas();
}

void frmCanales::cmdDelete_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    const int16_t canal = canalDe(f);
    if (mostrar(msPuedeEliminarCuenta(canal)) &&
        confirmar(u"Esta a punto de eliminar una Cuenta de la aplicación, esta seguro ?"_s))
        mostrar(msEliminarCuenta(canal));
    msrefrescar();
}

void frmCanales::cmdPrede_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    const QString nombre = textoDe(adoPrimaryRS.value(f, u"Nombre"_s));
    if (confirmar(u"Quiere establecer la Cuenta '"_s + nombre +
                  u"' como Cuenta Principal de Envío?"_s))
        msHacerPrincipal(canalDe(f));
}

QCoro::Task<> frmCanales::cmdGetSaldo_Click() {
    const int f = filaElegida();
    if (f < 0) co_return;
    const Intercambio::Encargo encargo(this);
    mostrar(co_await msVerSaldo(canalDe(f), encargo.cancelacion()));
}

void frmCanales::cmdRecarga_Click() {
    const int f = filaElegida();
    if (f < 0) return;
    msAbrirUrl(msUrlRecarga(textoDe(adoPrimaryRS.value(f, u"usuario"_s))));
}

void frmCanales::cmdRegistro_Click() {
    Pantallas::abrir(u"frmRegistro"_s);
    msrefrescar();
}

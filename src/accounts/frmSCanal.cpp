#include "accounts/frmSCanal.h"

#include "accounts/mdoCuentas.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Listado.h"
#include "widgets/Montaje.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSCanal::frmSCanal(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmSCanal"_s, u"Seleccione una Cuenta para este envio"_s, u"cuentas"_s);
    ListView1 = new Listado(u"ListView1"_s, {u"Cuenta"_s, u"Contacto"_s}, this);
    nombreAccesible(ListView1, u"Cuentas"_s);
    ListView1->setColumnWidth(0, 200);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Asignar Cuenta"_s);
    auto* botones = new QHBoxLayout;
    botones->addStretch();
    botones->addWidget(cmdAdd);
    auto* v = new QVBoxLayout(this);
    v->addWidget(ListView1, 1);
    v->addLayout(botones);
    resize(420, 280);

    try {
        m_cuentas = msAbrirCuentas();
    } catch (const ErrorQuelmo&) {
        m_cuentas = ResultadoConsulta();
    }
    QVector<QString> celdas;
    for (int f = 0; f < m_cuentas.recordCount(); ++f) {
        celdas.append(textoDe(m_cuentas.value(f, u"Nombre"_s)));
        celdas.append(textoDe(m_cuentas.value(f, u"usuario"_s)));
    }
    ListView1->modelo()->asignar(std::move(celdas));

    connect(cmdAdd, &QPushButton::clicked, this, &frmSCanal::cmdAdd_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmSCanal::cmdAdd_Click);
}

void frmSCanal::cmdAdd_Click() {
    const int linea = ListView1->filaActual();
    if (linea < 0) return;
    const int f = msFilaDeCuenta(m_cuentas, ListView1->modelo()->texto(linea, 0));
    // A name no account has any more keeps the picker open.
    if (f < 0) return;
    Q_EMIT Avisos::instancia().cuentaElegida(int(numeroDe(m_cuentas.value(f, u"canal"_s))));
    accept();
}

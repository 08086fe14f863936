#include "accounts/frmTipoRegistro.h"

#include "base/Pantallas.h"
#include "widgets/Boton.h"
#include "widgets/Montaje.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
void pintar(QLabel* l, const QColor& c) {
    QPalette p = l->palette();
    p.setColor(QPalette::WindowText, c);
    l->setPalette(p);
}
}  // namespace

frmTipoRegistro::frmTipoRegistro(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmTipoRegistro"_s, u"Quelmo Mensajes SMS"_s, u"cuentas"_s);

    Label2 = new QLabel(
        u"Se ha detectado que no tiene una Cuenta configurada en Quelmo Mensajes SMS"_s, this);
    Label2->setObjectName(u"Label2"_s);
    Label2->setWordWrap(true);
    QFont f = Label2->font();
    f.setBold(true);
    f.setPointSizeF(f.pointSizeF() * 1.2);
    Label2->setFont(f);
    pintar(Label2, Qt::red);
    Label1 = new QLabel(u"Por favor indíquenos si Vd. ya es un usuario registrado."_s, this);
    Label1->setObjectName(u"Label1"_s);
    Label1->setWordWrap(true);
    cmdUR = botonConNombre(this, u"cmdUR"_s, u"Soy usuario registrado"_s);
    cmdURR = botonConNombre(this, u"cmdURR"_s, u"Deseo registrarme (Registro gratuito)"_s);
    for (QPushButton* b : {cmdUR, cmdURR}) b->setAutoDefault(false);
    Timer1 = new QTimer(this);
    Timer1->setObjectName(u"Timer1"_s);
    Timer1->setInterval(500);

    auto* botones = new QHBoxLayout;
    botones->addWidget(cmdUR);
    botones->addWidget(cmdURR);
    auto* v = new QVBoxLayout(this);
    v->addWidget(Label2);
    v->addWidget(Label1);
    v->addSpacing(8);
    v->addLayout(botones);
    setMinimumWidth(480);

    connect(cmdUR, &QPushButton::clicked, this, [this] { elegir(100); });
    connect(cmdURR, &QPushButton::clicked, this, [this] { elegir(200); });
    connect(Timer1, &QTimer::timeout, this, &frmTipoRegistro::Timer1_Timer);
    Timer1->start();
}

QColor frmTipoRegistro::siguienteColor(const QColor& actual) {
    if (actual == QColor(Qt::red)) return Qt::blue;
    if (actual == QColor(Qt::blue)) return Qt::green;
    if (actual == QColor(Qt::green)) return Qt::red;
    return Qt::blue;
}

void frmTipoRegistro::Timer1_Timer() {
    pintar(Label2, siguienteColor(Label2->palette().color(QPalette::WindowText)));
}

void frmTipoRegistro::elegir(int eleccion) {
    m_eleccion = eleccion;
    accept();
}

void frmTipoRegistro::done(int r) {
    // Without an answer the notice stays: Escape and the close box do nothing.
    if (m_eleccion != 100 && m_eleccion != 200) return;
    Timer1->stop();
    QDialog::done(r);
}

void frmTipoRegistro::closeEvent(QCloseEvent* evento) {
    if (m_eleccion != 100 && m_eleccion != 200) {
        evento->ignore();
        return;
    }
    QDialog::closeEvent(evento);
}

void frmTipoRegistro::ejecutar(QWidget* padre) {
    frmTipoRegistro aviso(padre);
    aviso.exec();
    if (aviso.eleccion() == 100)
        Pantallas::abrir(u"frmIniCanal"_s);
    else if (aviso.eleccion() == 200)
        Pantallas::abrir(u"frmRegistro"_s);
}

#include "addressbook/frmSubirListaWeb.h"

#include "addressbook/mdoPublicar.h"
#include "base/EstadoAplicacion.h"
#include "delivery/Intercambio.h"
#include "widgets/Boton.h"
#include "widgets/Iconos.h"
#include "widgets/Montaje.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QThread>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmSubirListaWeb::frmSubirListaWeb(QWidget* parent) : QDialog(parent) {
    identificar(this, u"frmSubirListaWeb"_s, u"Publicar Lista Web"_s, u"listas"_s);

    Frame1 = control<QGroupBox>(this, u"Frame1"_s, u"Datos de Lista"_s);
    Nombre = control<QLineEdit>(Frame1, u"Nombre"_s);
    contactos = control<QLineEdit>(Frame1, u"contactos"_s);
    for (QLineEdit* e : {Nombre, contactos}) e->setReadOnly(true);
    ltag = control<QLineEdit>(Frame1, u"ltag"_s);
    // The platform takes keywords of plain letters and digits only.
    ltag->setValidator(
        new QRegularExpressionValidator(QRegularExpression(u"[A-Za-z0-9]*"_s), ltag));
    ImageCombo1 = control<QComboBox>(Frame1, u"ImageCombo1"_s);
    ImageCombo1->setPlaceholderText(u"No hay Cuentas"_s);
    ImageCombo1->setMinimumWidth(260);
    nborrar = control<QCheckBox>(Frame1, u"nborrar"_s,
                                 u"Borrar números de lista Web antes de publicar **"_s);

    auto* formulario = new QFormLayout(Frame1);
    formulario->addRow(u"Nombre de Lista Local"_s, Nombre);
    formulario->addRow(u"Numero de Contactos"_s, contactos);
    formulario->addRow(u"Nombre de Lista Web *"_s, ltag);
    formulario->addRow(u"Cuenta"_s, ImageCombo1);
    formulario->addRow(nborrar);

    Label2 = control<QLabel>(
        this, u"Label2"_s,
        u"* Introduza un nombre para su lista Web. Si ya existe alguna lista con esta "
        u"palabra clave en sus Listas Web esta se actualizará, sino se creará una nueva."_s);
    Label7 = control<QLabel>(
        this, u"Label7"_s,
        u"** Marque esta opción si desea borrar el contenido actual de la Lista Web. Si "
        u"esta opción está desmarcada la lista Web se actualizará."_s);
    for (QLabel* l : {Label2, Label7}) l->setWordWrap(true);

    cmdPublicar = botonConNombre(this, u"cmdPublicar"_s, u"Publicar Lista Web"_s);
    XPButton1 = botonConNombre(this, u"XPButton1"_s, u"Cerrar"_s);
    auto* v = new QVBoxLayout(this);
    anadirPiezas(v, {Frame1, Label2, Label7, nullptr});
    v->addLayout(fila({nullptr, cmdPublicar, XPButton1}));
    resize(520, 400);

    conectarUnaVez(cmdPublicar, this, &frmSubirListaWeb::cmdPublicar_Click);
    connect(XPButton1, &QPushButton::clicked, this, &QDialog::reject);
    msCargarCanales();
}

void frmSubirListaWeb::msCargarCanales() {
    ImageCombo1->clear();
    for (const CuentaPublicacion& c : msCuentasPublicacion()) {
        ImageCombo1->addItem(iconoQuelmo(u"cuentas"_s), c.texto, c.clave);
        if (c.principal) ImageCombo1->setCurrentIndex(ImageCombo1->count() - 1);
    }
}

void frmSubirListaWeb::msCargarDatos(int16_t grupo) {
    m_grupo = grupo;
    QString nombre, cuantos;
    if (!msDatosLista(grupo, &nombre, &cuantos)) return;
    Nombre->setText(nombre);
    contactos->setText(cuantos);
}

QCoro::Task<> frmSubirListaWeb::cmdPublicar_Click() {
    if (ltag->text().isEmpty()) {
        ui().msgBox(u"Escriba un nombre para publicar su Lista Web"_s, Msg::Exclamation,
                    u"Publicación Lista Web"_s);
        co_return;
    }
    // Without an account there is nothing to publish through.
    if (ImageCombo1->currentIndex() < 0) co_return;
    const int16_t canal = int16_t(ImageCombo1->currentData().toString().mid(1).toInt());

    // The screen waits for the platform, not the window.
    const Intercambio::Encargo encargo(this);
    setCursor(Qt::BusyCursor);
    setEnabled(false);
    co_await msPublicarLista(u"U"_s, m_grupo, ltag->text(), canal, nborrar->isChecked(),
                             encargo.cancelacion());
    if (encargo.abandonada()) co_return;
    setEnabled(true);
    unsetCursor();
}

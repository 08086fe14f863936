#include "addressbook/frmSubirListaWeb.h"

#include "addressbook/mdoPublicar.h"
#include "base/EstadoAplicacion.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
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
    const Resultado<QList<CuentaPublicacion>> cuentas = msCuentasPublicacion();
    if (!mostrar(cuentas)) return;
    for (const CuentaPublicacion& c : *cuentas) {
        ImageCombo1->addItem(iconoQuelmo(u"cuentas"_s), c.texto, c.clave);
        if (c.principal) ImageCombo1->setCurrentIndex(ImageCombo1->count() - 1);
    }
}

void frmSubirListaWeb::msCargarDatos(int16_t grupo) {
    m_grupo = grupo;
    std::optional<DatosLista> datos;
    try {
        datos = leerDatosLista(grupo);
    } catch (const ErrorQuelmo& e) {
        if (e.number() == ErrNum::ItemNotFound)
            msBaseNoValida();
        else
            mostrar(Hecho::no(u"Encontrado Error: "_s + e.description(), Msg::Exclamation));
        return;
    }
    if (!datos) return;
    Nombre->setText(datos->nombre);
    contactos->setText(datos->contactos);
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
    const ResultadoPublicacion r = co_await msPublicarLista(
        u"U"_s, m_grupo, ltag->text(), canal, nborrar->isChecked(), encargo.cancelacion());
    // Closed meanwhile: the answer has no screen to be told on.
    if (encargo.abandonada()) co_return;
    const QString titulo = u"Publicación de lista"_s;
    if (r.correcta)
        ui().msgBox(u"Publicación de Lista realizada correctamente\n\nContactos Nuevos: "_s +
                        r.CADD + u"\nContactos Actualizados: "_s + r.CUP + u"\nErrores : "_s +
                        r.CERR +
                        u"\n\nPuede comprobar sus listas en el menú /Contactos y Listas/Listas "
                        u"Web."_s,
                    Msg::Information, titulo);
    else
        mostrar(Hecho::no(u"FALLO en la Publicación de Lista"_s +
                          (r.causa.isEmpty() ? QString() : u"\n"_s + r.causa)),
                titulo);
    setEnabled(true);
    unsetCursor();
}

#include "import/frmSelectDB.h"

#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Error.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "db/Conexion.h"
#include "db/mdoDB.h"
#include "import/mdoImport.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Iconos.h"
#include "widgets/Montaje.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QStandardItemModel>
#include <QVBoxLayout>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr int kSegundos[] = {5, 10, 20, 30, 45, 60};

QLabel* etiquetaRuta(QWidget* padre, const QString& nombre) {
    auto* l = control<QLabel>(padre, nombre);
    l->setTextInteractionFlags(Qt::TextSelectableByMouse);
    l->setWordWrap(true);
    l->setMinimumWidth(420);
    return l;
}

}  // namespace

int frmSelectDB::segundosDeLinea(int linea) {
    return linea >= 0 && linea < 6 ? kSegundos[linea] : 60;
}

frmSelectDB::frmSelectDB(QWidget* parent) : QDialog(parent) {
    setObjectName(u"frmSelectDB"_s);
    setWindowIcon(iconoQuelmo(u"basedatos"_s));

    construir();

    connect(Cmblista, &QComboBox::currentIndexChanged, this, [this] { Cmblista_Click(); });
    connect(cmdexaminar, &QPushButton::clicked, this, [this] { cmdexaminar_Click(); });
    connect(XPButton1, &QPushButton::clicked, this, [this] { XPButton1_Click(); });
    connect(XPButton2, &QPushButton::clicked, this, [this] { XPButton2_Click(); });
    conectarUnaVez(cmdAdd, this, [this]() -> QCoro::Task<> {
        cerrarCon(true);
        co_return;
    });
    connect(cmdClose, &QPushButton::clicked, this, [this] { cerrarCon(false); });

    // Load.
    cmbIntervalo->addItems({u" 5 Segundos"_s, u"10 Segundos"_s, u"20 Segundos"_s, u"30 Segundos"_s,
                            u"45 Segundos"_s, u"60 Segundos"_s});
    Cmblista->addItems({u"No Añadir a Lista"_s, u"Nueva Lista"_s});
    Cmblista->addItems(msListasSeleccion());
    Cmblista->setCurrentIndex(0);
    Cmblista_Click();

    // The lines under the transmitter's minimum can't be chosen: the cycle
    // would run every minute instead.
    auto* lineas = qobject_cast<QStandardItemModel*>(cmbIntervalo->model());
    for (int i = 0; i < 6; ++i) {
        if (kSegundos[i] >= Ajustes::kIntervaloMinimo) continue;
        lineas->item(i)->setEnabled(false);
        lineas->item(i)->setToolTip(u"El tiempo mínimo es de 15 Segundos."_s);
    }
    // Opening the screen changes no setting: the combo shows the nearest
    // line to what is stored, and only a line the user picks is written.
    const std::optional<int> segundos = Ajustes::intervalo();
    const int valor = segundos.value_or(Ajustes::kIntervaloDefecto);
    int linea = 5;
    for (int i = 0; i < 6; ++i)
        if (std::abs(kSegundos[i] - valor) < std::abs(kSegundos[linea] - valor)) linea = i;
    cmbIntervalo->setCurrentIndex(linea);
    m_lineaCargada = linea;
    if (segundos) Q_EMIT Avisos::instancia().intervaloLeido(*segundos);
}

void frmSelectDB::construir() {
    Frame2 = control<QGroupBox>(this, u"Frame2"_s, u"Selección Actual"_s);
    lblactual = etiquetaRuta(Frame2, u"lblactual"_s);
    (new QVBoxLayout(Frame2))->addWidget(lblactual);
    // Both show a path, often the same one: each is named by its frame.
    nombreAccesible(lblactual, Frame2->title());

    Frame1 = control<QGroupBox>(this, u"Frame1"_s, u"Nueva selección"_s);
    lblFichero = etiquetaRuta(Frame1, u"lblFichero"_s);
    nombreAccesible(lblFichero, Frame1->title());
    cmdexaminar = botonConNombre(Frame1, u"cmdexaminar"_s, u"Examinar"_s);
    anadirPiezas(new QHBoxLayout(Frame1), {{lblFichero, 1}, cmdexaminar});

    Chkcontactos = control<QCheckBox>(this, u"Chkcontactos"_s, u"Importar Contactos de Mensajes"_s);
    lbllista = control<QLabel>(this, u"lbllista"_s, u"Añadir Contactos a Lista"_s);
    Cmblista = control<QComboBox>(this, u"Cmblista"_s);
    Label1 = control<QLabel>(this, u"Label1"_s, u"Nombre de lista"_s);
    lista = control<QLineEdit>(this, u"lista"_s);
    lblIntervalo = control<QLabel>(this, u"lblIntervalo"_s, u"Intervalo de chequeo "_s);
    cmbIntervalo = control<QComboBox>(this, u"cmbIntervalo"_s);
    lbllista->setBuddy(Cmblista);
    Label1->setBuddy(lista);
    lblIntervalo->setBuddy(cmbIntervalo);

    m_opciones = new QFormLayout;
    m_opciones->addRow(Chkcontactos);
    m_opciones->addRow(lbllista, Cmblista);
    m_opciones->addRow(Label1, lista);
    m_opciones->addRow(lblIntervalo, cmbIntervalo);

    XPButton1 = botonConNombre(this, u"XPButton1"_s, u"&Probar conexión"_s);
    XPButton2 = botonConNombre(this, u"XPButton2"_s, u"Anular Importación"_s);
    cmdAdd = botonConNombre(this, u"cmdAdd"_s, u"&Aceptar selección"_s);
    cmdClose = botonConNombre(this, u"cmdClose"_s, u"&Cancelar"_s);
    cmdAdd->setDefault(true);

    auto* todo = new QVBoxLayout(this);
    todo->addWidget(Frame2);
    todo->addWidget(Frame1);
    todo->addLayout(m_opciones);
    todo->addStretch(1);
    todo->addSpacing(8);
    todo->addLayout(fila({XPButton1, XPButton2, nullptr, cmdAdd, cmdClose}));
}

void frmSelectDB::showEvent(QShowEvent* event) {
    if (!m_activada) {
        m_activada = true;
        activar();
    }
    QDialog::showEvent(event);
}

void frmSelectDB::activar() {
    QString ruta;
    if (mbImportacion) {
        ruta = Ajustes::rutaImportacion(importacion);
        if (ruta.isEmpty()) ruta = directorioAplicacion() + u"/intercambio.txt"_s;
        m_tituloDialogo = u"Seleccione Fichero de intercambio"_s;
        m_filtroDialogo = u"Ficheros (*.txt);;Todos (*)"_s;
    } else {
        ruta = Ajustes::rutaBaseDatos();
        if (ruta.isEmpty()) ruta = rutaBaseDefecto();
        setWindowTitle(u"Seleccionar Base de Datos"_s);
        cmdAdd->setEnabled(false);
        m_tituloDialogo = u"Seleccione su Base de Datos"_s;
        m_filtroDialogo = u"Bases de Datos (*.db);;Todos (*)"_s;
    }
    lblactual->setText(ruta);
    lblFichero->setText(ruta);
    XPButton1->setVisible(!mbImportacion);
    XPButton2->setVisible(mbImportacion);
    m_opciones->setRowVisible(Chkcontactos, mbImportacion);
    m_opciones->setRowVisible(Cmblista, mbImportacion);
    Cmblista_Click();
    m_opciones->setRowVisible(cmbIntervalo,
                              mbImportacion && importacion == Ajustes::Importacion::Vigilada);
    adjustSize();
}

void frmSelectDB::Cmblista_Click() {
    const bool nueva = Cmblista->isVisibleTo(this) && Cmblista->currentIndex() == 1;
    m_opciones->setRowVisible(lista, nueva);
}

void frmSelectDB::cmdexaminar_Click() {
    const QString actual = lblactual->text();
    const QString desde = actual.isEmpty() ? directorioAplicacion() : actual;
    const QString elegido = ui().openFileName(m_tituloDialogo, desde, m_filtroDialogo);
    if (!elegido.isEmpty()) lblFichero->setText(elegido);
}

void frmSelectDB::XPButton1_Click() {
    const QString ruta = lblFichero->text();
    if (msValidarBD(ruta)) {
        ui().msgBox(u"Base de datos aceptada, pulse Aceptar Selección"_s, Msg::Information);
    } else {
        // A file that fails the test is upgraded; what that did shows at
        // acceptance.
        msActualizarBD(ruta);
        ui().msgBox(u"Base de datos actualizada y aceptada, pulse Aceptar Selección"_s,
                    Msg::Information);
    }
    cmdAdd->setEnabled(true);
    cmdAdd->setFocus();
}

void frmSelectDB::XPButton2_Click() {
    if (mbImportacion) {
        lblFichero->clear();
        Ajustes::guardarRutaImportacion(importacion, QString());
        // Until the program restarts or the switch starts it again.
        Q_EMIT Avisos::instancia().cicloDetenido();
    } else {
        msAceptarBD();
    }
    m_cerrando = true;
    QDialog::done(QDialog::Rejected);
}

void frmSelectDB::reject() {
    // The window's close box and Escape are the "Cancelar" button.
    if (m_cerrando) {
        QDialog::reject();
        return;
    }
    cerrarCon(false);
}

void frmSelectDB::cerrarCon(bool aceptar) {
    if (m_cerrando) return;
    if (mbImportacion)
        msAceptarImportacion(aceptar);
    else
        msAceptarBD();
    m_cerrando = true;
    QDialog::done(aceptar ? QDialog::Accepted : QDialog::Rejected);
}

void frmSelectDB::msAceptarBD() {
    // A batch waiting for the platform records its results in the file its
    // rows came from.
    if (estadoAplicacion().gbEnviando) {
        ui().msgBox(
            u"Quelmo Mensajes SMS está ahora mismo realizando un envío.\n\nEspere a que "
            u"termine el envío para cambiar de Base de Datos."_s,
            Msg::Exclamation);
        return;
    }
    const QString ruta = lblFichero->text();
    if (!msValidarBD(ruta)) {
        ui().msgBox(u"Base de datos no valida"_s, Msg::Exclamation);
        return;
    }
    if (!msAbrirBD(ruta)) {
        ui().msgBox(u"Imposible conectar con la base de datos"_s, Msg::Exclamation);
        return;
    }
    Ajustes::guardarRutaBaseDatos(ruta);
    // Every open screen shows the other file's accounts and outbox.
    Q_EMIT Avisos::instancia().cuentasCambiadas();
    Q_EMIT Avisos::instancia().bandejaCambiada();
}

void frmSelectDB::msAceptarImportacion(bool aceptar) {
    if (!aceptar) {
        // Cancelling ends the choice; for the watch it ends the watch.
        Ajustes::guardarRutaImportacion(importacion, QString());
        return;
    }
    const QString ruta = lblFichero->text();
    if (ruta.isEmpty()) return;
    Ajustes::guardarRutaImportacion(importacion, ruta);
    QString textoLista;
    if (Cmblista->currentIndex() == 0)
        textoLista = u"-1"_s;
    else if (Cmblista->currentIndex() == 1)
        textoLista = lista->text();
    else
        textoLista = msCodigoListaPorNombre(Cmblista->currentText().mid(6));
    Ajustes::guardarListaImportacion(importacion, textoLista, Chkcontactos->isChecked());
    guardarIntervalo();
}

void frmSelectDB::guardarIntervalo() {
    // Only a line the user picked is written: a hidden or untouched combo
    // leaves an interval set in Options (120, say) as it was.
    const bool elegido =
        cmbIntervalo->isVisibleTo(this) && cmbIntervalo->currentIndex() != m_lineaCargada;
    if (elegido) Ajustes::guardarIntervalo(segundosDeLinea(cmbIntervalo->currentIndex()));
    // Whatever the interval, it counts from now.
    if (const std::optional<int> segundos = Ajustes::intervalo())
        Q_EMIT Avisos::instancia().intervaloCambiado(*segundos);
}

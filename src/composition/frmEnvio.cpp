#include "composition/frmEnvio.h"

#include "accounts/mdoCuentas.h"
#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/EstadoAplicacion.h"
#include "base/Interruptor.h"
#include "base/Pantallas.h"
#include "base/RegistroActividad.h"
#include "composition/Envio.h"
#include "composition/crtAutoComplete.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"
#include "widgets/Accesible.h"
#include "widgets/Boton.h"
#include "widgets/Cuadros.h"
#include "widgets/EstadoTransmisor.h"
#include "widgets/Iconos.h"
#include "widgets/Listado.h"
#include "widgets/ModeloPaginado.h"
#include "widgets/Montaje.h"
#include "widgets/PantallasHijas.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextDocument>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPregunta = Msg::YesNo | Msg::Exclamation | Msg::DefaultButton2;

}  // namespace

frmEnvio::frmEnvio(QWidget* parent) : QWidget(parent) {
    identificar(this, u"frmEnvio"_s, u"Envío de Mensajes"_s, u"enviar"_s);
    construir();

    // Load, in order.
    miCanal = -1;
    miLargoTextos = 0;
    msNotaTextos.clear();
    msCargarCanales();
    msAbrirBandeja();
    mostrarTransmisor(Interruptor::instancia().paraVentana());
    mlMensajes = 0;
    msPintarBandeja();
    msCargarContactos();
    connect(&Avisos::instancia(), &Avisos::textoElegido, this, &frmEnvio::tomarTexto);
    connect(&Avisos::instancia(), &Avisos::cuentasCambiadas, this, &frmEnvio::msCargarCanales);
    connect(&Avisos::instancia(), &Avisos::bandejaCambiada, this, &frmEnvio::msActualizaLista);
    connect(&Avisos::instancia(), &Avisos::cuentaElegida, this, &frmEnvio::tomarCuenta);
    connect(&Interruptor::instancia(), &Interruptor::cambiado, this, &frmEnvio::mostrarTransmisor);
}

void frmEnvio::construir() {
    crearCampos();
    crearBotones();
    colocar();

    connect(cmdAbonados, &QPushButton::clicked, this, &frmEnvio::cmdAbonados_Click);
    conectarUnaVez(cmdAnadir, this, &frmEnvio::cmdAnadir_Click);
    conectarUnaVez(cmdEnviar, this, &frmEnvio::cmdEnviar_Click);
    connect(cmdModificar, &QPushButton::clicked, this, &frmEnvio::cmdModificar_Click);
    connect(ListView1, &Listado::dobleClicFila, this, &frmEnvio::cmdModificar_Click);
    connect(cmdEliminar, &QPushButton::clicked, this, &frmEnvio::cmdEliminar_Click);
    connect(cmdEliminarTodos, &QPushButton::clicked, this, &frmEnvio::cmdEliminarTodos_Click);
    conectarUnaVez(cmdSaldo, this, &frmEnvio::cmdSaldo_Click);
    connect(cmdRecarga, &QPushButton::clicked, this, &frmEnvio::cmdRecarga_Click);
    connect(cmdMenPro, &QPushButton::clicked, this, [] { Pantallas::abrir(u"frmSelecMenPro"_s); });
    connect(cmdEnvMult, &QPushButton::clicked, this, [] { Pantallas::abrir(u"frmEmergencias"_s); });
    connect(CmdSalir, &QPushButton::clicked, this, &QWidget::close);

    nombreAccesible(ImageCombo1, u"Cuenta"_s, u"La cuenta que paga los mensajes nuevos"_s);
    nombreAccesible(crtAutoComplete1->Text1(), u"Destinatarios"_s,
                    u"Contactos o números separados por punto y coma"_s);
    nombreAccesible(cmdAbonados, u"Elegir destinatarios"_s,
                    u"Elegir contactos y listas de la agenda"_s);
    nombreAccesible(txtMensaje, u"Texto del Mensaje"_s,
                    u"Escape vacía el texto; F2 elige un mensaje predefinido"_s);
    nombreAccesible(ListView1, u"Bandeja de Salida"_s, u"Intro modifica el mensaje elegido"_s);
    ordenTabulacion({ImageCombo1, cmdSaldo, cmdRecarga, crtAutoComplete1->Text1(), cmdAbonados,
                     txtMensaje, cmdMenPro, cmdEnvMult, cmdAnadir, ListView1, imgmt, cmdEnviar,
                     cmdModificar, cmdEliminar, cmdEliminarTodos, CmdSalir});
}

void frmEnvio::crearCampos() {
    ImageCombo1 = control<QComboBox>(this, u"ImageCombo1"_s);
    ImageCombo1->setPlaceholderText(u"No hay Cuentas"_s);
    ImageCombo1->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    ImageCombo1->setMinimumContentsLength(40);
    ImageCombo1->installEventFilter(this);

    crtAutoComplete1 = control<crtAutoComplete>(this, u"crtAutoComplete1"_s);
    crtAutoComplete1->setDelimeter(u";"_s);

    txtMensaje = control<QPlainTextEdit>(this, u"txtMensaje"_s);
    txtMensaje->setTabChangesFocus(true);
    txtMensaje->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    // Five lines hold a message of several parts; the outbox below takes
    // the rest of the height, and a low frame takes the text down to three.
    const int linea = txtMensaje->fontMetrics().lineSpacing();
    const int bordes =
        2 * (txtMensaje->frameWidth() + int(txtMensaje->document()->documentMargin()));
    txtMensaje->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    txtMensaje->setMinimumHeight(3 * linea + bordes);
    txtMensaje->setMaximumHeight(5 * linea + bordes);
    txtMensaje->installEventFilter(this);
    connect(crtAutoComplete1, &crtAutoComplete::enterSinSugerencias, txtMensaje,
            [this] { txtMensaje->setFocus(Qt::OtherFocusReason); });

    lblCaracteres = control<QLabel>(this, u"lblCaracteres"_s, QString());
    lblmas = control<QLabel>(this, u"lblmas"_s, u"Necesita más de un SMS"_s);
    lblmas->setStyleSheet(u"color: #c00000; font-weight: bold"_s);
    lblmas->hide();
    lblcont = control<QLabel>(this, u"lblcont"_s, QString());
}

void frmEnvio::crearBotones() {
    cmdAbonados = botonConNombre(this, u"cmdAbonados"_s, u"&Para ..."_s);
    cmdMenPro = botonConNombre(this, u"cmdMenPro"_s, u"Mensaje Predefinido"_s,
                               u"Añadir Mensaje Predefinido"_s);
    cmdAnadir = botonConNombre(this, u"cmdAñadir"_s, u"&Enviar Mensaje"_s,
                               u"Agrega el Mensaje a la Bandeja de Salida"_s);
    cmdEnvMult = botonConNombre(this, u"cmdEnvMult"_s, u"Mensaje Programado"_s,
                                u"Añadir Mensaje Programado para envío inmediato"_s);
    cmdSaldo = botonConNombre(this, u"cmdSaldo"_s, u"Ver Saldo"_s, u"Consultar Saldo de Cuenta"_s);
    cmdRecarga =
        botonConNombre(this, u"cmdRecarga"_s, u"Recarga"_s, u"Ir a página de Recarga de Saldo"_s);
    cmdEnviar = botonConNombre(this, u"cmdEnviar"_s, u"Enviar &Todo"_s,
                               u"Envia de inmediato todos los Mensajes de la Bandeja de Salida"_s);
    cmdModificar = botonConNombre(this, u"cmdModificar"_s, u"Mo&dificar  mensaje"_s);
    cmdEliminar = botonConNombre(this, u"cmdEliminar"_s, u"Elimi&nar   mensaje"_s);
    cmdEliminarTodos = botonConNombre(this, u"cmdEliminarTodos"_s, u"Elimina&r  Todos"_s);
    CmdSalir = botonConNombre(this, u"CmdSalir"_s, u"&Cerrar"_s);

    const QStringList cabeceras{u"Id"_s, u"Fecha"_s, u"Destinatario"_s, u"Cuenta (Remitente)"_s,
                                u"Mensaje"_s};
    ListView1 = new Listado(u"ListView1"_s, cabeceras, this);
    m_bandeja = new ModeloPaginado(definicionBandeja(), cabeceras, this);
    ListView1->usarModelo(m_bandeja);
    // The Id is what the lines are loaded in order of and what modify and
    // delete act on; the user has no use for it, and even at the smallest
    // width its header would show clipped.
    ListView1->hideColumn(0);
    ListView1->setColumnWidth(1, 110);
    ListView1->setColumnWidth(2, 120);
    ListView1->setColumnWidth(3, 170);

    imgmt = control<ImagenInterruptor>(this, u"imgmt"_s);
    imgmt->setToolTip(u"Doble click para activar/desactivar envío"_s);
    connect(imgmt, &ImagenInterruptor::alternado, this, &frmEnvio::imgmt_DblClick);
    lmt = control<QLabel>(this, u"lmt"_s, EstadoTransmisor::texto(true));

    Timer1 = control<QTimer>(this, u"Timer1"_s);
    Timer1->setInterval(10000);
    connect(Timer1, &QTimer::timeout, this, &frmEnvio::Timer1_Timer);
    Timer1->start();
}

void frmEnvio::colocar() {
    auto* rejilla = new QGridLayout();
    // A combo is read by its value: its label comes through the buddy.
    auto* Label2 = control<QLabel>(this, u"Label2"_s, u"Cuenta"_s);
    Label2->setBuddy(ImageCombo1);
    rejilla->addWidget(Label2, 0, 0);
    rejilla->addLayout(fila({{ImageCombo1, 1}, cmdSaldo, cmdRecarga}), 0, 1);
    rejilla->addWidget(control<QLabel>(this, u"Label1"_s, u"Destinatarios"_s), 1, 0);
    rejilla->addLayout(fila({{crtAutoComplete1, 1}, cmdAbonados}), 1, 1);
    rejilla->addWidget(control<QLabel>(this, u"Label3"_s, u"Texto del Mensaje"_s), 2, 0,
                       Qt::AlignTop);
    rejilla->addWidget(txtMensaje, 2, 1);
    rejilla->addLayout(fila({lblCaracteres, lblmas, nullptr, cmdMenPro, cmdEnvMult, cmdAnadir}), 3,
                       1);

    auto* capa = new QVBoxLayout(this);
    capa->addLayout(rejilla, 0);
    capa->addLayout(
        fila({control<QLabel>(this, u"Label4"_s, u"Bandeja de Salida"_s), nullptr, lblcont}));
    capa->addWidget(ListView1, 1);
    capa->addLayout(fila(
        {imgmt, lmt, nullptr, cmdEnviar, cmdModificar, cmdEliminar, cmdEliminarTodos, CmdSalir}));
    resize(820, 600);
}

// ---- accounts and counter -------------------------------------------------

bool frmEnvio::msCargarCanales() {
    bool resultado = false;
    try {
        const QVector<CuentaEnvio> cuentas = leerCuentasEnvio();
        if (cuentas.isEmpty()) {
            msPrimeraVez();
        } else {
            // The selection survives the rebuilding.
            if (ImageCombo1->count() > 0 && ImageCombo1->currentIndex() >= 0)
                miCanal = int(canalElegido());
            ImageCombo1->clear();
            const QIcon icono = iconoQuelmo(u"cuentas"_s);
            for (int i = 0; i < cuentas.size(); ++i) {
                const CuentaEnvio& c = cuentas.at(i);
                ImageCombo1->addItem(icono, c.texto, c.canal);
                if (c.principal && miCanal == -1) {
                    ImageCombo1->setCurrentIndex(i);
                    miCanal = c.canal;
                    miLargoTextos = c.largoTextos;
                } else if (c.canal == miCanal) {
                    ImageCombo1->setCurrentIndex(i);
                    miLargoTextos = c.largoTextos;
                }
            }
            resultado = true;
        }
        msNotaTextos = miLargoTextos < 1 ? QString() : u" Incluye textos inicio/fin"_s;
        contador();
    } catch (const ErrorQuelmo& e) {
        if (e.number() == ErrNum::ItemNotFound) {
            // The screen can't work on this database: it goes, and the
            // user picks another.
            close();
            msBaseNoValida();
        } else {
            ui().msgBox(u"Encontrado Error: "_s + e.description(), Msg::Exclamation);
        }
    }
    return resultado;
}

void frmEnvio::tomarCuenta(int canal) {
    // The rebuilding keeps the selection, and renews the counter with the
    // chosen account's start and end texts.
    const int i = ImageCombo1->findData(canal);
    if (i >= 0) ImageCombo1->setCurrentIndex(i);
    msCargarCanales();
}

int64_t frmEnvio::canalElegido() const {
    // No account chosen writes account 0, which no list shows.
    const int i = ImageCombo1->currentIndex();
    return i < 0 ? 0 : ImageCombo1->itemData(i).toLongLong();
}

void frmEnvio::contador() {
    const int n = largoMensaje(txtMensaje->toPlainText()) + miLargoTextos;
    lblCaracteres->setText(textoContador(n, msNotaTextos));
    // Read out as words, not as a number in brackets.
    lblCaracteres->setAccessibleName(QString::number(n) + u" caracteres"_s + msNotaTextos);
    lblmas->setVisible(n > kLargoUnSms);
}

void frmEnvio::txtMensaje_cambiar() {
    contador();
}

void frmEnvio::tomarTexto(const QString& texto) {
    txtMensaje->setPlainText(texto);
    txtMensaje_cambiar();
}

// ---- destinations and the add routine -------------------------------------

void frmEnvio::cmdAbonados_Click() {
    estadoAplicacion().gsDestinos.clear();
    Pantallas::abrir(u"frmSeleccion"_s);
    m_destinos = estadoAplicacion().gsDestinos;
    crtAutoComplete1->setTexto(m_destinos);
}

void frmEnvio::msCargarContactos() {
    crtAutoComplete1->setDelimeter(u";"_s);
    auto lectura = std::make_shared<LecturaContactos>();
    auto lista = std::make_shared<QString>();
    // A small book is read within the open; a large one goes on over turns.
    seguirContactos(lectura, lista);
}

void frmEnvio::seguirContactos(std::shared_ptr<LecturaContactos> lectura,
                               std::shared_ptr<QString> lista) {
    QVector<QString> celdas;
    try {
        leerContactosEnOrden(*lectura, celdas, 12);
    } catch (const ErrorQuelmo&) {
        // Silent: a database without contacts has had its box from the
        // accounts, and the box still takes numbers typed by hand.
        return;
    }
    for (qsizetype i = 0; i < celdas.size(); i += 2) {
        if (!lista->isEmpty()) *lista += u';';
        *lista += celdas.at(i);
    }
    // Given to the box once whole: a list shared with the box would be
    // copied whole at each stretch added.
    if (lectura->terminada) {
        crtAutoComplete1->setSearchList(*lista);
        return;
    }
    QTimer::singleShot(1, this, [this, lectura, lista] { seguirContactos(lectura, lista); });
}

void frmEnvio::cmdAnadir_Click() {
    anadir({});
}

void frmEnvio::anadir(std::function<void()> despues) {
    // One add at a time: "Enviar Todo" during an add only asks for the run.
    if (m_ocupacion.activa()) {
        if (despues) despues();
        return;
    }
    cmdAnadir->setCursor(Qt::BusyCursor);
    m_destinos = crtAutoComplete1->Texto();
    lblCaracteres->clear();
    // An empty text is dropped without a word.
    if (soloBlancos(txtMensaje->toPlainText())) {
        if (despues) despues();
        return;
    }
    if (m_destinos.trimmed().isEmpty()) {
        ui().msgBox(u"No seleccionó destinatarios para este mensaje .."_s, Msg::Exclamation);
        cmdAnadir->unsetCursor();
        if (despues) despues();
        return;
    }
    // Thousands of destinations go in over turns: meanwhile the text, the
    // box and the outbox take nothing.
    m_ocupacion.ocupar(this, {crtAutoComplete1, txtMensaje, ImageCombo1, cmdAbonados, cmdMenPro,
                              cmdAnadir, ListView1, cmdModificar, cmdEliminar, cmdEliminarTodos});
    QPointer<frmEnvio> pantalla(this);
    agregarMensajes(
        m_destinos, txtMensaje->toPlainText(), leerSoloContactos(), canalElegido(),
        [pantalla, despues = std::move(despues)](const QString& rechazados, const ErrorBD*) {
            if (pantalla) pantalla->tomarRechazados(rechazados);
            if (despues) despues();
        });
}

void frmEnvio::tomarRechazados(const QString& rechazados) {
    m_ocupacion.soltar();
    // What was refused stays, with the text, to be mended. The list
    // follows the new rows through the outbox notice.
    m_destinos = rechazados;
    if (rechazados.isEmpty()) txtMensaje->clear();
    crtAutoComplete1->setTexto(rechazados);
    msPintarBandeja();
    cmdAnadir->unsetCursor();
}

// ---- the outbox -----------------------------------------------------------

void frmEnvio::msAbrirBandeja() {
    mlMensajes = -1;
}

void frmEnvio::msActualizaLista() {
    msAbrirBandeja();
    mlMensajes = -1;
    msPintarBandeja();
}

void frmEnvio::msPintarBandeja() {
    // Half emptied, the outbox may lack the index of the order shown.
    if (m_ocupacion.activa()) return;
    try {
        // Counting first keeps the 10-second refresh cheap: the list is
        // read anew only when the number of rows changed, and then only
        // the lines in view.
        const int n = m_bandeja->contar();
        if (n == 0) {
            if (m_bandeja->rowCount() > 0) m_bandeja->cargar();
        } else if (n != mlMensajes) {
            mlMensajes = n;
            m_bandeja->cargar(n);
        }
        lblcont->setText(n < 1 ? QString()
                               : QString::number(n) + u" mensajes listos para enviar"_s);
        lblcont->setAccessibleName(n < 1 ? u"Ningún mensaje listo para enviar"_s : lblcont->text());
    } catch (const ErrorQuelmo&) {
        // Every ten seconds: the list stays as last drawn until the
        // database answers again, rather than a box at each tick.
    }
}

QString frmEnvio::preguntaFila(const QString& inicio, int fila) const {
    const ModeloListado* m = ListView1->modelo();
    return inicio + u"\nMensaje: "_s + m->texto(fila, 3) + u"\nTerminal: "_s + m->texto(fila, 2) +
           u"\nDe fecha : "_s + m->texto(fila, 1);
}

void frmEnvio::cmdModificar_Click() {
    const int fila = ListView1->filaActual();
    if (fila < 0) return;
    if (ui().msgBox(preguntaFila(u"Desea modificar el "_s, fila), kPregunta) != Msg::Yes) return;
    const QString id = ListView1->modelo()->texto(fila, 0);
    if (id.isEmpty()) return;
    try {
        // Modifying takes the row back into the compose fields.
        const std::optional<MensajeRetirado> m = retirarDeBandeja(id);
        if (!m) return;
        m_destinos = m->destino;
        crtAutoComplete1->setTexto(m_destinos);
        txtMensaje->setPlainText(m->texto);
    } catch (const ErrorQuelmo& e) {
        msLog(u"No se pudo modificar el mensaje "_s + id + u": "_s + e.description());
    }
}

void frmEnvio::cmdEliminar_Click() {
    const int fila = ListView1->filaActual();
    if (fila < 0) return;
    if (ui().msgBox(preguntaFila(u"¿Realmente desea eliminar el "_s, fila), kPregunta) != Msg::Yes)
        return;
    const QString id = ListView1->modelo()->texto(fila, 0);
    try {
        borrarDeBandeja(id);
    } catch (const ErrorQuelmo& e) {
        msLog(u"No se pudo eliminar el mensaje "_s + id + u": "_s + e.description());
    }
}

void frmEnvio::cmdEliminarTodos_Click() {
    if (ui().msgBox(u"¿Realmente desea eliminar todos los mensajes de la Bandeja de Salida?\n"_s,
                    kPregunta) != Msg::Yes)
        return;
    // The list is read again at the end: meanwhile its pages, and the
    // messages it would take or give, wait.
    m_ocupacion.ocupar(this, {ListView1, cmdAnadir, cmdModificar, cmdEliminar, cmdEliminarTodos});
    QPointer<frmEnvio> pantalla(this);
    vaciarBandeja([pantalla](const ErrorBD* fallo) {
        if (fallo) msLog(u"No se pudo vaciar la Bandeja de Salida: "_s + fallo->description());
        if (!pantalla) return;
        pantalla->m_ocupacion.soltar();
        pantalla->msActualizaLista();
    });
}

// ---- sending, balance, recharge -------------------------------------------

void frmEnvio::cmdEnviar_Click() {
    // A finished compose goes along, and the run comes once it is stored.
    QPointer<frmEnvio> pantalla(this);
    anadir([pantalla] {
        if (pantalla) pantalla->pedirEnvio();
    });
}

void frmEnvio::pedirEnvio() {
    if (!estadoAplicacion().gbEnviando) {
        cmdEnviar->setCursor(Qt::BusyCursor);
        setCursor(Qt::BusyCursor);
        Q_EMIT Avisos::instancia().envioPedido();
        msAbrirBandeja();
        mlMensajes = -1;
        msPintarBandeja();
        msCargarCanales();
    }
    cmdEnviar->setEnabled(Interruptor::instancia().paraVentana());
    unsetCursor();
    cmdEnviar->unsetCursor();
}

QCoro::Task<> frmEnvio::cmdSaldo_Click() {
    const Intercambio::Encargo encargo(this);
    const Saldo saldo = co_await SendAutCuenta(int16_t(canalElegido()), encargo.cancelacion());
    // Closed meanwhile: the screen is gone, and so is the answer.
    if (encargo.abandonada()) co_return;
    if (saldo.estado == Saldo::Estado::Denegado || saldo.estado == Saldo::Estado::Error) {
        ui().msgBox(
            u"Autentificación Denegada, Revise Usuario y Contraseña y que su Cuenta esté "
            u"ACTIVA."_s,
            Msg::Critical);
    } else if (saldo.estado == Saldo::Estado::Fallido) {
        ui().msgBox(
            u"Error de conexión. Imposible conectar con Quelmo Mensajes, revise su "
            u"conexión a Internet.\n"_s +
                msCausaFallo(),
            Msg::Critical);
    } else {
        msCargarCanales();
    }
}

void frmEnvio::cmdRecarga_Click() {
    mostrar(msRecarga());
}

// ---- the transmitter switch and the refresh -------------------------------

void frmEnvio::mostrarTransmisor(bool activo) {
    cmdEnviar->setEnabled(activo);
    lmt->setText(EstadoTransmisor::texto(activo));
    QPalette p = lmt->palette();
    p.setColor(QPalette::WindowText, EstadoTransmisor::color(activo));
    lmt->setPalette(p);
    imgmt->setActivo(activo);
}

void frmEnvio::imgmt_DblClick() {
    Interruptor::instancia().alternar();
}

void frmEnvio::Timer1_Timer() {
    msPintarBandeja();
    mostrarTransmisor(Interruptor::instancia().paraVentana());
}

// ---- events ---------------------------------------------------------------

bool frmEnvio::eventFilter(QObject* objeto, QEvent* evento) {
    if (objeto == txtMensaje) {
        if (evento->type() == QEvent::KeyPress || evento->type() == QEvent::FocusOut) {
            contador();
        } else if (evento->type() == QEvent::KeyRelease) {
            contador();
            const int tecla = static_cast<QKeyEvent*>(evento)->key();
            if (tecla == Qt::Key_Escape) {
                txtMensaje->clear();
            } else if (tecla == Qt::Key_F2) {
                Pantallas::abrir(u"frmSelecMenPro"_s);
            }
        }
    } else if (objeto == ImageCombo1 && evento->type() == QEvent::FocusOut) {
        // Leaving the combo takes its new account over.
        if (static_cast<QFocusEvent*>(evento)->reason() != Qt::PopupFocusReason) msCargarCanales();
    } else if (evento->type() == QEvent::Resize && objeto == PantallasHijas::subWindowOf(this)) {
        colocarEnMarco(false);
    }
    return QWidget::eventFilter(objeto, evento);
}

void frmEnvio::keyPressEvent(QKeyEvent* evento) {
    // Escape empties the text box here; it never closes this screen.
    if (evento->key() == Qt::Key_Escape) return;
    QWidget::keyPressEvent(evento);
}

void frmEnvio::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    QMdiSubWindow* sub = PantallasHijas::subWindowOf(this);
    if (!sub || m_colocada) return;
    m_colocada = true;
    sub->installEventFilter(this);
    if (QMdiArea* area = sub->mdiArea())
        connect(area, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* activa) {
            if (activa && activa == PantallasHijas::subWindowOf(this)) colocarEnMarco(true);
        });
    colocarEnMarco(true);
}

void frmEnvio::colocarEnMarco(bool activacion) {
    QMdiSubWindow* sub = PantallasHijas::subWindowOf(this);
    QMdiArea* area = sub ? sub->mdiArea() : nullptr;
    if (!area) return;
    if (activacion) {
        // At 100,100 while the frame has room for it; a smaller frame (the
        // first start's, with the log below) would hide the outbox and the
        // buttons, so there the screen shrinks and moves until it shows whole.
        PantallasHijas::encajar(sub, QPoint(100, 100));
    } else {
        sub->move(qMax(0, (area->width() - sub->width()) / 2),
                  qMax(0, (area->height() - sub->height()) / 4));
    }
}

#include "app/mdiMain.h"

#include "accounts/mdoCuentas.h"
#include "app/Arranque.h"
#include "app/RegistroPantallas.h"
#include "app/frmLog.h"
#include "app/frmOpciones.h"
#include "app/frmWinfo.h"
#include "app/frmweb.h"
#include "app/mdoMain.h"
#include "base/Ajustes.h"
#include "base/Avisos.h"
#include "base/Conversiones.h"
#include "base/Despliegue.h"
#include "base/EstadoAplicacion.h"
#include "base/InterfazUsuario.h"
#include "base/Interruptor.h"
#include "base/Pantallas.h"
#include "composition/frmEnvio.h"
#include "db/Conexion.h"
#include "delivery/Intercambio.h"
#include "delivery/mdoSendRavion.h"
#include "import/mdoImport.h"
#include "scheduling/clsTareasPendientes.h"
#include "widgets/Ayuda.h"
#include "widgets/Cuadros.h"
#include "widgets/EstadoTransmisor.h"
#include "widgets/Iconos.h"
#include "widgets/PantallasHijas.h"
#include "widgets/ReglasPantallas.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QToolBar>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

// One entry of the menu bar: a key beginning with "K" opens a top-level
// menu; an entry without caption is a separator.
struct EntradaMenu {
    const char16_t* clave;
    const char16_t* titulo;
    const char16_t* icono;
};

const EntradaMenu kEntradasMenu[] = {
    {u"KUsuarios", u"&Contactos y Listas", nullptr},
    {u"keyUsuarios", u"&Contactos", u"contactos"},
    {u"keySUsuarios", nullptr, nullptr},
    {u"keyGrupos", u"&Listas Locales", u"listas"},
    {u"keyPListas", u"Listas &Web", u"web"},
    {u"KMensajes", u"&Mensajes", nullptr},
    {u"keyEnviar", u"&Enviar Mensajes", u"enviar"},
    {u"keySMensajes1", nullptr, nullptr},
    {u"keyHEnviados", u"&Mensajes Enviados", u"enviados"},
    {u"keySMensajes2", nullptr, nullptr},
    {u"keyPMensajes", u"Mensajes Prede&finidos", u"predefinidos"},
    {u"keySMensajes3", nullptr, nullptr},
    {u"keyPAuto", u"&Programar Mensajes", u"programar"},
    {u"keySMensajes4", nullptr, nullptr},
    {u"KImport", u"&Importar", nullptr},
    {u"keyImportar", u"Im&portación Manual de Mensajes", u"importar"},
    {u"keySConf4", nullptr, nullptr},
    {u"keyImportarA", u"Importación &Automática de Mensajes", u"importar-auto"},
    {u"keySConf41", nullptr, nullptr},
    {u"keyImportarUser", u"Importar &Contactos", u"importar-contactos"},
    {u"KConfig", u"Con&figurar", nullptr},
    {u"keyCanales", u"&Cuentas", u"cuentas"},
    {u"keySConf1", nullptr, nullptr},
    {u"keyBD", u"&Seleccionar Base de Datos", u"basedatos"},
    {u"keySConf2", nullptr, nullptr},
    {u"keyTX", u"&Envío de SMS", u"transmisor"},
    {u"keySConf3", nullptr, nullptr},
    {u"keyopc", u"&Opciones", u"opciones"},
    {u"KInfo", u"&Ayuda", nullptr},
    {u"keyHelp", u"&Ayuda de Quelmo Mensajes SMS", u"ayuda"},
    {u"keyHome01", u"&Recarga", u"recarga"},
    {u"keyInfo3", nullptr, nullptr},
    {u"keyHome07", u"Novedades Versión ", u"novedades"},
    {u"keyHome02", u"", u"web"},
    {u"keyHome03", u"&Condiciones de Uso", u"condiciones"},
    {u"keyInfo4", nullptr, nullptr},
    {u"keyHome06", u"Contacta", u"contacta"},
    {u"keyHome05", u"Acerca de &Quelmo Mensajes SMS", u"info"},
    {u"keyExit3", nullptr, nullptr},
    {u"keyExit", u"&Salir", u"salir"},
};

// The caption of the web site's entry: its address with an access key.
QString tituloWeb() {
    QString host = QUrl(Despliegue::web()).host();
    if (host.isEmpty()) host = Despliegue::web();
    return u"&"_s + host;
}

QString versionTexto() {
    return u"%1.%2.%3"_s.arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision);
}

const QString kActivado = u"&Envío de SMS (Activado)"_s;
const QString kDesactivado = u"&Envío de SMS (Desactivado)"_s;

}  // namespace

mdiMain::mdiMain(QWidget* parent) : QMainWindow(parent) {
    ReglasPantallas::instalar();
    setObjectName(u"mdiMain"_s);
    setWindowTitle(tituloAplicacion());
    setWindowIcon(iconoQuelmo(u"aplicacion"_s));
    setMinimumSize(707, 538);
    resize(1000, 700);
    setDockOptions(QMainWindow::AnimatedDocks);

    m_web = new frmweb(this);
    PantallasHijas::setArea(m_web);
    setCentralWidget(m_web);
    m_log = new frmLog(this);
    addDockWidget(Qt::BottomDockWidgetArea, m_log);
    // A low display leaves the screens most of its height.
    resizeDocks({m_log}, {qMin(150, ReglasPantallas::areaLibre(this).height() / 5)}, Qt::Vertical);
    PantallasHijas::setSiguiente(m_log->List1());

    registrarTodas();
    crearBandeja();
    msCrearMenu();
    crearBarra();
    mostrarEstadoTransmisor(Interruptor::instancia().paraVentana());
    connect(&Interruptor::instancia(), &Interruptor::cambiado, this,
            &mdiMain::mostrarEstadoTransmisor);
    m_transmisor.armarTemporizador();
    connect(&m_transmisor, &Transmisor::tickTerminado, this, &mdiMain::cerrarSiPedido);
    connect(
        &Avisos::instancia(), &Avisos::baseDatosPerdida, this,
        [](const QString& ruta) {
            ui().msgBox(textoBaseDatosPerdida(ruta) +
                            u"\n\nCierre Quelmo Mensajes SMS y vuelva a abrirlo."_s,
                        Msg::Critical);
        },
        Qt::QueuedConnection);
    cargarClaveAcceso();

    terminar = [] { QCoreApplication::exit(0); };
    hayBandeja = [] { return QSystemTrayIcon::isSystemTrayAvailable(); };
}

mdiMain::~mdiMain() {
    if (m_icono) m_icono->hide();
}

QMdiArea* mdiMain::area() const {
    return m_web;
}

void mdiMain::msCrearMenu() {
    QMenuBar* barra = menuBar();
    barra->setObjectName(u"SmartMenuXP1"_s);
    QMenu* actual = nullptr;
    for (const EntradaMenu& e : kEntradasMenu) {
        const QString clave = QString::fromUtf16(e.clave);
        if (clave.startsWith(u'K')) {
            actual = barra->addMenu(QString::fromUtf16(e.titulo));
            actual->setObjectName(clave);
            actual->menuAction()->setObjectName(clave);
            continue;
        }
        QAction* a =
            e.titulo ? actual->addAction(QString::fromUtf16(e.titulo)) : actual->addSeparator();
        a->setObjectName(clave);
        if (e.icono) a->setIcon(iconoQuelmo(QString::fromUtf16(e.icono)));
        if (!e.titulo) continue;
        connect(a, &QAction::triggered, this, [this, clave] { SmartMenuXP1_Click(clave); });
    }
    findChild<QAction*>(u"keyHome07"_s)->setText(u"Novedades Versión "_s + versionTexto());
    findChild<QAction*>(u"keyHome02"_s)->setText(tituloWeb());
    // The desktop's usual keys for help and for quitting.
    findChild<QAction*>(u"keyHelp"_s)->setShortcut(QKeySequence::HelpContents);
    findChild<QAction*>(u"keyExit"_s)->setShortcut(QKeySequence::Quit);
    m_keyTX = findChild<QAction*>(u"keyTX"_s);
    m_keyTX->setCheckable(true);
    m_keyTX->setIconVisibleInMenu(false);
    asignarAcciones();
}

// What each entry of the menu does, by its key.
void mdiMain::asignarAcciones() {
    auto pantalla = [](const char16_t* nombre) {
        return [n = QString::fromUtf16(nombre)] { Pantallas::abrir(n); };
    };
    auto web = [](std::function<QString()> direccion) {
        return [direccion] { msAbrirUrl(direccion()); };
    };
    m_menu = {
        {u"keyExit"_s, {false, [this] { close(); }}},
        {u"keyEnviar"_s, {true, pantalla(u"frmEnvio")}},
        {u"keyHEnviados"_s, {true, pantalla(u"frmHEnvios")}},
        {u"keyPMensajes"_s, {true, pantalla(u"frmMenPro")}},
        {u"keyPAuto"_s, {true, pantalla(u"frmMenAuto")}},
        {u"keyUsuarios"_s, {true, pantalla(u"frmAbonados")}},
        {u"keyGrupos"_s, {true, pantalla(u"frmGrupos")}},
        {u"keyCanales"_s, {true, pantalla(u"frmCanales")}},
        {u"keyBD"_s, {true, pantalla(u"frmSelectDB")}},
        {u"keyHelp"_s, {false, msAyuda}},
        {u"keyHome01"_s, {false, [this] { mostrar(::msRecarga()); }}},
        {u"keyHome02"_s, {false, web(Despliegue::web)}},
        {u"keyHome07"_s,
         {false, web([]() -> QString { return Despliegue::web() + u"/novedadesqm.php"_s; })}},
        {u"keyHome03"_s, {false, web([]() -> QString {
                              return Despliegue::fabricante() + u"/condiciones_particulares.html"_s;
                          })}},
        {u"keyHome06"_s,
         {false, web([]() -> QString { return u"mailto:"_s + Despliegue::correo(); })}},
        {u"keyHome05"_s,
         {false,
          [this] {
              frmWinfo info(this);
              info.exec();
          }}},
        {u"keyImportar"_s, {true, [this] { importacionManual(); }}},
        {u"keyImportarA"_s, {true, pantalla(u"frmSelectDB.ImportA")}},
        {u"keyImportarUser"_s, {true, [this] { importacionContactos(); }}},
        {u"keyopc"_s,
         {true,
          [this] {
              frmOpciones opciones(this);
              opciones.exec();
          }}},
        {u"keyweb"_s, {false, [this] { m_web->cargarfondo(); }}},
        {u"keyPListas"_s, {false, web(Despliegue::web)}},
    };
}

void mdiMain::crearBarra() {
    struct Boton {
        const char16_t* titulo;
        const char16_t* clave;
        const char16_t* consejo;
        const char16_t* icono;
    };
    static const Boton botones[] = {
        {u"Enviar", u"ENVIO", u"Enviar Mensajes", u"enviar"},
        {u"Programar", u"PROG", u"", u"programar"},
        {u"Enviados", u"HISTORICO", u"Ver Hisórico de Mensajes Enviados", u"enviados"},
        {u"Cuentas", u"CANALES", u"Configuración de Cuentas", u"cuentas"},
        {u"Recarga", u"RECARGA", u"Recargar Crédito de Mensajes", u"recarga"},
        {u"Ayuda", u"INFORMACION", u"Ver Ayuda", u"ayuda"},
        {u"Salir", u"SALIR", u"Salir de Quelmo Mensajes SMS", u"salir"},
        {u"Ocultar", u"OCULTAR", u"Ocultar Quelmo Mensajes SMS", u"ocultar"},
    };
    m_barra = addToolBar(u"Barra de herramientas"_s);
    m_barra->setObjectName(u"Toolbar1"_s);
    m_barra->setMovable(false);
    m_barra->setIconSize(QSize(32, 32));
    m_barra->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    for (const Boton& b : botones) {
        const QString clave = QString::fromUtf16(b.clave);
        QAction* a = m_barra->addAction(iconoQuelmo(QString::fromUtf16(b.icono)),
                                        QString::fromUtf16(b.titulo));
        a->setObjectName(clave);
        const QString consejo = QString::fromUtf16(b.consejo);
        a->setToolTip(consejo);
        // An empty tool tip shows the caption again; a button with none
        // shows nothing.
        if (consejo.isEmpty()) m_barra->widgetForAction(a)->installEventFilter(this);
        connect(a, &QAction::triggered, this, [this, clave] { Toolbar1_ButtonClick(clave); });
        // The one button no menu entry stands for needs a key of its own.
        if (clave == u"OCULTAR"_s) a->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_H));
        // Leave the two closing buttons apart from the commands.
        if (clave == u"INFORMACION"_s) m_barra->addSeparator();
    }

    auto pantalla = [](const char16_t* nombre) {
        return [n = QString::fromUtf16(nombre)] { Pantallas::abrir(n); };
    };
    m_botones = {
        {u"SALIR"_s, {false, [this] { close(); }}},
        {u"USUARIOS"_s, {true, pantalla(u"frmAbonados")}},
        {u"GRUPOS"_s, {true, pantalla(u"frmGrupos")}},
        {u"CANALES"_s, {true, pantalla(u"frmCanales")}},
        {u"HISTORICO"_s, {true, pantalla(u"frmHEnvios")}},
        {u"ENVIO"_s, {true, pantalla(u"frmEnvio")}},
        {u"PREDEFINIDOS"_s, {true, pantalla(u"frmMenPro")}},
        {u"AUTOMATICOS"_s, {true, pantalla(u"frmMenAuto")}},
        {u"PROG"_s, {true, pantalla(u"frmMenAuto")}},
        {u"INFORMACION"_s, {false, msAyuda}},
        {u"EMERGENCIAS"_s, {true, pantalla(u"frmEmergencias")}},
        {u"RECARGA"_s, {false, [this] { mostrar(::msRecarga()); }}},
        {u"OCULTAR"_s, {false, [this] { ocultar(); }}},
    };
}

void mdiMain::crearBandeja() {
    m_mnuopciones = new QMenu(this);
    m_mnuopciones->setObjectName(u"mnuopciones"_s);
    auto entrada = [this](const QString& nombre, const QString& titulo, const QString& pic,
                          std::function<void()> accion) {
        QAction* a = m_mnuopciones->addAction(titulo);
        a->setObjectName(nombre);
        if (!pic.isEmpty()) a->setIcon(iconoQuelmo(pic));
        connect(a, &QAction::triggered, this, std::move(accion));
        return a;
    };
    auto conPuerta = [this](const char16_t* pantalla) {
        return [this, n = QString::fromUtf16(pantalla)] {
            mnurestaurar_Click();
            if (msComprobarAcceso()) Pantallas::abrir(n);
        };
    };
    entrada(u"mnurestaurar"_s, u"Restaurar Quelmo Mensajes SMS"_s, u"aplicacion"_s,
            [this] { mnurestaurar_Click(); });
    m_mnuopciones->addSeparator();
    entrada(u"mnuenviar"_s, u"Enviar Mensajes"_s, u"enviar"_s, conPuerta(u"frmEnvio"));
    entrada(u"mnuprogramar"_s, u"Programar Mensajes"_s, u"programar"_s, conPuerta(u"frmMenAuto"));
    entrada(u"mnuenviados"_s, u"Mensajes Enviados"_s, u"enviados"_s, conPuerta(u"frmHEnvios"));
    m_mnuopciones->addSeparator();
    m_mnutx = entrada(u"mnutx"_s, u"Activar Envíos"_s, QString(), [this] {
        m_keyTX->setChecked(!m_keyTX->isChecked());
        msActivarTransmisor();
    });
    m_mnutx->setCheckable(true);
    m_mnuopciones->addSeparator();
    entrada(u"mnuayuda"_s, u"Ayuda"_s, u"ayuda"_s, [this] {
        mnurestaurar_Click();
        msAyuda();
    });
    entrada(u"mnucerrar"_s, u"Salir"_s, u"salir"_s, [this] { close(); });

    m_icono = new QSystemTrayIcon(iconoQuelmo(u"aplicacion"_s), this);
    m_icono->setObjectName(u"Icono"_s);
    m_icono->setToolTip(u"Quelmo Mensajes SMS"_s);
    m_icono->setContextMenu(m_mnuopciones);
    // The desktop tells of no tray coming or going: look while hidden.
    m_vigiaBandeja = new QTimer(this);
    m_vigiaBandeja->setInterval(1000);
    connect(m_vigiaBandeja, &QTimer::timeout, this, [this] {
        if (!hayBandeja()) mnurestaurar_Click();
    });
    connect(m_icono, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason r) {
                if (r == QSystemTrayIcon::DoubleClick) mnurestaurar_Click();
            });
}

void mdiMain::mostrarEstadoTransmisor(bool activo) {
    m_keyTX->setChecked(activo);
    m_keyTX->setText(activo ? kActivado : kDesactivado);
    m_mnutx->setChecked(activo);
    m_mnutx->setText(activo ? u"Envío de SMS Activado"_s : u"Envío de SMS desactivado"_s);
    m_mnutx->setIcon(EstadoTransmisor::icono(activo));
    m_keyTX->setIcon(m_mnutx->icon());
}

void mdiMain::msActivarTransmisor() {
    // Every screen that shows the switch follows through its owner.
    Interruptor::instancia().establecer(m_keyTX->isChecked());
}

void mdiMain::ejecutar(const Orden& orden) {
    if (orden.puerta && !msComprobarAcceso()) return;
    if (orden.accion) orden.accion();
}

void mdiMain::SmartMenuXP1_Click(const QString& key) {
    // The check mark has already flipped; a refused switch flips it back.
    if (key == u"keyTX"_s) {
        if (msComprobarAcceso())
            msActivarTransmisor();
        else
            m_keyTX->setChecked(!m_keyTX->isChecked());
        return;
    }
    const auto it = m_menu.constFind(key);
    if (it != m_menu.cend()) ejecutar(*it);
}

void mdiMain::Toolbar1_ButtonClick(const QString& key) {
    const auto it = m_botones.constFind(key.toUpper());
    if (it != m_botones.cend()) ejecutar(*it);
}

QCoro::Task<> mdiMain::importacionManual() {
    // The selection screen chooses and saves the file and its options.
    if (!Pantallas::abrir(u"frmSelectDB.Import"_s)) co_return;
    if (co_await msImportarManual() && msComprobarAcceso()) Pantallas::abrir(u"frmEnvio"_s);
}

QCoro::Task<> mdiMain::importacionContactos() {
    if (!Pantallas::abrir(u"frmSelectDB.ImportUser"_s)) co_return;
    if (co_await msImportarContactos()) Pantallas::abrir(u"frmAbonados"_s);
}

void mdiMain::ocultar() {
    if (!hayBandeja()) {
        showMinimized();
        return;
    }
    m_icono->show();
    hide();
    m_vigiaBandeja->start();
}

void mdiMain::mnurestaurar_Click() {
    m_vigiaBandeja->stop();
    // Back as it was hidden: a maximised frame comes back maximised.
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    m_icono->hide();
    raise();
    activateWindow();
}

bool mdiMain::event(QEvent* event) {
    // An activation brings the frame back from the taskbar whole. Only the
    // minimised state goes: a maximised frame is the user's choice and
    // stays, where a plain return to the normal state would undo it.
    if (event->type() == QEvent::WindowActivate && (windowState() & Qt::WindowMinimized))
        setWindowState(windowState() & ~Qt::WindowMinimized);
    return QMainWindow::event(event);
}

bool mdiMain::eventFilter(QObject* objeto, QEvent* event) {
    if (event->type() == QEvent::ToolTip) return true;
    return QMainWindow::eventFilter(objeto, event);
}

void mdiMain::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (m_activado) return;
    m_activado = true;
    // After two turns of the event loop, so the frame is drawn first.
    QTimer::singleShot(0, this,
                       [this] { QTimer::singleShot(0, this, [this] { primeraActivacion(); }); });
}

void mdiMain::cerrarSiPedido() {
    // Out of the tick's own call: the close then runs with the run over.
    if (m_cerrarAlTerminar) QTimer::singleShot(0, this, &QWidget::close);
}

void mdiMain::primeraActivacion() {
    msAbrirBaseInicial();
    // The picture may live in the database just opened.
    m_web->cargarfondo();
    ::msPrimeraVez();
    clsTareasPendientes pendientes;
    if (pendientes.HayPendientesHoy() &&
        ui().msgBox(preguntaPendientes(), kEstiloPreguntaPendientes) == Msg::Yes)
        pendientes.EnviarPendientes();
    Q_EMIT primeraActivacionTerminada();
}

void mdiMain::closeEvent(QCloseEvent* event) {
    EstadoAplicacion& g = estadoAplicacion();
    // Closing now would cut a batch in the middle of its exchange.
    if (g.gbEnviando) {
        event->ignore();
        if (m_cerrarAlTerminar) return;
        // The run may wait for a platform that never answers: the user can
        // give it up instead of waiting for it.
        const int respuesta = ui().msgBox(
            u"Quelmo Mensajes SMS está ahora mismo realizando un envío.\n\nEspere a que "
            u"termine el envío para cerrar la aplicación.\n\n¿Desea detener el envío y "
            u"cerrar ahora? Los mensajes no enviados quedan en la bandeja de salida."_s,
            Msg::YesNo + Msg::Exclamation + Msg::DefaultButton2);
        if (respuesta != Msg::Yes) return;
        m_cerrarAlTerminar = true;
        msLog(u"Deteniendo el envío en curso para cerrar la aplicación"_s);
        Intercambio::abandonarTodo();
        return;
    }
    // Other screens get no say: the process ends here.
    m_transmisor.detener();
    Conexion().close();
    m_icono->hide();
    event->accept();
    if (terminar) terminar();
}

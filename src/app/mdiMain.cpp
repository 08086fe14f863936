#include "app/mdiMain.h"

#include "app/AppState.h"
#include "app/ChildScreens.h"
#include "app/Pantallas.h"
#include "app/Startup.h"
#include "app/mdoMain.h"
#include "scheduling/clsTareasPendientes.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDockWidget>
#include <QListView>
#include <QMdiArea>
#include <QTimer>

using namespace Qt::StringLiterals;

mdiMain::mdiMain(QWidget* parent) : QMainWindow(parent) {
    setObjectName(u"mdiMain"_s);
    // Load, in order: caption, interval and timer, access password.
    setWindowTitle(tituloAplicacion());
    setMinimumSize(707, 538);
    m_area = new QMdiArea(this);
    m_area->setObjectName(u"MDIClient"_s);
    ChildScreens::setArea(m_area);
    Pantallas::registrarTodas();
    setCentralWidget(m_area);

    auto* dock = new QDockWidget(u"Actividad"_s, this);
    dock->setObjectName(u"frmLog"_s);
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    m_log = new QListView(dock);
    m_log->setObjectName(u"lstLog"_s);
    m_log->setModel(&appState().log);
    m_log->setUniformItemSizes(true);
    m_log->setEditTriggers(QAbstractItemView::NoEditTriggers);
    dock->setWidget(m_log);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    connect(&appState().log, &ActivityLog::lineAdded, m_log, [this](int row) {
        m_log->setCurrentIndex(appState().log.index(row));
    });

    m_transmisor.armarTemporizador();
    cargarClaveAcceso();
    QCoreApplication::processEvents();
}

void mdiMain::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (m_activado) return;
    m_activado = true;
    // After two turns of the event loop.
    QTimer::singleShot(0, this, [this] { QTimer::singleShot(0, this, [this] { primeraActivacion(); }); });
}

void mdiMain::primeraActivacion() {
    msAbrirBaseInicial();
    clsTareasPendientes().PendientesEnviar();
    Q_EMIT primeraActivacionTerminada();
}

void mdiMain::closeEvent(QCloseEvent* event) {
    AppState& g = appState();
    if (g.gbEnviando) {
        ui().msgBox(u"Quelmo Mensajes SMS está ahora mismo realizando un envío.\n\nEspere a que "
                    u"termine el envío para cerrar la aplicación."_s,
                    Msg::Exclamation, QString());
        event->ignore();
        return;
    }
    m_transmisor.detener();
    g.Conexion.close();
    event->accept();
    QCoreApplication::exit(0);
}

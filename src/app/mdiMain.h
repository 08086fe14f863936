#pragma once

#include "app/Transmisor.h"

#include <QCoro/QCoroTask>
#include <QHash>
#include <QMainWindow>
#include <functional>

class QAction;
class QMdiArea;
class QMenu;
class QSystemTrayIcon;
class QTimer;
class QToolBar;
class frmLog;
class frmweb;

// The frame of the application: child screens open over the background
// panel, the activity log runs along the lower edge, and the menu, the
// toolbar and the tray icon reach every command. It owns the transmitter.
class mdiMain : public QMainWindow {
    Q_OBJECT
  public:
    explicit mdiMain(QWidget* parent = nullptr);
    ~mdiMain() override;

    Transmisor& transmisor() { return m_transmisor; }
    QMdiArea* area() const;
    frmweb* panelWeb() const { return m_web; }
    frmLog* panelLog() const { return m_log; }
    QSystemTrayIcon* icono() const { return m_icono; }
    // True once the first activation has started.
    bool activado() const { return m_activado; }

    void msForzarEnvio() { m_transmisor.msForzarEnvio(); }
    void mnurestaurar_Click();

    // Command dispatch by key: the menu bar's entries and the toolbar's
    // buttons (and the toolbar keys that no button carries).
    void SmartMenuXP1_Click(const QString& key);
    void Toolbar1_ButtonClick(const QString& key);

    // What ends the process once closing is accepted (tests replace it).
    std::function<void()> terminar;
    // Whether the desktop shows tray icons now; without one, hiding would
    // leave no way back to the window, so "Ocultar" minimises instead, and a
    // tray that goes away while the window hides in it brings the window back.
    std::function<bool()> hayBandeja;

  Q_SIGNALS:
    void primeraActivacionTerminada();

  protected:
    bool event(QEvent* event) override;
    // Keeps the tool tip of a button that has none from showing its caption.
    bool eventFilter(QObject* objeto, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    struct Orden {
        bool puerta;  // through the access gate first
        std::function<void()> accion;
    };

    void msCrearMenu();
    void asignarAcciones();
    void crearBarra();
    void crearBandeja();
    void mostrarEstadoTransmisor(bool activo);
    void msActivarTransmisor();
    void primeraActivacion();
    void ejecutar(const Orden& orden);
    // The import goes on over turns; the screen it leads to opens after.
    QCoro::Task<> importacionManual();
    QCoro::Task<> importacionContactos();
    void ocultar();

    Transmisor m_transmisor;
    // The user chose to stop the run in flight and close: the window closes
    // when the run has ended.
    bool m_cerrarAlTerminar = false;
    void cerrarSiPedido();
    frmweb* m_web = nullptr;
    frmLog* m_log = nullptr;
    QToolBar* m_barra = nullptr;
    QAction* m_keyTX = nullptr;
    QAction* m_mnutx = nullptr;
    QMenu* m_mnuopciones = nullptr;
    QSystemTrayIcon* m_icono = nullptr;
    QTimer* m_vigiaBandeja = nullptr;
    QHash<QString, Orden> m_menu;
    QHash<QString, Orden> m_botones;
    bool m_activado = false;
};

#pragma once

#include "app/Transmitter.h"

#include <QMainWindow>

class QMdiArea;
class QListView;

// The frame of the application: child screens, the activity log, and the
// transmitter's timer.
class mdiMain : public QMainWindow {
    Q_OBJECT
public:
    explicit mdiMain(QWidget* parent = nullptr);

    Transmitter& transmisor() { return m_transmisor; }
    QMdiArea* area() const { return m_area; }
    void msForzarEnvio() { m_transmisor.msForzarEnvio(); }
    // True once the first activation has run.
    bool activado() const { return m_activado; }

Q_SIGNALS:
    void primeraActivacionTerminada();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void primeraActivacion();

    Transmitter m_transmisor;
    QMdiArea* m_area = nullptr;
    QListView* m_log = nullptr;
    bool m_activado = false;
};

#pragma once

#include "TestSupport.h"

#include <QApplication>
#include <QDialog>
#include <functional>
#include <memory>

class Listado;
class ModeloListado;
class mdiMain;

// A QTest main for tests that show real widgets (offscreen).
#define QUELMO_GUI_TEST_MAIN(TestClass) QUELMO_TEST_MAIN_WITH(TestClass, QApplication)

// The world of a screen benchmark: widgets offscreen unless a platform is
// chosen, scripted answers, and a fresh database as the shared connection.
class BancoPantallas {
  public:
    BancoPantallas(int& argc, char** argv) : m_plataforma(elegirPlataforma()), app(argc, argv) {
        prepareTestApplication();
        TestDb::openShared(TestDb::createCurrent(world.root() + QStringLiteral("/bench.db")));
    }

  private:
    static bool elegirPlataforma() {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        return true;
    }
    bool m_plataforma;

  public:
    TestWorld world;
    QApplication app;
    InterfazGuionada ui;
};

namespace prueba {

// The child `nombre` of `padre`; a missing one ends the run naming it,
// rather than crashing on a null pointer further on.
template <class T>
T* hijo(const QObject* padre, const QString& nombre) {
    T* h = padre->findChild<T*>(nombre);
    if (!h) qFatal("no widget %s", qPrintable(nombre));
    return h;
}
template <class T>
T* hijo(const QObject& padre, const QString& nombre) {
    return hijo<T>(&padre, nombre);
}

// The main window shown and past its first activation; closing it runs
// `terminar` instead of ending the program. `antesDeMostrar` runs once the
// window has registered its screens, before its first activation.
std::unique_ptr<mdiMain> ventanaPrincipal(
    std::function<void()> terminar = [] {}, const std::function<void()>& antesDeMostrar = {});

// Runs `accion` on the next modal dialog once it is up and no longer busy
// (its controls on); `accion` must close it.
void alAbrirModal(std::function<void(QDialog*)> accion, int intentos = 1000);

// For a look by eye: `w` shown, then its picture saved as `nombre`.png in
// the folder QUELMO_CAPTURAS names (tests that take pictures skip without
// it) and, with QUELMO_CAPTURA_PANTALLA (a suffix, "1024x600"), the whole
// display as a user sees it: where the window manager put the window, and
// whether it fits.
void captura(QWidget* w, const QString& nombre);

// One column of a list, in the order shown.
QStringList textosDe(const ModeloListado* m, int col);
QStringList textosDe(const Listado* l, int col);
// Every row of a list as "a|b|c", in the order shown.
QStringList filasDe(const Listado* l);

}  // namespace prueba

#pragma once

#include "TestSupport.h"

#include <QApplication>
#include <QDialog>
#include <functional>

class Listado;
class ModeloListado;

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

// Runs `accion` on the next modal dialog once it is up; `accion` must
// close it.
void alAbrirModal(std::function<void(QDialog*)> accion, int intentos = 200);

// One column of a list, in the order shown.
QStringList textosDe(const ModeloListado* m, int col);
QStringList textosDe(const Listado* l, int col);

}  // namespace prueba

#pragma once

#include "TestSupport.h"

#include <QApplication>

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
    ScriptedInterface ui;
};

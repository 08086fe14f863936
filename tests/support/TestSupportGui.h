#pragma once

#include "TestSupport.h"

#include <QApplication>

// A QTest main for tests that show real widgets (offscreen).
#define QUELMO_GUI_TEST_MAIN(TestClass)       \
    int main(int argc, char** argv) {         \
        TestWorld world;                      \
        QApplication app(argc, argv);         \
        prepareTestApplication();             \
        TestClass tc(world);                  \
        QTEST_SET_MAIN_SOURCE_PATH            \
        return QTest::qExec(&tc, argc, argv); \
    }

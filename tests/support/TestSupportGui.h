#pragma once

#include "TestSupport.h"

#include <QApplication>

// A QTest main for tests that show real widgets (offscreen).
#define QUELMO_GUI_TEST_MAIN(TestClass) QUELMO_TEST_MAIN_WITH(TestClass, QApplication)

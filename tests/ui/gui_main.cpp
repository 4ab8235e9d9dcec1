// SPDX-License-Identifier: MIT
// For tests that need Qt's fonts and event loop, but no display.
#include "ui/ui_engine.h"

#include <gmock/gmock.h>

#include <QGuiApplication>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleMock(&argc, argv);
    const QGuiApplication application(argc, argv);
    sordin::UiEngine::prepare();
    return RUN_ALL_TESTS();
}

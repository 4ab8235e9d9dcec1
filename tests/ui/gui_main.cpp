// SPDX-License-Identifier: MIT
// For tests that need Qt's fonts and event loop, but no display.
#include "ui/ui_engine.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <cstdio>

/// Errors in views are only warnings of Qt, so fail on them.
static void failOnWarningOfView(QtMsgType /*type*/, const QMessageLogContext& /*context*/,
                                const QString& message) {
    if (message.contains("qrc:")) {
        ADD_FAILURE() << message.toStdString();
    } else {
        std::fprintf(stderr, "%s\n", qPrintable(message));
    }
}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleMock(&argc, argv);
    const QGuiApplication application(argc, argv);
    qInstallMessageHandler(failOnWarningOfView);
    sordin::UiEngine::prepare();
    return RUN_ALL_TESTS();
}

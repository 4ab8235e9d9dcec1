// SPDX-License-Identifier: MIT
// For tests that need Qt's event loop.
#include <gmock/gmock.h>

#include <QCoreApplication>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

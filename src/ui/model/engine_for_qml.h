// SPDX-License-Identifier: MIT
// Makes the engine, which knows nothing of QML, a type that views can name.
#pragma once

#include "engine/sordin_engine.h"

#include <QQmlEngine>

namespace sordin {

struct EngineForQml {
    Q_GADGET
    QML_FOREIGN(sordin::SordinEngine)
    QML_NAMED_ELEMENT(SordinEngine)
    QML_UNCREATABLE("There is one engine, which the application makes.")
};

}  // namespace sordin

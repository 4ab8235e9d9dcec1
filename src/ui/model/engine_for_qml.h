// SPDX-License-Identifier: MIT
// Exposes the engine as a type to QML; the engine itself does not depend on QML.
#pragma once

#include "engine/sordin_engine.h"

#include <QQmlEngine>

namespace sordin {

struct EngineForQml {
    Q_GADGET
    QML_FOREIGN(sordin::SordinEngine)
    QML_NAMED_ELEMENT(SordinEngine)
    QML_UNCREATABLE("The application creates the engine.")
};

}  // namespace sordin

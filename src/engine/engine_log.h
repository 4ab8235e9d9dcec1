// SPDX-License-Identifier: MIT
#pragma once

#include <QLoggingCategory>

namespace sordin {

/// Says what happens, never what was heard. Quiet unless asked for.
Q_DECLARE_LOGGING_CATEGORY(engineLog)

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include <QLoggingCategory>

namespace sordin {

/// Log of status changes, ads and calls; never of audio or transcripts. By default only warnings are enabled.
Q_DECLARE_LOGGING_CATEGORY(engineLog)

}  // namespace sordin

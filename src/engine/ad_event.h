// SPDX-License-Identifier: MIT
#pragma once

#include "engine/reference_date.h"

#include <QString>
#include <QStringList>
#include <QUuid>
#include <vector>

namespace sordin {

/// One ad as it is remembered.
struct AdEvent {
    enum class Kind {
        muted,      ///< a real ad that was faded
        testOnly,   ///< a real ad in test mode: the volume was left alone
        simulated,  ///< asked for by the user
    };

    QUuid id;
    ReferenceDate start = 0;
    double duration = 0;  ///< seconds
    QString app;          ///< where it came from; "Unknown" when nobody knew
    double peakConfidence = 0;
    QStringList reasons;  ///< strongest first
    Kind kind = Kind::muted;

    bool operator==(const AdEvent&) const = default;
};

/// Newest first.
using AdHistory = std::vector<AdEvent>;

}  // namespace sordin

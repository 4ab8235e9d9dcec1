// SPDX-License-Identifier: MIT
#pragma once

#include "engine/reference_date.h"

#include <QString>
#include <QStringList>
#include <QUuid>
#include <vector>

namespace sordin {

/// A recorded ad.
struct AdEvent {
    enum class Kind {
        muted,      ///< real ad; the volume was faded
        testOnly,   ///< real ad in test mode; the volume was not changed
        simulated,  ///< simulated at the user's request
    };

    QUuid id;
    ReferenceDate start = 0;
    double duration = 0;  ///< seconds
    QString app;          ///< source application; "Unknown" if not known
    double peakConfidence = 0;
    QStringList reasons;  ///< strongest first
    Kind kind = Kind::muted;

    bool operator==(const AdEvent&) const = default;
};

/// The recorded ads, newest first.
using AdHistory = std::vector<AdEvent>;

}  // namespace sordin

// SPDX-License-Identifier: MIT
// Live values of the detector for the user interface.
#pragma once

#include "engine/reference_date.h"

#include <QString>
#include <QUuid>

namespace sordin {

/// A point of the confidence chart. Confidence and threshold are 0 to 1.
struct TrailPoint {
    QUuid id;
    ReferenceDate time = 0;
    double confidence = 0;
    double threshold = 0;
};

/// The share of one signal in the ad evidence, 0 to 1.
struct SignalReading {
    QString name;
    double value = 0;

    bool operator==(const SignalReading&) const = default;
};

}  // namespace sordin

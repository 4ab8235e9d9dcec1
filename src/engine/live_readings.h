// SPDX-License-Identifier: MIT
// What is shown of the detector while it listens.
#pragma once

#include "engine/reference_date.h"

#include <QString>
#include <QUuid>

namespace sordin {

/// One point of the chart of the last minutes. Both values are 0 to 1.
struct TrailPoint {
    QUuid id;
    ReferenceDate time = 0;
    double confidence = 0;
    double threshold = 0;
};

/// One signal's share of the ad evidence, 0 to 1.
struct SignalReading {
    QString name;
    double value = 0;

    bool operator==(const SignalReading&) const = default;
};

}  // namespace sordin

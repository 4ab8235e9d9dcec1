// SPDX-License-Identifier: MIT
#pragma once

#include "volume/volume_guard.h"

#include <functional>
#include <optional>

namespace sordin {

/// A volume guard that records only the last message.
class FakeVolumeGuard final : public VolumeGuard {
public:
    std::optional<DuckInForce> told;
    std::function<void()> onTold = [] {};

    void inForce(const DuckInForce& duck) override {
        told = duck;
        onTold();
    }
    void givenBack() override {
        told.reset();
        onTold();
    }
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <vector>

namespace sordin {

/// The volume of a sink as a server says it or is told it; what is absent is not said.
struct VolumeProps {
    std::vector<float> channels;  ///< amplitude factors by channel, 1 is full; empty is absent
    std::optional<bool> muted;
};

}  // namespace sordin

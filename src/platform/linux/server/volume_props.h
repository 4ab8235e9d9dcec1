// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <vector>

namespace sordin {

/// The volume of a sink in a message from or to the server. Absent fields are unknown or unchanged.
struct VolumeProps {
    std::vector<float> channels;  ///< amplitude factors by channel, 1 is full; empty if absent
    std::optional<bool> muted;
};

}  // namespace sordin

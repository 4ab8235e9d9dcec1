// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/graph.h"

#include <cstddef>
#include <set>
#include <string_view>
#include <utility>

namespace sordin::pipewire {

/// An output port and an input port.
using PortPair = std::pair<GlobalId, GlobalId>;

enum class Side { left, right, both };

/// Returns the side of a channel by its name: "FL" and "TSL" are left, "RR" and "FRC" right; "MONO", "FC",
/// "LFE" and unknown names are both.
[[nodiscard]] Side sideOf(std::string_view channel);

/// More than 128 links to one input port crash a program that uses PipeWire 0.3.65. Links that are being
/// removed still count for a while.
inline constexpr std::size_t mostLinksOfAPort = 64;

/// Returns the links through which the node `listener`, which has a left and a right input port, records
/// every application once and at full level. If there are too many streams, playing ones come first.
[[nodiscard]] std::set<PortPair> linkPlan(const Graph& graph, GlobalId listener);

}  // namespace sordin::pipewire

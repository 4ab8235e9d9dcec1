// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pipewire/graph.h"

#include <set>
#include <string_view>
#include <utility>

namespace sordin::pipewire {

/// An output port and an input port.
using PortPair = std::pair<GlobalId, GlobalId>;

enum class Side { left, right, both };

/// Where a channel is heard, by its name: "FL" and "TSL" left, "RR" and "FRC" right, "MONO", "FC", "LFE" and
/// what is unknown on both sides.
[[nodiscard]] Side sideOf(std::string_view channel);

/// The links by which the node `listener`, with a left and a right input port, hears every application once
/// and at its full level.
[[nodiscard]] std::set<PortPair> linkPlan(const Graph& graph, GlobalId listener);

}  // namespace sordin::pipewire

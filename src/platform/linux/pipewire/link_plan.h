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

/// Where a channel is heard, by its name: "FL" and "TSL" left, "RR" and "FRC" right, "MONO", "FC", "LFE" and
/// what is unknown on both sides.
[[nodiscard]] Side sideOf(std::string_view channel);

/// More links to one input port than 128 end a program that uses PipeWire 0.3.65, and those that are going
/// count for a while.
inline constexpr std::size_t mostLinksOfAPort = 64;

/// The links by which the node `listener`, with a left and a right input port, hears every application once
/// and at its full level. Where there are too many streams, those that play come first.
[[nodiscard]] std::set<PortPair> linkPlan(const Graph& graph, GlobalId listener);

}  // namespace sordin::pipewire

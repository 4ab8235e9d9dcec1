// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/link_plan.h"

namespace sordin::pipewire {

Side sideOf(std::string_view channel) {
    // A name consists of the row (front, rear, side), the side, and details; a T or B before it stands for
    // above or below.
    if (channel.size() > 2 && (channel[0] == 'T' || channel[0] == 'B')) {
        channel.remove_prefix(1);
    }
    const bool inRow = channel.size() > 1 && (channel[0] == 'F' || channel[0] == 'R' || channel[0] == 'S');
    if (inRow && channel[1] == 'L') {
        return Side::left;
    }
    return inRow && channel[1] == 'R' ? Side::right : Side::both;
}

std::set<PortPair> linkPlan(const Graph& graph, GlobalId listener) {
    std::map<GlobalId, Side> inputs;
    for (const auto& [id, port] : graph.ports) {
        if (port.node == listener && !port.output && !port.monitor) {
            inputs[id] = sideOf(port.channel);
        }
    }
    std::map<GlobalId, std::size_t> links;
    std::set<PortPair> plan;
    for (const bool running : {true, false}) {
        for (const auto& [outputId, output] : graph.ports) {
            const auto node = graph.nodes.find(output.node);
            if (!output.output || output.monitor || node == graph.nodes.end() ||
                node->second.running != running || !graph.isAudible(node->second)) {
                continue;
            }
            const Side from = sideOf(output.channel);
            for (const auto& [inputId, to] : inputs) {
                const bool goesThere = from == Side::both || to == Side::both || from == to;
                if (goesThere && links[inputId] < mostLinksOfAPort) {
                    plan.emplace(outputId, inputId);
                    ++links[inputId];
                }
            }
        }
    }
    return plan;
}

}  // namespace sordin::pipewire

// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/server/volume_props.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct spa_pod;

namespace sordin::pipewire {

/// A connector of a sound card, for example its headphones, while it is in use.
struct Route {
    int index = 0;
    int profileDevice = 0;  ///< which of the card's nodes it belongs to
    std::string name;
    VolumeProps volume;
};

/// Reads an object of type Props; what it does not say is absent.
[[nodiscard]] VolumeProps volumeProps(const spa_pod* props);

/// Reads an object of type Route; nothing if it is none or one for input.
[[nodiscard]] std::optional<Route> outputRoute(const spa_pod* route);

/// A pod and the memory it lies in.
class Pod {
public:
    /// Sets the volume of a node.
    [[nodiscard]] static Pod ofProps(const VolumeProps& volume);
    /// Sets the volume of a route without asking the session manager to remember it.
    [[nodiscard]] static Pod ofRoute(const Route& route, const VolumeProps& volume);
    /// Stereo, float32, at a rate in Hz: the one format that a stream offers.
    [[nodiscard]] static Pod ofStereoFormat(std::uint32_t rate);

    [[nodiscard]] const spa_pod* get() const;

private:
    std::vector<std::byte> memory_;
};

/// The node that the metadata's value names, a JSON object with a name; empty if it names none.
[[nodiscard]] std::string nodeName(std::string_view metadataValue);

}  // namespace sordin::pipewire

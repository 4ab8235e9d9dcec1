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

/// An active connector of a sound card, for example its headphones.
struct Route {
    int index = 0;
    int profileDevice = 0;  ///< the profile device that it belongs to
    std::string name;
    VolumeProps volume;
};

/// Parses an object of type Props; fields that it does not contain are empty.
[[nodiscard]] VolumeProps volumeProps(const spa_pod* props);

/// Parses an object of type Route; none if it is invalid or an input route.
[[nodiscard]] std::optional<Route> outputRoute(const spa_pod* route);

/// A pod and its memory.
class Pod {
public:
    /// Sets the volume of a node.
    [[nodiscard]] static Pod ofProps(const VolumeProps& volume);
    /// Sets the volume of a route. The session manager does not store it.
    [[nodiscard]] static Pod ofRoute(const Route& route, const VolumeProps& volume);
    /// Offers a single stream format: stereo, float32, `rate` in Hz.
    [[nodiscard]] static Pod ofStereoFormat(std::uint32_t rate);

    [[nodiscard]] const spa_pod* get() const;

private:
    std::vector<std::byte> memory_;
};

/// Returns the node name in a metadata value (a JSON object with "name"); empty if there is none.
[[nodiscard]] std::string nodeName(std::string_view metadataValue);

}  // namespace sordin::pipewire

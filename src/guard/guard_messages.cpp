// SPDX-License-Identifier: MIT
#include "guard/guard_messages.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>
#include <vector>

namespace sordin {

namespace {

using nlohmann::json;

constexpr auto volumeKey = "volume";
constexpr auto mutedKey = "muted";
constexpr auto deviceKey = "device";

json toJson(const OutputDeviceRecord& device) {
    return {{"name", device.name},
            {"route", device.route},
            {"reference", device.reference},
            {"ratios", device.ratios}};
}

bool isShare(const json& value) {
    return value.is_number() && value >= 0 && value <= 1;
}

std::optional<OutputDeviceRecord> readDevice(const json& object) {
    const json name = object.value("name", json());
    const json route = object.value("route", json());
    const json reference = object.value("reference", json());
    const json ratios = object.value("ratios", json());
    if (!name.is_string() || name.get<std::string>().empty() || !route.is_string() ||
        !reference.is_number() || reference < 1 || !ratios.is_array() ||
        !std::all_of(ratios.begin(), ratios.end(), isShare)) {
        return std::nullopt;
    }
    OutputDeviceRecord device{
        name.get<std::string>(), route.get<std::string>(),
        static_cast<float>(std::min(reference.get<double>(), PendingRestore::highestReference)),
        ratios.get<std::vector<float>>()};
    return PendingRestore::areRatios(device.ratios) ? std::optional(std::move(device)) : std::nullopt;
}

}  // namespace

std::string toGuardMessage(const std::optional<DuckInForce>& duck) {
    json message = json::object();
    if (const auto* muted = duck ? std::get_if<MutedDevice>(&*duck) : nullptr) {
        message[mutedKey] = true;
        message[deviceKey] = toJson(muted->device);
    } else if (const auto* pending = duck ? std::get_if<PendingRestore>(&*duck) : nullptr) {
        message[volumeKey] = pending->volume;
        message[deviceKey] = pending->device ? toJson(*pending->device) : json();
    }
    return message.dump(-1, ' ', false, json::error_handler_t::replace);
}

bool readGuardMessage(std::string_view text, std::optional<DuckInForce>& duck) {
    const json message = json::parse(text, nullptr, false);
    if (!message.is_object()) {
        return false;
    }
    if (message.empty()) {
        duck.reset();
        return true;
    }
    const json described = message.value(deviceKey, json());
    const auto device = described.is_object() ? readDevice(described) : std::nullopt;
    if (device && message.value(mutedKey, json()) == true) {
        duck = MutedDevice{*device};
        return true;
    }
    const json volume = message.value(volumeKey, json());
    if (isShare(volume) && (device || described.is_null())) {
        duck = PendingRestore{volume.get<float>(), device};
        return true;
    }
    return false;
}

}  // namespace sordin

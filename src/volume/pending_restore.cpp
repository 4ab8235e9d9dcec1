// SPDX-License-Identifier: MIT
#include "volume/pending_restore.h"

#include "support/numbers.h"

#include <locale>
#include <sstream>

namespace sordin {

namespace {

constexpr auto deviceKey = "pendingRestoreDevice";
constexpr auto routeKey = "pendingRestoreRoute";
constexpr auto referenceKey = "pendingRestoreReference";
constexpr auto ratiosKey = "pendingRestoreRatios";

std::string toText(const std::vector<float>& ratios) {
    constexpr int exactDigits = 9;  // enough to read back the same float
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(exactDigits);
    for (const float ratio : ratios) {
        text << (text.tellp() > 0 ? " " : "") << ratio;
    }
    return text.str();
}

/// None unless all of the text is numbers from 0 to 1.
std::optional<std::vector<float>> parseRatios(const std::string& text) {
    std::istringstream input(text);
    std::vector<float> ratios;
    for (std::string word; input >> word;) {
        const auto ratio = parseNumber(word);
        if (!ratio || *ratio < 0 || *ratio > 1) {
            return std::nullopt;
        }
        ratios.push_back(static_cast<float>(*ratio));
    }
    return ratios;
}

std::optional<OutputDeviceRecord> readDevice(const UserDefaults& defaults) {
    const auto name = defaults.text(deviceKey);
    const auto route = defaults.text(routeKey);
    const auto reference = defaults.number(referenceKey);
    const auto ratiosText = defaults.text(ratiosKey);
    const auto ratios = ratiosText ? parseRatios(*ratiosText) : std::nullopt;
    if (!name || name->empty() || !route || !reference || *reference < 1 ||
        *reference > PendingRestore::highestReference || !ratios) {
        return std::nullopt;
    }
    return OutputDeviceRecord{*name, *route, static_cast<float>(*reference), *ratios};
}

}  // namespace

std::optional<PendingRestore> PendingRestore::read(const UserDefaults& defaults) {
    const auto volume = defaults.number(key);
    if (!volume) {
        return std::nullopt;
    }
    return PendingRestore{static_cast<float>(*volume), readDevice(defaults)};
}

void PendingRestore::write(UserDefaults& defaults) const {
    UserDefaults::Changes changes{{key, static_cast<double>(volume)}};
    if (device) {
        changes.insert(changes.end(), {{deviceKey, device->name},
                                       {routeKey, device->route},
                                       {referenceKey, static_cast<double>(device->reference)},
                                       {ratiosKey, toText(device->ratios)}});
    } else {
        for (const auto* other : {deviceKey, routeKey, referenceKey, ratiosKey}) {
            changes.emplace_back(other, std::nullopt);
        }
    }
    defaults.apply(changes);
}

void PendingRestore::remove(UserDefaults& defaults) {
    UserDefaults::Changes changes;
    for (const auto* each : {key, deviceKey, routeKey, referenceKey, ratiosKey}) {
        changes.emplace_back(each, std::nullopt);
    }
    defaults.apply(changes);
}

}  // namespace sordin

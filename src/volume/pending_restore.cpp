// SPDX-License-Identifier: MIT
#include "volume/pending_restore.h"

#include "support/numbers.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

namespace sordin {

namespace {

struct Keys {
    const char* volume;
    const char* device;
    const char* route;
    const char* reference;
    const char* ratios;
};

constexpr Keys latestKeys{PendingRestore::key, "pendingRestoreDevice", "pendingRestoreRoute",
                          "pendingRestoreReference", "pendingRestoreRatios"};
constexpr Keys awayKeys{"pendingRestoreAwayVolume", "pendingRestoreAwayDevice", "pendingRestoreAwayRoute",
                        "pendingRestoreAwayReference", "pendingRestoreAwayRatios"};

const Keys& keysOf(PendingRestore::Slot slot) {
    return slot == PendingRestore::Slot::latest ? latestKeys : awayKeys;
}

std::string toText(const std::vector<float>& ratios) {
    constexpr int exactDigits = 9;  // enough for an exact round trip of a float
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(exactDigits);
    for (const float ratio : ratios) {
        text << (text.tellp() > 0 ? " " : "") << ratio;
    }
    return text.str();
}

/// Parses ratios separated by white space. Returns nothing unless all are valid.
std::optional<std::vector<float>> parseRatios(const std::string& text) {
    std::istringstream input(text);
    std::vector<float> ratios;
    for (std::string word; input >> word;) {
        const auto ratio = parseNumber(word);
        if (!ratio) {
            return std::nullopt;
        }
        ratios.push_back(static_cast<float>(*ratio));
    }
    return PendingRestore::areRatios(ratios) ? std::optional(ratios) : std::nullopt;
}

std::optional<OutputDeviceRecord> readDevice(const UserDefaults& defaults, const Keys& keys) {
    const auto name = defaults.text(keys.device);
    const auto route = defaults.text(keys.route);
    const auto reference = defaults.number(keys.reference);
    const auto ratiosText = defaults.text(keys.ratios);
    const auto ratios = ratiosText ? parseRatios(*ratiosText) : std::nullopt;
    if (!name || name->empty() || !route || !reference || !(*reference >= 1) || !ratios) {
        return std::nullopt;
    }
    return OutputDeviceRecord{
        *name, *route, static_cast<float>(std::min(*reference, PendingRestore::highestReference)), *ratios};
}

}  // namespace

bool PendingRestore::areRatios(const std::vector<float>& ratios) {
    return ratios.empty() ||
           (std::all_of(ratios.begin(), ratios.end(), [](float ratio) { return ratio >= 0 && ratio <= 1; }) &&
            std::find(ratios.begin(), ratios.end(), 1.0F) != ratios.end());
}

std::optional<PendingRestore> PendingRestore::read(const UserDefaults& defaults, Slot slot) {
    const Keys& keys = keysOf(slot);
    const auto volume = defaults.number(keys.volume);
    if (!volume || std::isnan(*volume)) {
        return std::nullopt;
    }
    return PendingRestore{static_cast<float>(std::clamp(*volume, 0.0, 1.0)), readDevice(defaults, keys)};
}

void PendingRestore::write(UserDefaults& defaults, Slot slot) const {
    const Keys& keys = keysOf(slot);
    UserDefaults::Changes changes{{keys.volume, static_cast<double>(volume)}};
    if (device) {
        changes.insert(changes.end(), {{keys.device, device->name},
                                       {keys.route, device->route},
                                       {keys.reference, static_cast<double>(device->reference)},
                                       {keys.ratios, toText(device->ratios)}});
    } else {
        for (const auto* other : {keys.device, keys.route, keys.reference, keys.ratios}) {
            changes.emplace_back(other, std::nullopt);
        }
    }
    defaults.apply(changes);
}

void PendingRestore::remove(UserDefaults& defaults, Slot slot) {
    const Keys& keys = keysOf(slot);
    UserDefaults::Changes changes;
    for (const auto* each : {keys.volume, keys.device, keys.route, keys.reference, keys.ratios}) {
        changes.emplace_back(each, std::nullopt);
    }
    defaults.apply(changes);
}

}  // namespace sordin

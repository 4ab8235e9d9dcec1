// SPDX-License-Identifier: MIT
#include "platform/audio_process_inspector.h"

#include <algorithm>
#include <string_view>

namespace sordin {

namespace {

/// Returns the first component of a path that is a bundle, without its ending.
std::optional<std::string> outermostBundle(std::string_view path) {
    constexpr std::string_view ending = ".app";
    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(path.size(), component.size() + 1));
        if (component.size() > ending.size() && component.ends_with(ending)) {
            return std::string(component.substr(0, component.size() - ending.size()));
        }
    }
    return std::nullopt;
}

std::optional<std::string> nonEmpty(const std::string& name) {
    return name.empty() ? std::nullopt : std::optional(name);
}

}  // namespace

std::vector<AudioObjectId> AudioProcessInspector::processObjects() const {
    return read<std::vector<AudioObjectId>>(objects_, systemAudioObject, audio_property::processList)
        .value_or(std::vector<AudioObjectId>());
}

std::optional<std::string> AudioProcessInspector::appName(std::int32_t processId) const {
    const auto application = directory_.runningApplication(processId);
    if (!application) {
        return std::nullopt;
    }
    if (auto bundle = outermostBundle(application->bundlePath)) {
        return bundle;
    }
    return nonEmpty(application->localisedName);
}

std::vector<std::string> AudioProcessInspector::activeOutputApps() const {
    std::vector<std::string> names;
    for (const AudioObjectId object : processObjects()) {
        const auto running = read<std::uint32_t>(objects_, object, audio_property::isRunningOutput);
        const auto processId = read<std::int32_t>(objects_, object, audio_property::processId);
        if (running.value_or(0) == 0 || !processId || *processId == directory_.ownProcessId()) {
            continue;
        }
        const auto name = appName(*processId);
        if (name && std::find(names.begin(), names.end(), *name) == names.end()) {
            names.push_back(*name);
        }
    }
    return names;
}

std::string AudioProcessInspector::likelySource() const {
    const auto active = activeOutputApps();
    const auto frontmost = directory_.frontmostApplication();
    const auto frontmostName = frontmost ? nonEmpty(frontmost->localisedName) : std::nullopt;
    if (frontmostName && std::find(active.begin(), active.end(), *frontmostName) != active.end()) {
        return *frontmostName;
    }
    if (!active.empty()) {
        return active.front();
    }
    return frontmostName.value_or("Unknown");
}

}  // namespace sordin

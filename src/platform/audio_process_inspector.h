// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/process_directory.h"

#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// Names the application that is most likely the source of the audio. Stateless; any thread.
class AudioProcessInspector {
public:
    /// Both must outlive the inspector.
    AudioProcessInspector(const AudioObjects& objects, const ProcessDirectory& directory)
        : objects_(objects), directory_(directory) {}

    /// Returns the name of a process's application: its outermost bundle, so that a helper process counts as
    /// the application that contains it, otherwise its localized name. None if unknown.
    [[nodiscard]] std::optional<std::string> appName(std::int32_t processId) const;

    /// Returns the applications other than this one that currently play, without duplicates, in the audio
    /// system's order. Empty if the audio system does not provide this.
    [[nodiscard]] std::vector<std::string> activeOutputApps() const;

    /// See ProcessDirectory.
    [[nodiscard]] std::vector<std::string> applicationIds(const std::string& name) const {
        return directory_.applicationIds(name);
    }
    [[nodiscard]] std::string applicationName(const std::string& id) const {
        return directory_.applicationName(id);
    }

    /// Returns the frontmost application if it plays, else the first application that plays, else the
    /// frontmost one, else "Unknown". Never empty.
    [[nodiscard]] std::string likelySource() const;

private:
    [[nodiscard]] std::vector<AudioObjectId> processObjects() const;

    const AudioObjects& objects_;
    const ProcessDirectory& directory_;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include "platform/audio_objects.h"
#include "platform/process_directory.h"

#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// Names the application that is most likely the source of what is heard. Keeps nothing; any thread.
class AudioProcessInspector {
public:
    /// Both must outlive the inspector.
    AudioProcessInspector(const AudioObjects& objects, const ProcessDirectory& directory)
        : objects_(objects), directory_(directory) {}

    /// The name of the application that a process belongs to: its outermost bundle, so that a helper counts
    /// as the application that it lives in, otherwise its localised name.
    [[nodiscard]] std::optional<std::string> appName(std::int32_t processId) const;

    /// The applications other than this one that produce audio now, each once, in the audio system's order.
    /// Empty where the audio system does not tell.
    [[nodiscard]] std::vector<std::string> activeOutputApps() const;

    /// See ProcessDirectory.
    [[nodiscard]] std::vector<std::string> applicationIds(const std::string& name) const {
        return directory_.applicationIds(name);
    }
    [[nodiscard]] std::string applicationName(const std::string& id) const {
        return directory_.applicationName(id);
    }

    /// The one to name: the frontmost application if it is playing, else the first that plays, else the
    /// frontmost, else "Unknown". Never empty.
    [[nodiscard]] std::string likelySource() const;

private:
    [[nodiscard]] std::vector<AudioObjectId> processObjects() const;

    const AudioObjects& objects_;
    const ProcessDirectory& directory_;
};

}  // namespace sordin

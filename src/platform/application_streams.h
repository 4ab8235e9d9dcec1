// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace sordin {

/// A stream of an application that currently plays or records. Excluded are streams of this program, copies
/// of other sound (filters, effects, loopbacks) and recordings of playback (monitors).
struct ApplicationStream {
    enum class Kind {
        plays,
        playsCall,  ///< plays a call: the application itself marked the stream so
        records     ///< records from a microphone
    };

    Kind kind = Kind::plays;
    /// Equal for all streams of one process, or of one client where the process is unknown.
    std::string program;
    std::optional<std::int32_t> process;  ///< none if unknown
    std::string name;                     ///< the application's name for itself, one short line; may be empty

    bool operator==(const ApplicationStream&) const = default;
};

/// The audio to exclude from listening.
struct LeftOut {
    bool everything = false;
    std::set<std::string> applications;  ///< identifiers from ProcessDirectory::applicationIds()

    [[nodiscard]] bool holdsAny(const std::vector<std::string>& ids) const {
        return std::any_of(ids.begin(), ids.end(),
                           [this](const auto& id) { return applications.count(id) > 0; });
    }
};

/// Lists the applications' streams and excludes some of them from listening. Any thread.
class ApplicationStreams {
public:
    using Handler = std::function<void(const std::vector<ApplicationStream>&)>;

    virtual ~ApplicationStreams() = default;

    /// Sets the handler for the list of all streams. It is called once soon, and again after each change, on
    /// any thread and with locks of the audio system held: it must only post. An empty handler removes the
    /// current one, which is not running and is not called again after the return.
    virtual void onChange(Handler handler) = 0;

    /// Replaces the set of excluded streams. The capture does not record them, and AudioObjects does not list
    /// their processes. Initially the set is empty.
    virtual void leaveOut(LeftOut what) = 0;
};

}  // namespace sordin

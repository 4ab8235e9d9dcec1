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

/// A stream of an application that plays or records now. Streams of this program, copies of other sound
/// (filters, effects, loopbacks) and recordings of what is played are not among them.
struct ApplicationStream {
    enum class Kind {
        plays,
        playsCall,  ///< plays a call, as the application itself has marked the stream
        records     ///< from a microphone
    };

    Kind kind = Kind::plays;
    std::string program;  ///< the same for all streams of one process; of one client where that is not known
    std::optional<std::int32_t> process;  ///< none where it is not known
    std::string name;                     ///< what the application calls itself, one short line; may be empty

    bool operator==(const ApplicationStream&) const = default;
};

/// What is not listened to.
struct LeftOut {
    bool everything = false;
    std::set<std::string> applications;  ///< identifiers, as ProcessDirectory gives them

    [[nodiscard]] bool holdsAny(const std::vector<std::string>& ids) const {
        return std::any_of(ids.begin(), ids.end(),
                           [this](const auto& id) { return applications.count(id) > 0; });
    }
};

/// The applications' streams, and which of them are listened to. Any thread.
class ApplicationStreams {
public:
    using Handler = std::function<void(const std::vector<ApplicationStream>&)>;

    virtual ~ApplicationStreams() = default;

    /// Sets what is called with all streams, once soon and then whenever they have changed, on any thread
    /// with locks of the audio system held: it must only post. Empty for nothing; then it is not being
    /// called any more.
    virtual void onChange(Handler handler) = 0;

    /// Leaves out these in place of what was left out before: neither heard by the capture nor among the
    /// audio objects' processes. Initially nothing is left out.
    virtual void leaveOut(LeftOut what) = 0;
};

}  // namespace sordin

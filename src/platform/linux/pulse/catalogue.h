// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application_streams.h"
#include "platform/linux/server/volume_props.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sordin::pulse {

/// The server's index of an object, unique for its kind.
using Index = std::uint32_t;

struct Sink {
    std::string name;
    std::string port;  ///< its connector; empty if it has none
    VolumeProps volume;
    bool running = false;         ///< whether it processes audio now, audible or not
    Index monitor = 0;            ///< the source that repeats its output
    std::optional<Index> module;  ///< the module that created it
};

/// A stream that plays to a sink ("sink input").
struct Player {
    Index sink = 0;
    std::optional<Index> client;
    std::optional<Index> module;  ///< the module that created it, if no program did
    bool paused = false;
    bool call = false;  ///< the program marked it as a call
};

/// A stream that records from a source ("source output").
struct Recorder {
    Index source = 0;
    std::optional<Index> module;
    std::optional<Index> client{};
    bool paused = false;
    bool metersPeaks = false;  ///< receives only levels, as mixers do
};

/// A program's connection to the server.
struct Client {
    std::optional<std::int32_t> processId;
    /// The process identifier and executable that the program claims; in a sandbox, they are local to it.
    std::string claimedProcess{};
    std::string claimedId{};  ///< the application identifier that the program claims
    std::string name{};       ///< the program's name for itself
    bool leftOut = false;     ///< excluded from listening
    std::optional<std::vector<std::string>> applicationIds{};  ///< resolved at the first use
};

/// The server's objects that matter to this program. The connection updates it under the loop's lock.
struct Catalogue {
    std::string defaultSink;
    std::map<Index, Sink> sinks;
    std::map<Index, Player> players;
    std::map<Index, Recorder> recorders;
    std::map<Index, Client> clients;
    bool allLeftOut = false;  ///< all sound is excluded from listening

    /// Marks the excluded clients.
    void leaveOut(const LeftOut& what);

    /// Returns the process of a player's program; none if the server does not know it.
    [[nodiscard]] std::optional<std::int32_t> processOf(const Player& player) const;

    /// Whether a player is an application's sound that is to be captured. False for this program, for
    /// excluded applications, and for copies of other sound: the output of a module that created a sink or
    /// records a monitor.
    [[nodiscard]] bool isAudible(const Player& player) const;

    /// Whether it is audible and plays now.
    [[nodiscard]] bool plays(const Player& player) const;

    /// Returns the streams of applications that play or record now, without this program's.
    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const;

private:
    /// Null if the client is unknown or belongs to this process.
    [[nodiscard]] const Client* otherClient(const std::optional<Index>& client) const;
    [[nodiscard]] bool takesSound(const Player& player) const;
    [[nodiscard]] bool isMonitor(Index source) const;
};

/// Returns the process identifier that a program claims as `id` if that process runs the executable `binary`;
/// otherwise none, because a sandboxed program claims the identifier inside its sandbox.
[[nodiscard]] std::optional<std::int32_t> processHere(const std::string& id, const std::string& binary);

}  // namespace sordin::pulse

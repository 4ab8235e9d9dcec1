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

/// The server's number of an object, among those of its kind.
using Index = std::uint32_t;

struct Sink {
    std::string name;
    std::string port;  ///< its connector; empty when it has none
    VolumeProps volume;
    bool running = false;         ///< whether it takes sound now, heard or not
    Index monitor = 0;            ///< the source that repeats what it plays
    std::optional<Index> module;  ///< that made it
};

/// What plays to a sink ("sink input").
struct Player {
    Index sink = 0;
    std::optional<Index> client;
    std::optional<Index> module;  ///< that made it, of one that no program made
    bool paused = false;
    bool call = false;  ///< marked by the program as the sound of a call
};

/// What records from a source ("source output").
struct Recorder {
    Index source = 0;
    std::optional<Index> module;
    std::optional<Index> client{};
    bool paused = false;
    bool metersPeaks = false;  ///< gets levels alone, as mixers do
};

/// A program's connection to the server.
struct Client {
    std::optional<std::int32_t> processId;
    std::string
        claimedProcess{};     ///< number and file of the process as the program says them, maybe in a sandbox
    std::string claimedId{};  ///< the application's identifier, as the program says it
    std::string name{};       ///< what the program calls itself
    bool leftOut = false;     ///< not to be listened to
    std::optional<std::vector<std::string>> applicationIds{};  ///< once they have been needed
};

/// What the server has, as far as it matters here. Filled by the connection, under the loop's lock.
struct Catalogue {
    std::string defaultSink;
    std::map<Index, Sink> sinks;
    std::map<Index, Player> players;
    std::map<Index, Recorder> recorders;
    std::map<Index, Client> clients;
    bool allLeftOut = false;  ///< nothing is to be listened to

    /// Marks what is not to be listened to among the clients.
    void leaveOut(const LeftOut& what);

    /// The process of the program that plays; none if the server does not know it.
    [[nodiscard]] std::optional<std::int32_t> processOf(const Player& player) const;

    /// Whether it is an application's sound to be listened to, not this program's and not a copy of other
    /// sound: what a module passes on from a sink of its own or from the monitor of one.
    [[nodiscard]] bool isAudible(const Player& player) const;

    /// Whether sound comes from it now.
    [[nodiscard]] bool plays(const Player& player) const;

    /// What applications play and record now, this program not among them.
    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const;

private:
    /// None where it is not known, or is this program.
    [[nodiscard]] const Client* otherClient(const std::optional<Index>& client) const;
    [[nodiscard]] bool takesSound(const Player& player) const;
    [[nodiscard]] bool isMonitor(Index source) const;
};

/// The process that a program says it is, by the number and the name of its file; none where that is another
/// here: a program in a sandbox counts processes by itself.
[[nodiscard]] std::optional<std::int32_t> processHere(const std::string& id, const std::string& binary);

}  // namespace sordin::pulse

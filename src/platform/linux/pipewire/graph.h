// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application_streams.h"
#include "platform/linux/pipewire/pods.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sordin::pipewire {

/// The server's numbers of its objects; used again after an object is gone.
using GlobalId = std::uint32_t;

/// A node that plays, records or is a sink; others are not kept.
struct Node {
    std::string name;
    std::string mediaClass;
    std::string linkGroup;      ///< the same for the two ends of a loopback or filter; else empty
    std::string role;           ///< what the application says that it is for; may be empty
    bool capturesSink = false;  ///< a recorder of what a sink plays
    bool metersPeaks = false;   ///< a recorder of levels alone, as mixers have
    std::optional<GlobalId> client;
    std::optional<GlobalId> device;    ///< the sound card that a sink belongs to
    std::optional<int> profileDevice;  ///< which of the card's
    bool described = false;            ///< whether all of the above is known
    bool running = false;
    VolumeProps volume;

    [[nodiscard]] bool plays() const { return mediaClass == "Stream/Output/Audio"; }
    [[nodiscard]] bool records() const { return mediaClass == "Stream/Input/Audio"; }
    [[nodiscard]] bool isSink() const { return mediaClass == "Audio/Sink" || mediaClass == "Audio/Duplex"; }
};

struct Port {
    GlobalId node = 0;
    bool output = false;
    bool monitor = false;
    std::string channel;  ///< "FL", "MONO"...
};

struct Link {
    GlobalId outputPort = 0;
    GlobalId inputNode = 0;
};

/// A program's connection to the server.
struct Client {
    bool described = false;
    std::optional<std::int32_t> processId;  ///< of the program that plays, also through the PulseAudio socket
    std::optional<std::int32_t> connectedProcessId;  ///< of the process at the connection's other end
    bool throughPulse = false;
    std::string portalApplication;  ///< the application's identifier, of applications in a sandbox
    std::string name;               ///< what the program calls itself
    std::string claimedId;          ///< the application's identifier, as the program says it
    bool leftOut = false;           ///< not to be listened to
    std::optional<std::vector<std::string>> applicationIds;  ///< once they have been needed

    /// The same for all clients of a process, inside and outside of sandboxes; none where the process is not
    /// known.
    [[nodiscard]] std::optional<std::string> program() const;
};

/// A sound card.
struct Device {
    bool described = false;
    bool hasRoutes = false;         ///< whether it says that it has any
    std::map<int, Route> routes{};  ///< those in use, by profile device
};

/// What the server has, as far as it matters here. Filled by the connection, under the loop's lock.
struct Graph {
    std::map<GlobalId, Node> nodes;
    std::map<GlobalId, Port> ports;
    std::map<GlobalId, Link> links;
    std::map<GlobalId, Client> clients;
    std::map<GlobalId, Device> devices;
    std::string defaultSink;                 ///< the node's name; empty while there is none
    std::optional<GlobalId> ownClient;       ///< this connection
    std::uint32_t sessionManagerStarts = 0;  ///< how often the session manager has come up
    bool allLeftOut = false;                 ///< nothing is to be listened to

    /// Marks what is not to be listened to among the clients that are described by now.
    void leaveOut(const LeftOut& what);

    /// Whether a client is this program: this connection, or another of the same process. Nothing while that
    /// cannot be known yet.
    [[nodiscard]] std::optional<bool> isOwn(const Client& client, GlobalId id) const;

    /// Whether a node is an application's sound to be listened to, not this program's and not a copy of other
    /// sound: neither end of a filter or loopback, unless what is looped comes from a microphone.
    [[nodiscard]] bool isAudible(const Node& node) const;

    /// What applications play and record now, this program not among them.
    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const;

    [[nodiscard]] bool hasSink() const;

private:
    /// The client of a node, unless it is this program's or not known yet.
    [[nodiscard]] const Client* otherClient(const Node& node) const;
    /// Whether a recorder gets sound that is neither a sink's nor a player's.
    [[nodiscard]] bool hearsMicrophone(GlobalId recorder) const;
};

}  // namespace sordin::pipewire

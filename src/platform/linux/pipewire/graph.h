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

/// The server's identifier of an object; the server reuses it after the object is gone.
using GlobalId = std::uint32_t;

/// A node that plays, records or is a sink. The graph contains no other nodes.
struct Node {
    std::string name;
    std::string mediaClass;
    std::string linkGroup;      ///< equal for both ends of a loopback or filter, otherwise empty
    std::string role;           ///< the media role that the application set; may be empty
    bool capturesSink = false;  ///< records what a sink plays (its monitor)
    bool metersPeaks = false;   ///< records only levels, as mixers do
    std::optional<GlobalId> client;
    std::optional<GlobalId> device;    ///< the sound card of a sink
    std::optional<int> profileDevice;  ///< the profile device on that card
    bool described = false;            ///< whether the fields above are known
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
    std::optional<std::int32_t> processId;  ///< of the playing program, also through the PulseAudio socket
    std::optional<std::int32_t> connectedProcessId;  ///< of the process at the other end of the connection
    bool throughPulse = false;
    std::string portalApplication;  ///< the application identifier, for sandboxed applications
    std::string name;               ///< the program's name for itself
    std::string claimedId;          ///< the application identifier that the program claims
    bool leftOut = false;           ///< excluded from listening
    std::optional<std::vector<std::string>> applicationIds;  ///< resolved at the first use

    /// Equal for all clients of a process, inside and outside of sandboxes; none if the process is unknown.
    [[nodiscard]] std::optional<std::string> program() const;
};

/// A sound card.
struct Device {
    bool described = false;
    bool hasRoutes = false;         ///< whether the card reports any
    std::map<int, Route> routes{};  ///< the active ones, by profile device
};

/// The server's objects that matter to this program. The connection updates it under the loop's lock.
struct Graph {
    std::map<GlobalId, Node> nodes;
    std::map<GlobalId, Port> ports;
    std::map<GlobalId, Link> links;
    std::map<GlobalId, Client> clients;
    std::map<GlobalId, Device> devices;
    std::string defaultSink;                 ///< the name of its node; empty if there is none
    std::optional<GlobalId> ownClient;       ///< this connection's client
    std::uint32_t sessionManagerStarts = 0;  ///< how often the session manager has started
    bool allLeftOut = false;                 ///< all sound is excluded from listening

    /// Marks the excluded clients among those that are described so far.
    void leaveOut(const LeftOut& what);

    /// Whether a client belongs to this process: this connection or another one. None while unknown.
    [[nodiscard]] std::optional<bool> isOwn(const Client& client, GlobalId id) const;

    /// Whether a node plays an application's sound that is to be captured. False for this program, for
    /// excluded applications, and for copies of other sound: both ends of a filter or loopback, unless its
    /// source is a microphone.
    [[nodiscard]] bool isAudible(const Node& node) const;

    /// Returns the streams of applications that play or record now, without this program's.
    [[nodiscard]] std::vector<ApplicationStream> applicationStreams() const;

    [[nodiscard]] bool hasSink() const;

private:
    /// Returns the client of a node; null if it is this program's or not known yet.
    [[nodiscard]] const Client* otherClient(const Node& node) const;
    /// Whether the source of a recorder is neither a sink nor a player.
    [[nodiscard]] bool hearsMicrophone(GlobalId recorder) const;
};

}  // namespace sordin::pipewire

// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/pulse/catalogue.h"
#include "platform/linux/pulse/handles.h"
#include "platform/linux/pulse/loop.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <pulse/introspect.h>
#include <pulse/subscribe.h>

namespace sordin::pulse {

/// One connection to the server, until it is lost. Use it on the loop's thread, under its lock. It must not
/// be destroyed in one of its own events.
class Connection {
public:
    struct Events {
        std::function<void()> identified;    ///< isPulseAudio() is known; called once
        std::function<void()> changed;       ///< the catalogue changed
        std::function<void()> lost;          ///< connecting failed, or the connection was lost; called once
        std::function<void()> synchronised;  ///< the server has processed everything before a synchronise()
    };

    /// Returns null if the client library refuses to connect.
    [[nodiscard]] static std::unique_ptr<Connection> open(const Loop& loop, Events events);

    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] pa_context* context() const { return context_.get(); }
    [[nodiscard]] const Catalogue& catalogue() const { return catalogue_; }

    /// See Catalogue::leaveOut().
    void leaveOut(const LeftOut& what) { catalogue_.leaveOut(what); }

    /// Whether the server is PulseAudio itself; false if it is PipeWire's replacement, none while unknown.
    [[nodiscard]] std::optional<bool> isPulseAudio() const { return isPulseAudio_; }

    /// Queries all objects of a PulseAudio server and subscribes to changes.
    void list();
    /// Whether every query has been answered at least once.
    [[nodiscard]] bool listed() const;

    /// Requests a reply from the server. Each call leads to one `synchronised`, in order. Returns false if
    /// the request cannot be sent.
    bool synchronise();

    void setSinkVolume(Index sink, const VolumeProps& volume);

private:
    /// The subject of a query: the server itself or one kind of its objects.
    enum Kind : std::size_t { server, sinks, players, recorders, clients, kinds };

    struct Question {
        bool asked = false;
        bool again = false;  // a change arrived since, so query again
        bool answered = false;
    };

    Connection(const Loop& loop, Events events);
    void onState();
    void onServer(const pa_server_info* info);
    void onSubscription(pa_subscription_event_type_t event);
    void ask(Kind kind);
    [[nodiscard]] bool send(Kind kind);
    void answered(Kind kind);
    /// Handles a callback of a list query: `end` is 0 for each object, then nonzero once.
    template <class Info, class Entry>
    static void onEntry(void* data, Kind kind, std::map<Index, Entry> Connection::*incoming,
                        std::map<Index, Entry> Catalogue::*entries, const Info* info, int end);

    Events events_;
    Catalogue catalogue_;
    std::optional<bool> isPulseAudio_;
    std::array<Question, kinds> questions_;
    // Lists that are not complete yet:
    std::map<Index, Sink> sinksComing_;
    std::map<Index, Player> playersComing_;
    std::map<Index, Recorder> recordersComing_;
    std::map<Index, Client> clientsComing_;
    ContextPointer context_;
};

}  // namespace sordin::pulse

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

/// One connection to the server, from connecting to its loss. Lives on the loop, under its lock; must not be
/// destroyed by one of its own events.
class Connection {
public:
    struct Events {
        std::function<void()> identified;    ///< once: it is known who the server is
        std::function<void()> changed;       ///< the catalogue has changed
        std::function<void()> lost;          ///< once: there is no server, or it is gone
        std::function<void()> synchronised;  ///< the server has done all that came before a synchronise()
    };

    /// Nothing if the client library refuses.
    [[nodiscard]] static std::unique_ptr<Connection> open(const Loop& loop, Events events);

    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] pa_context* context() const { return context_.get(); }
    [[nodiscard]] const Catalogue& catalogue() const { return catalogue_; }

    /// See Catalogue.
    void leaveOut(const LeftOut& what) { catalogue_.leaveOut(what); }

    /// Whether the server is PulseAudio itself, not PipeWire in its place; none while that is not known.
    [[nodiscard]] std::optional<bool> isPulseAudio() const { return isPulseAudio_; }

    /// Asks a PulseAudio for all it has, and for word of every change.
    void list();
    /// Whether everything has been answered once.
    [[nodiscard]] bool listed() const;

    /// Asks the server to answer; each question is one `synchronised`, in order. False if it cannot be asked.
    bool synchronise();

    void setSinkVolume(Index sink, const VolumeProps& volume);

private:
    /// What the server is asked for: one kind of its objects, or itself.
    enum Kind : std::size_t { server, sinks, players, recorders, clients, kinds };

    struct Question {
        bool asked = false;
        bool again = false;  // it has changed since
        bool answered = false;
    };

    Connection(const Loop& loop, Events events);
    void onState();
    void onServer(const pa_server_info* info);
    void onSubscription(pa_subscription_event_type_t event);
    void ask(Kind kind);
    [[nodiscard]] bool send(Kind kind);
    void answered(Kind kind);
    /// One callback for a list of objects of a kind: `end` is 0 for each, and then once something else.
    template <class Info, class Entry>
    static void onEntry(void* data, Kind kind, std::map<Index, Entry> Connection::*incoming,
                        std::map<Index, Entry> Catalogue::*entries, const Info* info, int end);

    Events events_;
    Catalogue catalogue_;
    std::optional<bool> isPulseAudio_;
    std::array<Question, kinds> questions_;
    // Lists that are still coming in.
    std::map<Index, Sink> sinksComing_;
    std::map<Index, Player> playersComing_;
    std::map<Index, Recorder> recordersComing_;
    std::map<Index, Client> clientsComing_;
    ContextPointer context_;
};

}  // namespace sordin::pulse

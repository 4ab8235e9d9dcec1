// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/connection.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace sordin::pulse {

namespace {

std::optional<Index> valid(Index index) {
    return index != PA_INVALID_INDEX ? std::optional(index) : std::nullopt;
}

std::string text(const char* value) {
    return value != nullptr ? value : "";
}

// The server's volumes are on the scale of mixers: cube roots of amplitudes.
float amplitude(pa_volume_t volume) {
    const float shown = static_cast<float>(volume) / static_cast<float>(PA_VOLUME_NORM);
    return shown * shown * shown;
}

pa_volume_t serverVolume(float amplitude) {
    const float volume = std::cbrt(std::max(amplitude, 0.0F)) * static_cast<float>(PA_VOLUME_NORM);
    return static_cast<pa_volume_t>(std::lround(std::min(volume, static_cast<float>(PA_VOLUME_MAX / 2))));
}

Sink entryOf(const pa_sink_info& info) {
    Sink sink;
    sink.name = text(info.name);
    sink.port = info.active_port != nullptr ? text(info.active_port->name) : "";
    for (unsigned channel = 0; channel < info.volume.channels && channel < PA_CHANNELS_MAX; ++channel) {
        sink.volume.channels.push_back(amplitude(info.volume.values[channel]));
    }
    sink.volume.muted = info.mute != 0;
    sink.running = info.state == PA_SINK_RUNNING;
    sink.monitor = info.monitor_source;
    sink.module = valid(info.owner_module);
    return sink;
}

Player entryOf(const pa_sink_input_info& info) {
    const bool call = text(pa_proplist_gets(info.proplist, PA_PROP_MEDIA_ROLE)) == "phone";
    return {info.sink, valid(info.client), valid(info.owner_module), info.corked != 0, call};
}

Recorder entryOf(const pa_source_output_info& info) {
    const bool metersPeaks = text(info.resample_method) == "peaks";
    return {info.source, valid(info.owner_module), valid(info.client), info.corked != 0, metersPeaks};
}

Client entryOf(const pa_client_info& info) {
    const auto property = [&info](const char* key) { return text(pa_proplist_gets(info.proplist, key)); };
    const std::string process = property(PA_PROP_APPLICATION_PROCESS_ID);
    const std::string binary = property(PA_PROP_APPLICATION_PROCESS_BINARY);
    return {processHere(process, binary), process.empty() ? process : process + ' ' + binary,
            property(PA_PROP_APPLICATION_ID), text(info.name)};
}

}  // namespace

std::unique_ptr<Connection> Connection::open(const Loop& loop, Events events) {
    std::unique_ptr<Connection> connection(new Connection(loop, std::move(events)));
    const auto onState = [](pa_context* /*context*/, void* data) {
        static_cast<Connection*>(data)->onState();
    };
    if (!connection->context_) {
        return nullptr;
    }
    pa_context_set_state_callback(connection->context_.get(), onState, connection.get());
    // Connects to the default server and never starts one.
    if (pa_context_connect(connection->context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        return nullptr;
    }
    return connection;
}

Connection::Connection(const Loop& loop, Events events) : events_(std::move(events)) {
    const PropertiesPointer properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "org.sordin.Sordin");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "org.sordin.Sordin");
    context_.reset(pa_context_new_with_proplist(loop.api(), "Sordin", properties.get()));
}

Connection::~Connection() {
    if (context_) {
        pa_context_set_state_callback(context_.get(), nullptr, nullptr);
        pa_context_set_subscribe_callback(context_.get(), nullptr, nullptr);
        pa_context_disconnect(context_.get());  // no callback follows
    }
}

void Connection::onState() {
    const auto state = pa_context_get_state(context_.get());
    if (state == PA_CONTEXT_READY) {
        ask(server);
    } else if (!PA_CONTEXT_IS_GOOD(state)) {
        events_.lost();
    }
}

void Connection::list() {
    const auto onEvent = [](pa_context* /*context*/, pa_subscription_event_type_t event, Index /*index*/,
                            void* data) { static_cast<Connection*>(data)->onSubscription(event); };
    pa_context_set_subscribe_callback(context_.get(), onEvent, this);
    constexpr auto wanted = PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SINK_INPUT |
                            PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT | PA_SUBSCRIPTION_MASK_CLIENT |
                            PA_SUBSCRIPTION_MASK_SERVER;
    static_cast<void>(sent(
        pa_context_subscribe(context_.get(), static_cast<pa_subscription_mask_t>(wanted), nullptr, nullptr)));
    for (const Kind kind : {server, sinks, players, recorders, clients}) {
        ask(kind);
    }
}

bool Connection::listed() const {
    return std::all_of(questions_.begin(), questions_.end(),
                       [](const Question& question) { return question.answered; });
}

bool Connection::synchronise() {
    return sent(pa_context_get_server_info(
        context_.get(),
        [](pa_context* /*context*/, const pa_server_info* /*info*/, void* data) {
            static_cast<Connection*>(data)->events_.synchronised();
        },
        this));
}

void Connection::setSinkVolume(Index sink, const VolumeProps& volume) {
    if (!volume.channels.empty()) {
        pa_cvolume channels;
        pa_cvolume_init(&channels);
        for (const float channel : volume.channels) {
            if (channels.channels < PA_CHANNELS_MAX) {
                channels.values[channels.channels++] = serverVolume(channel);
            }
        }
        static_cast<void>(
            sent(pa_context_set_sink_volume_by_index(context_.get(), sink, &channels, nullptr, nullptr)));
    }
    if (volume.muted) {
        static_cast<void>(sent(pa_context_set_sink_mute_by_index(context_.get(), sink, *volume.muted ? 1 : 0,
                                                                 nullptr, nullptr)));
    }
}

void Connection::onSubscription(pa_subscription_event_type_t event) {
    switch (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) {
    case PA_SUBSCRIPTION_EVENT_SERVER:
        ask(server);
        break;
    case PA_SUBSCRIPTION_EVENT_SINK:
        ask(sinks);
        break;
    case PA_SUBSCRIPTION_EVENT_SINK_INPUT:
        ask(players);
        break;
    case PA_SUBSCRIPTION_EVENT_SOURCE_OUTPUT:
        ask(recorders);
        break;
    case PA_SUBSCRIPTION_EVENT_CLIENT:
        ask(clients);
        break;
    default:
        break;
    }
}

void Connection::ask(Kind kind) {
    Question& question = questions_.at(kind);
    if (question.asked) {
        question.again = true;
    } else {
        question.asked = send(kind);
    }
}

bool Connection::send(Kind kind) {
    pa_context* context = context_.get();
    switch (kind) {
    case server:
        return sent(pa_context_get_server_info(
            context,
            [](pa_context* /*context*/, const pa_server_info* info, void* data) {
                static_cast<Connection*>(data)->onServer(info);
            },
            this));
    case sinks:
        return sent(pa_context_get_sink_info_list(
            context,
            [](pa_context* /*context*/, const pa_sink_info* info, int end, void* data) {
                onEntry(data, sinks, &Connection::sinksComing_, &Catalogue::sinks, info, end);
            },
            this));
    case players:
        return sent(pa_context_get_sink_input_info_list(
            context,
            [](pa_context* /*context*/, const pa_sink_input_info* info, int end, void* data) {
                onEntry(data, players, &Connection::playersComing_, &Catalogue::players, info, end);
            },
            this));
    case recorders:
        return sent(pa_context_get_source_output_info_list(
            context,
            [](pa_context* /*context*/, const pa_source_output_info* info, int end, void* data) {
                onEntry(data, recorders, &Connection::recordersComing_, &Catalogue::recorders, info, end);
            },
            this));
    case clients:
        return sent(pa_context_get_client_info_list(
            context,
            [](pa_context* /*context*/, const pa_client_info* info, int end, void* data) {
                onEntry(data, clients, &Connection::clientsComing_, &Catalogue::clients, info, end);
            },
            this));
    default:
        return false;
    }
}

template <class Info, class Entry>
void Connection::onEntry(void* data, Kind kind, std::map<Index, Entry> Connection::*incoming,
                         std::map<Index, Entry> Catalogue::*entries, const Info* info, int end) {
    auto& self = *static_cast<Connection*>(data);
    if (end == 0) {
        (self.*incoming)[info->index] = entryOf(*info);
        return;
    }
    auto list = std::exchange(self.*incoming, {});
    if (end > 0) {
        self.catalogue_.*entries = std::move(list);
    }
    self.answered(kind);
}

void Connection::onServer(const pa_server_info* info) {
    if (info == nullptr) {
        answered(server);
        return;
    }
    catalogue_.defaultSink = text(info->default_sink_name);
    answered(server);
    if (!isPulseAudio_) {
        // PipeWire's server name is "PulseAudio (on PipeWire 0.3.65)".
        isPulseAudio_ = text(info->server_name).find("PipeWire") == std::string::npos;
        events_.identified();
    }
}

void Connection::answered(Kind kind) {
    Question& question = questions_.at(kind);
    question.asked = false;
    question.answered = true;
    if (std::exchange(question.again, false)) {
        ask(kind);
    }
    events_.changed();
}

}  // namespace sordin::pulse

// SPDX-License-Identifier: MIT
#include "platform/linux/pipewire/capture_stream.h"

#include "platform/linux/server/heard_audio.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <spa/param/audio/format-utils.h>
#include <spa/utils/result.h>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace sordin::pipewire {

namespace {

using namespace std::chrono_literals;

constexpr auto linkRetryInterval = 500ms;
/// A tenth of a second, a fifth of the detector's hop.
constexpr std::size_t deliveryFrames = SystemAudioCapture::sampleRate / 10;

PropertiesPointer properties(const std::vector<std::pair<const char*, std::string>>& entries) {
    PropertiesPointer result(pw_properties_new(nullptr, nullptr));
    for (const auto& [key, value] : entries) {
        pw_properties_set(result.get(), key, value.c_str());
    }
    return result;
}

}  // namespace

/// A link from an application's port to a port of this node. It is passive, so that it does not keep other
/// nodes running.
class CaptureStream::Link {
public:
    Link(Session& session, PortPair ports, GlobalId from, GlobalId to) : session_(session) {
        const auto wanted = properties({{PW_KEY_LINK_OUTPUT_NODE, std::to_string(from)},
                                        {PW_KEY_LINK_OUTPUT_PORT, std::to_string(ports.first)},
                                        {PW_KEY_LINK_INPUT_NODE, std::to_string(to)},
                                        {PW_KEY_LINK_INPUT_PORT, std::to_string(ports.second)},
                                        {PW_KEY_LINK_PASSIVE, "true"}});
        proxy_.reset(static_cast<pw_proxy*>(pw_core_create_object(session.connection()->core(),
                                                                  "link-factory", PW_TYPE_INTERFACE_Link,
                                                                  PW_VERSION_LINK, &wanted->dict, 0)));
        static const pw_proxy_events events = [] {
            pw_proxy_events all{};
            all.version = PW_VERSION_PROXY_EVENTS;
            all.removed = [](void* data) { static_cast<Link*>(data)->onBroken(); };
            all.error = [](void* data, int /*sequence*/, int /*result*/, const char* /*message*/) {
                static_cast<Link*>(data)->onBroken();
            };
            return all;
        }();
        if (proxy_) {
            pw_proxy_add_listener(proxy_.get(), hook_.get(), &events, this);
        } else {
            onBroken();
        }
    }

    [[nodiscard]] bool broken() const { return broken_; }

private:
    void onBroken() {
        broken_ = true;
        session_.refreshAfter(linkRetryInterval);
    }

    Session& session_;
    ProxyPointer proxy_;
    Hook hook_;
    bool broken_ = false;
};

CaptureStream::CaptureStream(Session& session, const LoopbackSource::Handlers& handlers)
    : session_(session), handlers_(handlers), enoughHeard_(session.loop(), [this] { deliver(); }) {
    connect();
}

CaptureStream::~CaptureStream() = default;

void CaptureStream::connect() {
    core_.reset(pw_context_connect(session_.context(), nullptr, 0));
    if (!core_) {
        end("no connection");
        return;
    }
    // This media class keeps the stream out of the user's list of recording applications. A media role is not
    // set, because the session manager would store volumes under it.
    auto wanted = properties({{PW_KEY_MEDIA_TYPE, "Audio"},
                              {PW_KEY_MEDIA_CATEGORY, "Capture"},
                              {PW_KEY_MEDIA_CLASS, "Stream/Input/Audio/Internal"},
                              {PW_KEY_NODE_NAME, "sordin"},
                              {PW_KEY_NODE_DESCRIPTION, "Sordin"}});
    stream_.reset(pw_stream_new(core_.get(), "sordin", wanted.release()));
    if (!stream_) {
        end("no stream");
        return;
    }
    static const pw_stream_events events = [] {
        pw_stream_events all{};
        all.version = PW_VERSION_STREAM_EVENTS;
        all.state_changed = [](void* data, pw_stream_state /*before*/, pw_stream_state now,
                               const char* error) { static_cast<CaptureStream*>(data)->onState(now, error); };
        all.param_changed = [](void* data, std::uint32_t id, const spa_pod* param) {
            if (id == SPA_PARAM_Format) {
                static_cast<CaptureStream*>(data)->onFormat(param);
            }
        };
        all.process = [](void* data) { static_cast<CaptureStream*>(data)->onProcess(); };
        return all;
    }();
    pw_stream_add_listener(stream_.get(), hook_.get(), &events, this);
    // The channels are averaged here, because the server's mono mix is louder than each of them.
    const Pod format = Pod::ofStereoFormat(SystemAudioCapture::sampleRate);
    std::array<const spa_pod*, 1> params{format.get()};
    // The data thread takes the buffers. Waking the loop for each buffer would cost more time than everything
    // else together.
    const auto flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_INACTIVE |
                                                    PW_STREAM_FLAG_RT_PROCESS);
    const int result =
        pw_stream_connect(stream_.get(), PW_DIRECTION_INPUT, PW_ID_ANY, flags, params.data(), params.size());
    if (result < 0) {
        end(spa_strerror(result));
    }
}

void CaptureStream::update() {
    const Graph& graph = session_.connection()->graph();
    const GlobalId self = stream_ ? pw_stream_get_node_id(stream_.get()) : PW_ID_ANY;
    if (ended_ || self == PW_ID_ANY) {
        return;
    }
    if (std::exchange(sessionManagerStarts_, graph.sessionManagerStarts) != graph.sessionManagerStarts) {
        links_.clear();  // links may be listed but dead after it restarts
    }
    updateLinks(graph, self);
    updateActivity(graph);
    watchFlow();
}

void CaptureStream::setWanted(bool wanted) {
    wanted_ = wanted;
    session_.refreshAfter(0ms);
}

void CaptureStream::updateLinks(const Graph& graph, GlobalId self) {
    links_.follow(linkPlan(graph, self), [&](const PortPair& ports) {
        return std::make_unique<Link>(session_, ports, graph.ports.at(ports.first).node, self);
    });
}

void CaptureStream::updateActivity(const Graph& graph) {
    const bool playing =
        wanted_ && std::any_of(graph.nodes.begin(), graph.nodes.end(), [&graph](const auto& entry) {
            return entry.second.running && graph.isAudible(entry.second);
        });
    if (playing != flow_.active()) {
        deliver();  // the samples from before the change
        flow_.setActive(playing);
        pw_stream_set_active(stream_.get(), playing);
    }
}

void CaptureStream::watchFlow() {
    if (flow_.active()) {
        session_.refreshAfter(FlowWatch::longestDrought);
    }
    const auto verdict = flow_.look();
    if (verdict == FlowWatch::Verdict::mend) {
        links_.clear();
        session_.refreshAfter(0ms);
    } else if (verdict == FlowWatch::Verdict::hopeless) {
        end("no sound arrives");
    }
}

void CaptureStream::onState(pw_stream_state state, const char* error) {
    if (state == PW_STREAM_STATE_ERROR) {
        end(error != nullptr ? error : "stream error");
    } else if (state == PW_STREAM_STATE_PAUSED || state == PW_STREAM_STATE_STREAMING) {
        if (!std::exchange(opened_, true)) {
            handlers_.opened();
        }
        session_.refreshAfter(0ms);
    }
}

void CaptureStream::onFormat(const spa_pod* format) {
    spa_audio_info_raw info{};
    if (format != nullptr && spa_format_audio_raw_parse(format, &info) >= 0 && info.channels > 0) {
        channels_ = info.channels;
    }
}

void CaptureStream::onProcess() {
    while (pw_buffer* buffer = pw_stream_dequeue_buffer(stream_.get())) {
        if (buffer->buffer->n_datas > 0) {
            hear(buffer->buffer->datas[0]);
        }
        pw_stream_queue_buffer(stream_.get(), buffer);
    }
}

void CaptureStream::hear(const spa_data& data) {
    if (data.data == nullptr || data.chunk == nullptr) {
        return;
    }
    const std::size_t channels = channels_;
    const std::size_t offset = std::min(data.chunk->offset, data.maxsize);
    const std::size_t size = std::min<std::size_t>(data.chunk->size, data.maxsize - offset);
    const std::span samples(static_cast<const float*>(
                                static_cast<const void*>(static_cast<const std::byte*>(data.data) + offset)),
                            size / sizeof(float));
    std::array<float, 256> mono{};
    std::size_t count = 0;
    for (std::size_t frame = 0; frame < samples.size() / channels; ++frame) {
        const auto values = samples.subspan(frame * channels, channels);
        mono[count++] = std::accumulate(values.begin(), values.end(), 0.0F) / static_cast<float>(channels);
        if (count == mono.size()) {
            heard_.write(mono);
            count = 0;
        }
    }
    const std::size_t waiting = heard_.write(std::span(mono).first(count));
    if (waiting >= deliveryFrames) {
        enoughHeard_.signal();
    }
}

void CaptureStream::deliver() {
    const auto samples = heard_.take();
    if (samples.empty()) {
        return;
    }
    flow_.flowed();
    handlers_.heard(heardAudio(samples));
}

void CaptureStream::end(const std::string& reason) {
    if (!std::exchange(ended_, true)) {
        using Error = SystemAudioCapture::Error;
        handlers_.ended({Error::refused, "The PipeWire audio server ended the capture (" + reason + ")."});
    }
}

}  // namespace sordin::pipewire

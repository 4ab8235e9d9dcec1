// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/capture_stream.h"

#include "platform/linux/server/heard_audio.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <pulse/sample.h>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace sordin::pulse {

namespace {

using namespace std::chrono_literals;

constexpr auto tapRetryInterval = 500ms;
/// A tenth of a second, a fifth of the detector's hop.
constexpr std::uint32_t pieceFrames = SystemAudioCapture::sampleRate / 10;
/// Players of different sinks deliver at different times.
constexpr std::size_t patienceFrames = SystemAudioCapture::sampleRate * 3 / 10;

}  // namespace

/// A recording stream of one player.
class CaptureStream::Tap {
public:
    Tap(CaptureStream& owner, Place place) : owner_(owner), player_(place.first) {
        // One channel: the server's downmix is the mean of all channels.
        const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, SystemAudioCapture::sampleRate, 1};
        stream_.reset(
            pa_stream_new(owner_.session_.connection().context(), "Listening for ads", &format, nullptr));
        if (!stream_ || !connect(place.second)) {
            onBroken();
        }
    }
    ~Tap() {
        if (stream_) {
            pa_stream_set_state_callback(stream_.get(), nullptr, nullptr);
            pa_stream_set_read_callback(stream_.get(), nullptr, nullptr);
            pa_stream_disconnect(stream_.get());
        }
        owner_.mixer_.remove(player_);
    }
    Tap(const Tap&) = delete;
    Tap& operator=(const Tap&) = delete;

    [[nodiscard]] bool broken() const { return broken_; }

private:
    bool connect(Index monitor) {
        pa_stream_set_state_callback(
            stream_.get(), [](pa_stream* /*stream*/, void* data) { static_cast<Tap*>(data)->onState(); },
            this);
        pa_stream_set_read_callback(
            stream_.get(),
            [](pa_stream* /*stream*/, std::size_t /*bytes*/, void* data) { static_cast<Tap*>(data)->read(); },
            this);
        if (pa_stream_set_monitor_stream(stream_.get(), player_) < 0) {
            return false;
        }
        pa_buffer_attr buffer;
        // The server's defaults.
        buffer.maxlength = buffer.tlength = buffer.prebuf = buffer.minreq = UINT32_MAX;
        buffer.fragsize = pieceFrames * sizeof(float);
        // Without PA_STREAM_ADJUST_LATENCY, the server may deliver several seconds at once, as far as it
        // mixes ahead.
        constexpr auto flags =
            PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_INHIBIT_AUTO_SUSPEND;
        return pa_stream_connect_record(stream_.get(), std::to_string(monitor).c_str(), &buffer,
                                        static_cast<pa_stream_flags_t>(flags)) >= 0;
    }

    void onState() {
        if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream_.get()))) {
            onBroken();
        }
    }

    void onBroken() {
        broken_ = true;
        owner_.session_.refreshAfter(tapRetryInterval);
    }

    void read() {
        const void* data = nullptr;
        std::size_t bytes = 0;
        while (pa_stream_peek(stream_.get(), &data, &bytes) >= 0 && bytes > 0) {
            if (data != nullptr) {
                owner_.hear(player_, {static_cast<const float*>(data), bytes / sizeof(float)});
            } else {
                const std::vector<float> silence(bytes / sizeof(float));  // a gap in the recording
                owner_.hear(player_, silence);
            }
            pa_stream_drop(stream_.get());
        }
        owner_.deliver();
    }

    CaptureStream& owner_;
    const Index player_;
    StreamPointer stream_;
    bool broken_ = false;
};

CaptureStream::CaptureStream(Session& session, const LoopbackSource::Handlers& handlers)
    : session_(session), handlers_(handlers), mixer_(patienceFrames) {
    handlers_.opened();  // each player's stream connects on its own
    session_.refreshAfter(0ms);
}

CaptureStream::~CaptureStream() {
    taps_.clear();  // while the mixer still exists
}

void CaptureStream::update() {
    if (!ended_) {
        updateTaps();
        watchFlow();
    }
}

void CaptureStream::updateTaps() {
    const Catalogue& catalogue = session_.catalogue();
    std::set<Place> plan;
    bool playing = false;
    for (const auto& [index, player] : catalogue.players) {
        const auto sink = catalogue.sinks.find(player.sink);
        if (sink != catalogue.sinks.end() && catalogue.isAudible(player)) {
            plan.emplace(index, sink->second.monitor);
            if (catalogue.plays(player)) {
                playing = true;
            } else {
                mixer_.remove(index);  // a paused player must not delay the others
            }
        }
    }
    taps_.follow(plan, [this](const Place& place) { return std::make_unique<Tap>(*this, place); });
    if (playing != flow_.active()) {
        deliver();  // the samples from before the change
        flow_.setActive(playing);
    }
}

void CaptureStream::watchFlow() {
    if (flow_.active()) {
        session_.refreshAfter(FlowWatch::longestDrought);
    }
    const auto verdict = flow_.look();
    if (verdict == FlowWatch::Verdict::mend) {
        taps_.clear();
        session_.refreshAfter(0ms);
    } else if (verdict == FlowWatch::Verdict::hopeless) {
        end("no sound arrives");
    }
}

void CaptureStream::hear(Index player, std::span<const float> samples) {
    flow_.flowed();
    mixer_.add(player, samples);
}

void CaptureStream::deliver() {
    const auto samples = mixer_.take();
    if (samples.empty()) {
        return;
    }
    handlers_.heard(heardAudio(samples));
}

void CaptureStream::end(const std::string& reason) {
    ended_ = true;
    using Error = SystemAudioCapture::Error;
    handlers_.ended({Error::refused, "The PulseAudio audio server ended the capture (" + reason + ")."});
}

}  // namespace sordin::pulse

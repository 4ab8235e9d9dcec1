// SPDX-License-Identifier: MIT
// pulse_tone_player FREQUENCY AMPLITUDE [left-only] [channels=1] [target=SINK] [role=ROLE] [record=SOURCE]
// The PulseAudio version of tone_player.
#include "system/tone.h"

#include <array>
#include <iostream>
#include <pulse/pulseaudio.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace sordin {
namespace {

class PulseTonePlayer {
public:
    explicit PulseTonePlayer(Tone tone) : tone_(std::move(tone)) {}

    int run() {
        pa_mainloop_api* api = pa_mainloop_get_api(loop_);
        api->io_new(api, STDIN_FILENO, PA_IO_EVENT_INPUT, onInput, this);
        context_ = pa_context_new(api, "pulse_tone_player");
        pa_context_set_state_callback(context_, onContext, this);
        pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
        int status = 1;
        pa_mainloop_run(loop_, &status);
        return status;
    }

private:
    static PulseTonePlayer& of(void* data) { return *static_cast<PulseTonePlayer*>(data); }

    static void onContext(pa_context* context, void* data) {
        const auto state = pa_context_get_state(context);
        if (state == PA_CONTEXT_READY) {
            of(data).play();
        } else if (!PA_CONTEXT_IS_GOOD(state)) {
            pa_mainloop_quit(of(data).loop_, 1);
        }
    }

    void play() {
        const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, Tone::rate, tone_.channels};
        pa_proplist* properties = pa_proplist_new();
        if (!tone_.role.empty()) {
            pa_proplist_sets(properties, PA_PROP_MEDIA_ROLE, tone_.role.c_str());
        }
        stream_ = pa_stream_new_with_proplist(context_, "tone", &format, nullptr, properties);
        pa_proplist_free(properties);
        if (!tone_.source.empty()) {
            pa_stream* recorder = pa_stream_new(context_, "recording", &format, nullptr);
            pa_stream_set_read_callback(recorder, onRecorded, nullptr);
            pa_stream_connect_record(recorder, tone_.source.c_str(), nullptr, PA_STREAM_NOFLAGS);
        }
        pa_stream_set_write_callback(stream_, onWrite, this);
        pa_stream_set_state_callback(
            stream_,
            [](pa_stream* stream, void* data) {
                if (pa_stream_get_state(stream) == PA_STREAM_READY) {
                    std::cout << "streaming" << std::endl;
                } else if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream))) {
                    pa_mainloop_quit(of(data).loop_, 1);
                }
            },
            this);
        pa_buffer_attr buffer;
        buffer.maxlength = buffer.prebuf = buffer.minreq = buffer.fragsize = UINT32_MAX;
        buffer.tlength = static_cast<std::uint32_t>(pa_usec_to_bytes(100'000, &format));
        pa_stream_connect_playback(stream_, tone_.target.empty() ? nullptr : tone_.target.c_str(), &buffer,
                                   PA_STREAM_ADJUST_LATENCY, nullptr, nullptr);
    }

    static void onWrite(pa_stream* stream, std::size_t bytes, void* data) {
        std::vector<float> samples(bytes / sizeof(float));
        of(data).tone_.fill(samples);
        pa_stream_write(stream, samples.data(), samples.size() * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE);
    }

    static void onRecorded(pa_stream* stream, std::size_t /*bytes*/, void* /*data*/) {
        const void* samples = nullptr;
        std::size_t bytes = 0;
        while (pa_stream_peek(stream, &samples, &bytes) >= 0 && bytes > 0) {
            pa_stream_drop(stream);
        }
    }

    static void onInput(pa_mainloop_api* /*api*/, pa_io_event* /*event*/, int descriptor,
                        pa_io_event_flags_t /*flags*/, void* data) {
        auto& self = of(data);
        std::array<char, 64> text{};
        const auto got = read(descriptor, text.data(), text.size());
        if (got <= 0) {
            pa_mainloop_quit(self.loop_, 0);
            return;
        }
        const bool pause = std::string(text.data(), static_cast<std::size_t>(got)).starts_with("pause");
        pa_operation_unref(pa_stream_cork(self.stream_, pause ? 1 : 0, nullptr, nullptr));
    }

    Tone tone_;
    pa_mainloop* const loop_ = pa_mainloop_new();
    pa_context* context_ = nullptr;
    pa_stream* stream_ = nullptr;
};

}  // namespace
}  // namespace sordin

int main(int count, char** arguments) {
    return count < 3
               ? 2
               : sordin::PulseTonePlayer(sordin::Tone({arguments, static_cast<std::size_t>(count)})).run();
}

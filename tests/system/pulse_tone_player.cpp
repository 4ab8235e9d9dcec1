// SPDX-License-Identifier: MIT
// pulse_tone_player FREQUENCY AMPLITUDE [left-only] [channels=1] [target=SINK]
// Does through PulseAudio what tone_player does through PipeWire: plays a sine, 48 kHz and stereo, until its
// stdin ends. Lines "pause" and "play" on stdin do that. Says "streaming" and "paused" whenever the stream
// becomes that.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <numbers>
#include <optional>
#include <pulse/pulseaudio.h>
#include <span>
#include <string>
#include <unistd.h>
#include <vector>

namespace sordin {
namespace {

class PulseTonePlayer {
public:
    explicit PulseTonePlayer(std::span<char*> arguments)
        : step_(2 * std::numbers::pi * std::strtod(arguments[0], nullptr) / rate),
          amplitude_(std::strtod(arguments[1], nullptr)) {
        for (const std::string argument : arguments.subspan(2)) {
            if (argument == "left-only") {
                leftOnly_ = true;
            } else if (argument == "channels=1") {
                channels_ = 1;
            } else if (argument.starts_with("target=")) {
                sink_ = argument.substr(7);
            }
        }
    }

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
    static constexpr std::uint32_t rate = 48000;

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
        const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, rate, channels_};
        stream_ = pa_stream_new(context_, "tone", &format, nullptr);
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
        pa_stream_connect_playback(stream_, sink_ ? sink_->c_str() : nullptr, &buffer,
                                   PA_STREAM_ADJUST_LATENCY, nullptr, nullptr);
    }

    static void onWrite(pa_stream* stream, std::size_t bytes, void* data) {
        auto& self = of(data);
        std::vector<float> samples(bytes / sizeof(float));
        for (std::size_t i = 0; i + self.channels_ <= samples.size(); i += self.channels_) {
            const auto value = static_cast<float>(self.amplitude_ * std::sin(self.phase_));
            self.phase_ = std::fmod(self.phase_ + self.step_, 2 * std::numbers::pi);
            for (std::size_t channel = 0; channel < self.channels_; ++channel) {
                samples[i + channel] = self.leftOnly_ && channel == 1 ? 0 : value;
            }
        }
        pa_stream_write(stream, samples.data(), samples.size() * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE);
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
        pa_operation_unref(pa_stream_cork(
            self.stream_, pause ? 1 : 0,
            pause ? [](pa_stream*, int, void*) { std::cout << "paused" << std::endl; }
                  : [](pa_stream*, int, void*) { std::cout << "streaming" << std::endl; },
            nullptr));
    }

    pa_mainloop* const loop_ = pa_mainloop_new();
    pa_context* context_ = nullptr;
    pa_stream* stream_ = nullptr;
    std::uint8_t channels_ = 2;
    bool leftOnly_ = false;
    std::optional<std::string> sink_;
    const double step_;
    const double amplitude_;
    double phase_ = 0;
};

}  // namespace
}  // namespace sordin

int main(int count, char** arguments) {
    if (count < 3) {
        std::cerr << "usage: pulse_tone_player FREQUENCY AMPLITUDE [left-only] [channels=1] [target=SINK]"
                  << std::endl;
        return 2;
    }
    return sordin::PulseTonePlayer(std::span(arguments, static_cast<std::size_t>(count)).subspan(1)).run();
}

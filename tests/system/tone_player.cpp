// SPDX-License-Identifier: MIT
// tone_player FREQUENCY AMPLITUDE [left-only] [channels=1] [target=SINK] [NODE-PROPERTY=VALUE]...
// Plays a sine, 48 kHz and stereo, until its stdin ends. Lines "pause" and "play" on stdin do that. Says
// "streaming" and "paused" whenever the stream becomes that.
#include "system/input_lines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <numbers>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <span>
#include <string>

namespace sordin {
namespace {

class TonePlayer {
public:
    explicit TonePlayer(std::span<char*> arguments) {
        step_ = 2 * std::numbers::pi * std::strtod(arguments[0], nullptr) / rate;
        amplitude_ = std::strtod(arguments[1], nullptr);
        pw_properties* properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY,
                                                      "Playback", PW_KEY_APP_NAME, "tone_player", nullptr);
        for (const std::string argument : arguments.subspan(2)) {
            const auto equals = argument.find('=');
            if (argument == "left-only") {
                leftOnly_ = true;
            } else if (argument == "channels=1") {
                channels_ = 1;
            } else if (argument.starts_with("target=")) {
                pw_properties_set(properties, PW_KEY_TARGET_OBJECT, argument.substr(equals + 1).c_str());
            } else if (equals != std::string::npos) {
                pw_properties_set(properties, argument.substr(0, equals).c_str(),
                                  argument.substr(equals + 1).c_str());
            }
        }
        events_.version = PW_VERSION_STREAM_EVENTS;
        events_.state_changed = stateChanged;
        events_.process = process;
        stream_ = pw_stream_new_simple(pw_main_loop_get_loop(loop_), "tone", properties, &events_, this);
    }
    ~TonePlayer() {
        if (stream_ != nullptr) {
            pw_stream_destroy(stream_);
        }
        pw_main_loop_destroy(loop_);
    }
    TonePlayer(const TonePlayer&) = delete;
    TonePlayer& operator=(const TonePlayer&) = delete;

    int run() {
        if (!connect()) {
            std::cerr << "tone_player: cannot connect" << std::endl;
            return 1;
        }
        const InputLines input(loop_, [this](const std::string& line) {
            if (line == "pause" || line == "play") {
                pw_stream_set_active(stream_, line == "play");
            }
        });
        pw_main_loop_run(loop_);
        ended_ = true;
        return status_;
    }

private:
    static constexpr std::uint32_t rate = 48000;

    bool connect() {
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = rate;
        format.channels = channels_;
        format.position[0] = channels_ == 1 ? SPA_AUDIO_CHANNEL_MONO : SPA_AUDIO_CHANNEL_FL;
        format.position[1] = SPA_AUDIO_CHANNEL_FR;
        std::array<std::uint8_t, 1024> bytes{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, bytes.data(), bytes.size());
        const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
        const auto flags = static_cast<pw_stream_flags>(
            PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
        return stream_ != nullptr &&
               pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &parameter, 1) == 0;
    }

    static void stateChanged(void* data, pw_stream_state /*old*/, pw_stream_state state, const char* error) {
        auto& self = *static_cast<TonePlayer*>(data);
        if (state == PW_STREAM_STATE_STREAMING) {
            self.streamed_ = true;
            std::cout << "streaming" << std::endl;
        } else if (state == PW_STREAM_STATE_PAUSED &&
                   self.streamed_) {  // it is also on its way to the first time
            std::cout << "paused" << std::endl;
        } else if ((state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) && !self.ended_) {
            std::cerr << "tone_player: " << (error != nullptr ? error : "stream error") << std::endl;
            self.status_ = 1;
            pw_main_loop_quit(self.loop_);
        }
    }

    static void process(void* data) {
        auto& self = *static_cast<TonePlayer*>(data);
        pw_buffer* buffer = pw_stream_dequeue_buffer(self.stream_);
        if (buffer == nullptr) {
            return;
        }
        const spa_data& plane = buffer->buffer->datas[0];
        const std::uint32_t stride = self.channels_ * sizeof(float);
        std::uint32_t frames = plane.data != nullptr ? plane.maxsize / stride : 0;
        if (buffer->requested != 0) {
            frames = static_cast<std::uint32_t>(std::min<std::uint64_t>(frames, buffer->requested));
        }
        auto* sample = static_cast<float*>(plane.data);
        for (std::uint32_t i = 0; i < frames; ++i) {
            const auto value = static_cast<float>(self.amplitude_ * std::sin(self.phase_));
            self.phase_ = std::fmod(self.phase_ + self.step_, 2 * std::numbers::pi);
            for (std::uint32_t channel = 0; channel < self.channels_; ++channel) {
                *sample++ = self.leftOnly_ && channel == 1 ? 0 : value;
            }
        }
        plane.chunk->offset = 0;
        plane.chunk->stride = static_cast<std::int32_t>(stride);
        plane.chunk->size = frames * stride;
        pw_stream_queue_buffer(self.stream_, buffer);
    }

    pw_main_loop* loop_ = pw_main_loop_new(nullptr);
    pw_stream* stream_ = nullptr;
    pw_stream_events events_{};
    std::uint32_t channels_ = 2;
    bool leftOnly_ = false;
    double step_ = 0;
    double amplitude_ = 0;
    double phase_ = 0;  // only the thread of process() uses it
    bool streamed_ = false;
    bool ended_ = false;
    int status_ = 0;
};

}  // namespace
}  // namespace sordin

int main(int count, char** arguments) {
    if (count < 3) {
        std::cerr << "usage: tone_player FREQUENCY AMPLITUDE [left-only] [channels=1] [target=SINK] "
                     "[PROPERTY=VALUE]..."
                  << std::endl;
        return 2;
    }
    pw_init(&count, &arguments);
    const int status =
        sordin::TonePlayer(std::span(arguments, static_cast<std::size_t>(count)).subspan(1)).run();
    pw_deinit();
    return status;
}

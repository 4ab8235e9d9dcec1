// SPDX-License-Identifier: MIT
// tone_player FREQUENCY AMPLITUDE [left-only] [channels=1] [target=SINK] [role=ROLE] [record=SOURCE]
// Plays a sine through PipeWire until stdin ends. Reads the commands "pause" and "play" from stdin. Prints
// "streaming" whenever it plays.
#include "system/input_lines.h"
#include "system/tone.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

namespace sordin {
namespace {

struct TonePlayer {
    explicit TonePlayer(Tone wanted) : tone(std::move(wanted)) {
        pw_properties* properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY,
                                                      "Playback", PW_KEY_APP_NAME, "tone_player", nullptr);
        if (!tone.target.empty()) {
            pw_properties_set(properties, PW_KEY_TARGET_OBJECT, tone.target.c_str());
        }
        if (!tone.role.empty()) {
            pw_properties_set(properties, PW_KEY_MEDIA_ROLE, tone.role.c_str());
        }
        events.version = PW_VERSION_STREAM_EVENTS;
        events.state_changed = stateChanged;
        events.process = process;
        stream = pw_stream_new_simple(pw_main_loop_get_loop(loop), "tone", properties, &events, this);
        if (!tone.source.empty()) {
            recorderEvents.version = PW_VERSION_STREAM_EVENTS;
            recorderEvents.process = drop;
            recorder = pw_stream_new_simple(
                pw_main_loop_get_loop(loop), "recording",
                pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture",
                                  PW_KEY_TARGET_OBJECT, tone.source.c_str(), nullptr),
                &recorderEvents, this);
        }
    }

    [[nodiscard]] bool connect() const {
        spa_audio_info_raw format{};
        format.format = SPA_AUDIO_FORMAT_F32;
        format.rate = Tone::rate;
        format.channels = tone.channels;
        format.position[0] = tone.channels == 1 ? SPA_AUDIO_CHANNEL_MONO : SPA_AUDIO_CHANNEL_FL;
        format.position[1] = SPA_AUDIO_CHANNEL_FR;
        std::array<std::uint8_t, 1024> bytes{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, bytes.data(), bytes.size());
        const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
        const auto flags = static_cast<pw_stream_flags>(
            PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
        return (recorder == nullptr ||
                pw_stream_connect(recorder, PW_DIRECTION_INPUT, PW_ID_ANY, flags, &parameter, 1) == 0) &&
               stream != nullptr &&
               pw_stream_connect(stream, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &parameter, 1) == 0;
    }

    static void drop(void* data) {
        pw_stream* recorder = static_cast<TonePlayer*>(data)->recorder;
        while (pw_buffer* buffer = pw_stream_dequeue_buffer(recorder)) {
            pw_stream_queue_buffer(recorder, buffer);
        }
    }

    static void stateChanged(void* data, pw_stream_state /*old*/, pw_stream_state state, const char* error) {
        if (state == PW_STREAM_STATE_STREAMING) {
            std::cout << "streaming" << std::endl;
        } else if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED) {
            std::cerr << "tone_player: " << (error != nullptr ? error : "the server is gone") << std::endl;
            pw_main_loop_quit(static_cast<TonePlayer*>(data)->loop);
        }
    }

    static void process(void* data) {
        auto& self = *static_cast<TonePlayer*>(data);
        pw_buffer* buffer = pw_stream_dequeue_buffer(self.stream);
        if (buffer == nullptr) {
            return;
        }
        const spa_data& plane = buffer->buffer->datas[0];
        const std::uint32_t stride = self.tone.channels * sizeof(float);
        std::uint64_t frames = plane.data != nullptr ? plane.maxsize / stride : 0;
        if (buffer->requested != 0) {
            frames = std::min(frames, buffer->requested);
        }
        self.tone.fill({static_cast<float*>(plane.data), frames * self.tone.channels});
        *plane.chunk = {0, static_cast<std::uint32_t>(frames * stride), static_cast<std::int32_t>(stride), 0};
        pw_stream_queue_buffer(self.stream, buffer);
    }

    Tone tone;  // while playing, only the thread of process() uses it
    pw_main_loop* loop = pw_main_loop_new(nullptr);
    pw_stream* stream = nullptr;
    pw_stream* recorder = nullptr;  // while it also records
    pw_stream_events events{};
    pw_stream_events recorderEvents{};
};

}  // namespace
}  // namespace sordin

int main(int count, char** arguments) {
    if (count < 3) {
        return 2;
    }
    pw_init(nullptr, nullptr);
    sordin::TonePlayer player(sordin::Tone({arguments, static_cast<std::size_t>(count)}));
    if (!player.connect()) {
        return 1;
    }
    const sordin::InputLines input(player.loop, [&player](const std::string& line) {
        pw_stream_set_active(player.stream, line == "play");
    });
    pw_main_loop_run(player.loop);
}

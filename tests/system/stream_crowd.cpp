// SPDX-License-Identifier: MIT
// stream_crowd COUNT: a program with COUNT streams, which appear at once and play nothing until stdin ends.
#include "system/input_lines.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

namespace {

/// Connects a stream; false if that fails.
bool join(pw_core* core) {
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = 48000;
    format.channels = 2;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    std::array<std::uint8_t, 1024> bytes{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, bytes.data(), bytes.size());
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    pw_stream* stream = pw_stream_new(core, "crowd",
                                      pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY,
                                                        "Playback", PW_KEY_NODE_NAME, "crowd", nullptr));
    // Without a target device, which costs the session manager much work.
    return stream != nullptr && pw_stream_connect(stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                                                  PW_STREAM_FLAG_MAP_BUFFERS, &parameter, 1) == 0;
}

}  // namespace

int main(int count, char** arguments) {
    pw_init(nullptr, nullptr);
    pw_main_loop* loop = pw_main_loop_new(nullptr);
    pw_core* core = pw_context_connect(pw_context_new(pw_main_loop_get_loop(loop), nullptr, 0), nullptr, 0);
    bool joined = core != nullptr && count == 2;
    for (auto left = joined ? std::strtoul(arguments[1], nullptr, 10) : 0; left > 0 && joined; --left) {
        joined = join(core);
    }
    if (joined) {
        const sordin::InputLines input(loop, [](const std::string& /*line*/) {});
        pw_main_loop_run(loop);
    }
    return joined ? 0 : 1;
}

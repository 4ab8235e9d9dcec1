// SPDX-License-Identifier: MIT
#include "demo/broadcast.h"

#include "replay/input_error.h"

#include <sndfile.h>

#include <memory>

namespace sordin::demo {

Broadcast readBroadcast(const std::filesystem::path& recording, const std::filesystem::path& labels) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(sf_open(recording.c_str(), SFM_READ, &info),
                                                             &sf_close);
    if (!file || info.samplerate < 1) {
        throw replay::InputError(recording.string() + ": " + sf_strerror(file.get()));
    }
    return {static_cast<double>(info.frames) / info.samplerate, replay::readAdLabels(labels)};
}

}  // namespace sordin::demo

// SPDX-License-Identifier: MIT
#pragma once

#include "support/resampler.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sordin::replay {

/// The sample rate of replays in Hz, the same as that of the capture.
inline constexpr double replayRate = 16'000;

/// A recording, read in pieces as 16 kHz mono. Multiple channels are averaged.
class AudioFile {
public:
    /// Opens a file in any format of libsndfile. Throws InputError.
    explicit AudioFile(const std::string& path);
    ~AudioFile();
    AudioFile(const AudioFile&) = delete;
    AudioFile& operator=(const AudioFile&) = delete;

    /// Appends up to about a second to `samples`. Returns false at the end of the recording.
    bool read(std::vector<float>& samples);

    /// Calls `take` with the rest of the recording in buffers of 20 ms, the last one shorter. A hop is a
    /// whole number of buffers. Calls `onProgress`, if it is not empty, with progress() after about each
    /// second.
    void readBuffers(const std::function<void(std::vector<float>)>& take,
                     const std::function<void(std::optional<double>)>& onProgress = {});

    /// Returns the share that has been read, 0 to 1; none if the file's length is unknown.
    [[nodiscard]] std::optional<double> progress() const;

    /// After read() has returned false: why the recording ended early; none if it did not.
    [[nodiscard]] const std::optional<std::string>& damage() const { return damage_; }

private:
    class Decoder;

    std::unique_ptr<Decoder> decoder_;
    std::optional<Resampler> resampler_;
    std::vector<float> mono_;
    std::optional<std::string> damage_;
    bool ended_ = false;
};

}  // namespace sordin::replay

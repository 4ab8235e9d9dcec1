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

/// Rate at which recordings are replayed, as the capture delivers: Hz, mono.
inline constexpr double replayRate = 16'000;

/// A recording, read piece by piece as 16 kHz mono; several channels are averaged.
class AudioFile {
public:
    /// Opens what libsndfile reads. Throws InputError.
    explicit AudioFile(const std::string& path);
    ~AudioFile();
    AudioFile(const AudioFile&) = delete;
    AudioFile& operator=(const AudioFile&) = delete;

    /// Appends the next stretch of at most about a second to `samples`; false at the end of the recording.
    bool read(std::vector<float>& samples);

    /// Calls `take` with all that is left, in buffers of 20 ms, of which whole numbers make a hop, the last
    /// one shorter; `onProgress`, if there is one, after each stretch with what progress() says then.
    void readBuffers(const std::function<void(std::vector<float>)>& take,
                     const std::function<void(std::optional<double>)>& onProgress = {});

    /// How much has been read, 0 to 1; none when the file does not tell its length.
    [[nodiscard]] std::optional<double> progress() const;

    /// Once read() has returned false: why the recording ended before its end, if it did.
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

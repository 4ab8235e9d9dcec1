// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <span>
#include <vector>

struct SRC_STATE_tag;  // libsamplerate's converter

namespace sordin {

/// Changes the sample rate of one mono stream, piece by piece. Band-limited (windowed sinc), so nothing above
/// the lower of the two Nyquist frequencies folds back. Samples pass unchanged when the rates are equal.
class Resampler {
public:
    enum class Quality {
        fast,  ///< 97 dB signal to noise, 80 % of the bandwidth kept
        high,  ///< 121 dB, 90 %
    };

    /// Rates in Hz. Throws std::invalid_argument unless both are finite, above 0 and at most a factor 256
    /// apart, std::runtime_error if the converter cannot be made.
    Resampler(double fromRate, double toRate, Quality quality = Quality::fast);

    /// Appends to `output` what `input` makes available; the filter holds a few milliseconds back.
    void process(std::span<const float> input, std::vector<float>& output);

    /// Ends the stream: appends what was held back, so that the whole stream has given its length times the
    /// ratio of the rates (rounded), and starts anew, as after construction.
    void finish(std::vector<float>& output);

private:
    struct ConverterDeleter {
        void operator()(SRC_STATE_tag* converter) const;
    };

    void convert(std::span<const float> input, bool last, std::vector<float>& output);

    double ratio_;
    double taken_ = 0;  // samples of the stream so far
    double given_ = 0;
    std::unique_ptr<SRC_STATE_tag, ConverterDeleter> converter_;  // none when the rates are equal
};

}  // namespace sordin

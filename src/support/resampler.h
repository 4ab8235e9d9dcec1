// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <span>
#include <vector>

struct SRC_STATE_tag;  // converter of libsamplerate

namespace sordin {

/// Converts the sample rate of a mono stream, piece by piece. Band-limited (windowed sinc), so frequencies
/// above the lower Nyquist frequency do not alias. Copies samples unchanged if the rates are equal. Not
/// thread-safe.
class Resampler {
public:
    enum class Quality {
        fast,  ///< signal-to-noise ratio 97 dB, bandwidth 80 %
        high,  ///< signal-to-noise ratio 121 dB, bandwidth 90 %
    };

    /// Rates are in Hz. Throws std::invalid_argument unless both are finite, above 0 and at most a factor of
    /// 256 apart; std::runtime_error if the library cannot create the converter.
    Resampler(double fromRate, double toRate, Quality quality = Quality::fast);

    /// Appends the converted samples to `output`. The filter delays them by a few milliseconds.
    void process(std::span<const float> input, std::vector<float>& output);

    /// Ends the stream: appends the delayed samples, so that the total output is the total input times the
    /// ratio of the rates, rounded. Then returns to the state after construction.
    void finish(std::vector<float>& output);

private:
    struct ConverterDeleter {
        void operator()(SRC_STATE_tag* converter) const;
    };

    void convert(std::span<const float> input, bool last, std::vector<float>& output);

    double ratio_;
    double taken_ = 0;                                            // input samples of the stream so far
    double given_ = 0;                                            // output samples of the stream so far
    std::unique_ptr<SRC_STATE_tag, ConverterDeleter> converter_;  // null if the rates are equal
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "support/resampler.h"

#include <samplerate.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string>

namespace sordin {

namespace {

void check(int error) {
    if (error != 0) {
        throw std::runtime_error(std::string("resampling failed: ") + src_strerror(error));
    }
}

}  // namespace

void Resampler::ConverterDeleter::operator()(SRC_STATE_tag* converter) const {
    src_delete(converter);
}

Resampler::Resampler(double fromRate, double toRate, Quality quality) : ratio_(toRate / fromRate) {
    if (!(std::isfinite(fromRate) && std::isfinite(toRate) && fromRate > 0 && toRate > 0) ||
        src_is_valid_ratio(ratio_) == 0) {
        throw std::invalid_argument("cannot resample between these rates");
    }
    if (fromRate != toRate) {
        int error = 0;
        const int kind = quality == Quality::high ? SRC_SINC_MEDIUM_QUALITY : SRC_SINC_FASTEST;
        converter_.reset(src_new(kind, 1, &error));
        check(error);
    }
}

void Resampler::process(std::span<const float> input, std::vector<float>& output) {
    if (converter_) {
        taken_ += static_cast<double>(input.size());
        convert(input, false, output);
    } else {
        output.insert(output.end(), input.begin(), input.end());
    }
}

void Resampler::finish(std::vector<float>& output) {
    if (converter_) {
        convert({}, true, output);
        // The library's output can be a few samples too long or too short.
        const double missing = std::round(taken_ * ratio_) - given_;
        const auto end = static_cast<double>(output.size()) + missing;
        output.resize(static_cast<std::size_t>(std::max(0.0, end)));
        taken_ = given_ = 0;
        check(src_reset(converter_.get()));
    }
}

void Resampler::convert(std::span<const float> input, bool last, std::vector<float>& output) {
    constexpr float none = 0;  // the library needs a valid address even for no samples
    std::array<float, 4096> block;
    SRC_DATA data{};
    data.src_ratio = ratio_;
    data.end_of_input = last ? 1 : 0;
    for (;;) {
        data.data_in = input.empty() ? &none : input.data();
        data.input_frames = static_cast<long>(input.size());
        data.data_out = block.data();
        data.output_frames = static_cast<long>(block.size());
        check(src_process(converter_.get(), &data));
        input = input.subspan(static_cast<std::size_t>(data.input_frames_used));
        output.insert(output.end(), block.begin(), block.begin() + data.output_frames_gen);
        given_ += static_cast<double>(data.output_frames_gen);
        if (data.input_frames_used == 0 && data.output_frames_gen == 0) {
            return;
        }
    }
}

}  // namespace sordin

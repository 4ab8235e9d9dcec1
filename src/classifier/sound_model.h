// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sordin {

/// The parameters and weights of a trained sound model. All sizes are above 0. A model that readSoundModel()
/// returns satisfies the limits that are stated there.
struct SoundModel {
    /// From samples to the patch, the network's input.
    struct FrontEnd {
        std::uint32_t rate = 0;       ///< Hz
        std::uint32_t window = 0;     ///< samples in a frame
        std::uint32_t hop = 0;        ///< samples from one frame to the next
        std::uint32_t transform = 0;  ///< length of the Fourier transform, samples
        std::uint32_t mels = 0;       ///< mel bands
        float low = 0;                ///< lower end of the first band, Hz
        float high = 0;               ///< upper end of the last band, Hz
        float floor = 0;              ///< added to each band before the logarithm
        float range = 0;              ///< limit of a patch below its maximum, nepers
        float scale = 0;              ///< divisor of the patch's values
        std::uint32_t frames = 0;     ///< frames in a patch
        std::uint32_t pool = 0;       ///< number of frames that are averaged into one
    };

    /// A convolution of 3 x 3 (time, frequency) with padding 1, followed by a ReLU.
    struct Convolution {
        std::uint32_t in = 0;
        std::uint32_t out = 0;
        std::uint32_t strideTime = 0;
        std::uint32_t strideFrequency = 0;
        bool residual = false;       ///< adds the input before the ReLU
        std::vector<float> weights;  ///< [out][in][3][3]
        std::vector<float> bias;     ///< [out]
    };

    struct Dense {
        std::uint32_t in = 0;
        std::uint32_t out = 0;
        std::vector<float> weights;  ///< [out][in]
        std::vector<float> bias;     ///< [out]
    };

    /// One output of the model: confidence = 1 / (1 + exp(-(gain * logit + offset))).
    struct Label {
        std::string identifier;
        float gain = 0;
        float offset = 0;
    };

    FrontEnd frontEnd;
    std::vector<Convolution> convolutions;
    std::uint32_t sections = 0;  ///< parts of the patch's time that are pooled separately
    Dense embedding;             ///< followed by a ReLU
    std::uint32_t memory = 0;    ///< number of embeddings that the dense layers take, the newest included
    std::vector<Dense> dense;    ///< ReLUs between them
    std::vector<Label> labels;   ///< one for each output of the last dense layer
};

/// Number of times and frequencies of a plane of values.
struct PlaneSize {
    std::size_t times = 0;
    std::size_t frequencies = 0;
};

/// Input size of the first convolution.
[[nodiscard]] inline PlaneSize inputSize(const SoundModel::FrontEnd& frontEnd) {
    return {frontEnd.frames / frontEnd.pool, frontEnd.mels};
}

/// Output size of a convolution.
[[nodiscard]] inline PlaneSize outputSize(const SoundModel::Convolution& layer, PlaneSize input) {
    return {(input.times - 1) / layer.strideTime + 1, (input.frequencies - 1) / layer.strideFrequency + 1};
}

/// Samples at the model's rate from one result to the next: 0.5 s.
[[nodiscard]] inline std::uint32_t resultInterval(const SoundModel::FrontEnd& frontEnd) {
    return frontEnd.rate / 2;
}

}  // namespace sordin

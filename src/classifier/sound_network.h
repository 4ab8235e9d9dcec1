// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/convolution.h"
#include "classifier/sound_model.h"

#include <span>
#include <vector>

namespace sordin {

/// The network of a sound model: patches become embeddings, the latest embeddings become confidences. All
/// sums are made in one order, so that every machine gets the same. Allocates nothing once it is made; not
/// re-entrant.
class SoundNetwork {
public:
    explicit SoundNetwork(const SoundModel& model);

    /// Values in an embedding.
    [[nodiscard]] std::size_t embeddingSize() const { return embedding_.out; }
    /// Values that confidences() looks at: those of all embeddings that are remembered.
    [[nodiscard]] std::size_t memorySize() const { return dense_.front().in; }

    /// `patch` is what MelFrontEnd::normalise gives, `embedding` takes embeddingSize() values.
    void embed(std::span<const float> patch, std::span<float> embedding);

    /// `memory` holds the embeddings, oldest first; `confidences` takes one value, 0 to 1, for each label.
    void confidences(std::span<const float> memory, std::span<double> confidences);

private:
    /// Mean and maximum over the time of each section.
    void summarise(const Plane& plane);

    const std::size_t sections_;
    std::size_t channels_;  // of the last plane
    const SoundModel::Dense embedding_;
    const std::vector<SoundModel::Dense> dense_;
    const std::vector<SoundModel::Label> labels_;
    std::vector<Convolution> convolutions_;
    std::vector<Plane> planes_;    // the patch, then what each convolution makes
    std::vector<float> features_;  // for each section: means, then maxima, by channel and frequency
    std::vector<std::vector<float>> outputs_;  // of the dense layers
};

}  // namespace sordin

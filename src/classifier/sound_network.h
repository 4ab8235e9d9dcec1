// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/convolution.h"
#include "classifier/sound_model.h"

#include <span>
#include <vector>

namespace sordin {

/// The neural network of a sound model: turns patches into embeddings, and the latest embeddings into
/// confidences. Adds in a fixed order, so that results are the same on every machine. Allocates only in the
/// constructor. Not thread-safe.
class SoundNetwork {
public:
    explicit SoundNetwork(const SoundModel& model);

    /// Number of values in an embedding.
    [[nodiscard]] std::size_t embeddingSize() const { return embedding_.out; }
    /// Number of values that confidences() takes: those of all embeddings in the memory.
    [[nodiscard]] std::size_t memorySize() const { return dense_.front().in; }

    /// Computes the embedding of `patch`, a result of MelFrontEnd::normalise. `embedding` has embeddingSize()
    /// values.
    void embed(std::span<const float> patch, std::span<float> embedding);

    /// Computes one confidence, 0 to 1, for each label. `memory` holds memorySize() values, oldest embedding
    /// first.
    void confidences(std::span<const float> memory, std::span<double> confidences);

private:
    /// Writes the mean and the maximum over the time of each section to features_.
    void summarise(const Plane& plane);

    const std::size_t sections_;
    std::size_t channels_;  // channels of the last plane, without padding
    const SoundModel::Dense embedding_;
    const std::vector<SoundModel::Dense> dense_;
    const std::vector<SoundModel::Label> labels_;
    std::vector<Convolution> convolutions_;
    std::vector<Plane> planes_;                // the patch, then the output of each convolution
    std::vector<float> features_;              // for each section: means, then maxima; [channel][frequency]
    std::vector<std::vector<float>> outputs_;  // of the dense layers
};

}  // namespace sordin

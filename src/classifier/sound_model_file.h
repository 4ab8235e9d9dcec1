// SPDX-License-Identifier: MIT
// The file that a sound model comes in. All numbers are little-endian.
//
//   8 bytes "SORDINSM", u32 version (1), u32 bytes of payload, u32 CRC-32 of the payload, payload:
//   u32 rate, window, hop, transform, mels; f32 low, high, floor, range, scale; u32 frames, pool
//   u32 count of convolutions, for each: u32 in, out, strideTime, strideFrequency, residual (0 or 1);
//       f16 weights[out][in][3][3]; f32 bias[out]
//   u32 sections
//   embedding: u32 in, out; f16 weights[out][in]; f32 bias[out]
//   u32 memory
//   u32 count of dense layers, each as the embedding
//   u32 count of labels, for each: u8 length, so many ASCII characters; f32 gain, offset
#pragma once

#include "classifier/sound_model.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>

namespace sordin {

/// A sound model cannot be used. The text is one line that names the file and says why.
class SoundModelError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The most that a model may ask for.
struct SoundModelLimits {
    static constexpr std::size_t payloadBytes = 16U << 20U;
    static constexpr std::uint64_t planeValues = 4U << 20U;      ///< in the patch and all layers' outputs
    static constexpr std::uint64_t workPerSecond = 400'000'000;  ///< multiplications per second of audio
};

/// Reads a model from the bytes of a file; `name` is what errors call it. Refuses, by SoundModelError, what
/// is damaged, what cannot be meant and what does not fit together:
/// - another magic, version, size or checksum, bytes that are missing or left over;
/// - a rate that is odd or outside 4 to 96 kHz, half a second that is no whole number of hops, a hop longer
///   than the window, a window longer than the transform, a transform that is odd or above 8192;
/// - more than 256 bands, bands outside 0 to half the rate, a floor outside 1e-12 to 1, a range or a scale
///   outside 0.01 to 100, a patch of more than 60 s, no whole pool of frames in it;
/// - more than 32 convolutions or dense layers, 1024 channels, strides of 4, 65,536 values in a dense layer,
///   64 sections, embeddings to remember or labels;
/// - sizes other than the layer before gives, a residual layer that changes size, more sections than time
///   steps, another number of labels than outputs;
/// - numbers that are not finite, identifiers that are empty or not printable ASCII;
/// - whatever exceeds SoundModelLimits.
/// Allocates a few times the size of the file at most.
[[nodiscard]] SoundModel readSoundModel(std::span<const std::byte> bytes, const std::string& name);

/// The same for a file. Also refuses what is not a regular file.
[[nodiscard]] SoundModel loadSoundModel(const std::filesystem::path& path);

}  // namespace sordin

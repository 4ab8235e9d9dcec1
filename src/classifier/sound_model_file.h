// SPDX-License-Identifier: MIT
// Format of a sound model file. All numbers are little-endian.
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

/// A sound model is invalid or unreadable. The message is one line with the name of the file and the reason.
class SoundModelError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Resource limits of a model.
struct SoundModelLimits {
    static constexpr std::size_t payloadBytes = 16U << 20U;
    static constexpr std::uint64_t planeValues = 4U << 20U;      ///< patch and all convolutions' outputs
    static constexpr std::uint64_t workPerSecond = 400'000'000;  ///< multiplications per second of audio
};

/// Reads a model from the bytes of a file. Errors name the file `name`. Throws SoundModelError for:
/// - a wrong magic, version, size or checksum; missing or excess bytes;
/// - a rate that is odd or outside 4 to 96 kHz, a half second that is not a whole number of hops, a hop
///   longer than the window, a window longer than the transform, a transform that is odd or above 8192;
/// - more than 256 bands, bands outside 0 to half the rate, a floor outside 1e-12 to 1, a range or a scale
///   outside 0.01 to 100, a patch of more than 60 s or shorter than one pool;
/// - more than 32 convolutions or dense layers, 1,024 channels, 65,536 values in a dense layer, 64 sections,
///   64 embeddings in the memory or 64 labels; strides above 4;
/// - a layer that does not match the output of the previous one, a residual layer that changes the size, more
///   sections than time steps, a number of labels other than the number of outputs;
/// - numbers that are not finite, identifiers that are empty or not printable ASCII;
/// - a model that exceeds SoundModelLimits.
///
/// Allocates at most a few times the size of the file.
[[nodiscard]] SoundModel readSoundModel(std::span<const std::byte> bytes, const std::string& name);

/// Reads a model from a file. Throws SoundModelError also if it is not a regular file or cannot be read.
[[nodiscard]] SoundModel loadSoundModel(const std::filesystem::path& path);

}  // namespace sordin

// SPDX-License-Identifier: MIT
// The file that a speech mask comes in: a file of weights (classifier/weights_file.h) with the magic
// "SORDINVM", version 1 and this payload:
//
//   u32 rate, window; f32 floor, shift, scale, strength, least
//   front: u32 in, out; f16 weights[out][in]; f32 bias[out]
//   first, second: u32 in, units; f16 weights[3 units][in], f16 weights[3 units][units]; f32 bias[3 units] of
//   each gains: as the front
#pragma once

#include "classifier/speech_mask.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>

namespace sordin {

/// A speech mask cannot be used. The text is one line that names the file and says why.
class SpeechMaskError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a mask from the bytes of a file; `name` is what errors call it. Refuses, by SpeechMaskError, what is
/// damaged and what does not fit together: another magic, version, size or checksum; bytes that are missing
/// or left over; more than 4 MB; a rate outside 4 to 96 kHz; a window that is odd or outside 64 to 4096; a
/// floor outside 1e-12 to 1, a scale outside 0.01 to 100, a strength outside 0 to 4, a least gain outside 0
/// to 1; layers of more than 4096 values or of other sizes than the layer before gives; numbers that are not
/// finite.
[[nodiscard]] SpeechMaskModel readSpeechMask(std::span<const std::byte> bytes, const std::string& name);

/// The same for a file. Also refuses what is not a regular file.
[[nodiscard]] SpeechMaskModel loadSpeechMask(const std::filesystem::path& path);

}  // namespace sordin

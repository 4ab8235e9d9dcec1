// SPDX-License-Identifier: MIT
// Format of a speech mask file: a weights file (classifier/weights_file.h) with the magic "SORDINVM", version
// 1 and this payload:
//
//   u32 rate, window; f32 floor, shift, scale, strength, least
//   front: u32 in, out; f16 weights[out][in]; f32 bias[out]
//   first, second: u32 in, units; f16 weights[3 units][in], weights[3 units][units];
//       f32 bias[3 units] (input), bias[3 units] (recurrent)
//   gains: as the front
#pragma once

#include "classifier/speech_mask.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>

namespace sordin {

/// A speech mask is invalid or unreadable. The message is one line with the name of the file and the reason.
class SpeechMaskError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a mask from the bytes of a file. Errors name the file `name`. Throws SpeechMaskError for a wrong
/// magic, version, size or checksum; missing or excess bytes; a payload above 4 MiB; a rate outside 4 to 96
/// kHz; a window that is odd or outside 64 to 4,096; a floor outside 1e-12 to 1, a shift outside -100 to 100,
/// a scale outside 0.01 to 100, a strength outside 0 to 4, a least gain outside 0 to 1; layers of more than
/// 4,096 values, or that do not match the output of the previous layer; numbers that are not finite.
[[nodiscard]] SpeechMaskModel readSpeechMask(std::span<const std::byte> bytes, const std::string& name);

/// Reads a mask from a file. Throws SpeechMaskError also if it is not a regular file or cannot be read.
[[nodiscard]] SpeechMaskModel loadSpeechMask(const std::filesystem::path& path);

}  // namespace sordin

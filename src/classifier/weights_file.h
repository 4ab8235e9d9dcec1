// SPDX-License-Identifier: MIT
// The common format of all files of trained weights. All numbers are little-endian.
//
//   8 bytes of magic, u32 version, u32 bytes of payload, u32 CRC-32 of the payload, payload
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace sordin {

/// A file of weights is invalid. The message is one line with the reason, without the name of the file.
class WeightsRefusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws WeightsRefusal with the message `otherwise` unless `condition` holds.
inline void require(bool condition, const char* otherwise) {
    if (!condition) {
        throw WeightsRefusal(otherwise);
    }
}

/// A kind of weights file.
struct WeightsFormat {
    std::string_view magic;  ///< 8 characters
    std::uint32_t version;
    std::size_t payloadBytes;  ///< maximum size
    std::string_view content;  ///< name for messages, such as "sound model"
};

/// Reads consecutive values from a payload. All functions throw WeightsRefusal if the payload ends too early.
class WeightsReader {
public:
    explicit WeightsReader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    /// The next `count` bytes.
    [[nodiscard]] std::span<const std::byte> take(std::uint64_t count);

    /// An unsigned integer of `size` bytes, at most 4.
    [[nodiscard]] std::uint32_t integer(std::size_t size = sizeof(std::uint32_t));

    /// A 32-bit integer from 1 to `most`. Throws WeightsRefusal with the message `otherwise` outside these
    /// limits.
    [[nodiscard]] std::uint32_t size(std::uint32_t most, const char* otherwise);

    /// A finite float, within the limits if given. Throws WeightsRefusal otherwise.
    [[nodiscard]] float number();
    [[nodiscard]] float number(double least, double most, const char* otherwise);

    /// `count` finite values, stored in half precision (IEEE binary16) or as floats.
    [[nodiscard]] std::vector<float> halves(std::uint64_t count);
    [[nodiscard]] std::vector<float> numbers(std::uint64_t count);

    [[nodiscard]] bool atEnd() const { return bytes_.empty(); }
    [[nodiscard]] std::span<const std::byte> rest() const { return bytes_; }

private:
    std::span<const std::byte> bytes_;
};

/// The payload in the bytes of a file. Throws WeightsRefusal for a wrong magic, version, size or checksum.
[[nodiscard]] std::span<const std::byte> weightsPayload(std::span<const std::byte> bytes,
                                                        const WeightsFormat& format);

/// Reads a file. Throws WeightsRefusal if it is not a regular file, cannot be read or is larger than the
/// format allows.
[[nodiscard]] std::vector<std::byte> weightsFileBytes(const std::filesystem::path& path,
                                                      const WeightsFormat& format);

}  // namespace sordin

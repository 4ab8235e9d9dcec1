// SPDX-License-Identifier: MIT
// What all files of trained weights have in common. All numbers are little-endian.
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

/// Why a file of weights is refused, as one line without the name of the file.
class WeightsRefusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws WeightsRefusal unless `condition` holds.
inline void require(bool condition, const char* otherwise) {
    if (!condition) {
        throw WeightsRefusal(otherwise);
    }
}

/// One kind of such files.
struct WeightsFormat {
    std::string_view magic;  ///< 8 characters
    std::uint32_t version;
    std::size_t payloadBytes;  ///< the most
    std::string_view content;  ///< what refusals call it
};

/// Takes one value after the other from a payload. All operations throw WeightsRefusal where it ends too
/// early.
class WeightsReader {
public:
    explicit WeightsReader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    [[nodiscard]] std::span<const std::byte> take(std::uint64_t count);

    /// A whole number of so many bytes, 4 at most.
    [[nodiscard]] std::uint32_t integer(std::size_t size = sizeof(std::uint32_t));

    /// A size, from 1 to `most`.
    [[nodiscard]] std::uint32_t size(std::uint32_t most, const char* otherwise);

    /// A finite float; with limits, one within them.
    [[nodiscard]] float number();
    [[nodiscard]] float number(double least, double most, const char* otherwise);

    /// `count` finite values in half precision (IEEE binary16), or as floats.
    [[nodiscard]] std::vector<float> halves(std::uint64_t count);
    [[nodiscard]] std::vector<float> numbers(std::uint64_t count);

    [[nodiscard]] bool atEnd() const { return bytes_.empty(); }
    [[nodiscard]] std::span<const std::byte> rest() const { return bytes_; }

private:
    std::span<const std::byte> bytes_;
};

/// The payload of a file's bytes. Refuses another magic, version, size or checksum.
[[nodiscard]] std::span<const std::byte> weightsPayload(std::span<const std::byte> bytes,
                                                        const WeightsFormat& format);

/// The bytes of a file. Refuses what is not a regular file, cannot be read or is longer than the format
/// allows.
[[nodiscard]] std::vector<std::byte> weightsFileBytes(const std::filesystem::path& path,
                                                      const WeightsFormat& format);

}  // namespace sordin

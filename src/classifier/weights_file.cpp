// SPDX-License-Identifier: MIT
#include "classifier/weights_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <fstream>
#include <string>
#include <system_error>

namespace sordin {

namespace {

constexpr std::size_t headerBytes = 8 + 3 * sizeof(std::uint32_t);

std::uint32_t crc32(std::span<const std::byte> bytes) {
    constexpr auto table = [] {
        std::array<std::uint32_t, 256> entries{};
        for (std::uint32_t i = 0; i < entries.size(); ++i) {
            std::uint32_t value = i;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value >> 1U) ^ ((value & 1U) != 0 ? 0xEDB88320U : 0U);
            }
            entries[i] = value;
        }
        return entries;
    }();
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const std::byte byte : bytes) {
        crc = (crc >> 8U) ^ table[(crc ^ std::to_integer<std::uint32_t>(byte)) & 0xFFU];
    }
    return ~crc;
}

/// Converts an IEEE binary16 to a float. The conversion is exact.
float fromHalf(std::uint32_t half) {
    const std::uint32_t exponent = (half >> 10U) & 0x1FU;
    const std::uint32_t fraction = half & 0x3FFU;
    require(exponent != 0x1FU, "a weight is not finite");
    // The fraction of a subnormal number is in units of 2^-24.
    const float magnitude = exponent == 0
                                ? static_cast<float>(fraction) * 0x1p-24F
                                : std::bit_cast<float>(((exponent + 112U) << 23U) | (fraction << 13U));
    return (half & 0x8000U) != 0 ? -magnitude : magnitude;
}

}  // namespace

std::span<const std::byte> WeightsReader::take(std::uint64_t count) {
    require(count <= bytes_.size(), "the file ends too early");
    const auto taken = bytes_.first(static_cast<std::size_t>(count));
    bytes_ = bytes_.subspan(static_cast<std::size_t>(count));
    return taken;
}

std::uint32_t WeightsReader::integer(std::size_t size) {
    std::uint32_t value = 0;
    unsigned shift = 0;
    for (const std::byte byte : take(size)) {
        value |= std::to_integer<std::uint32_t>(byte) << shift;
        shift += 8;
    }
    return value;
}

std::uint32_t WeightsReader::size(std::uint32_t most, const char* otherwise) {
    const std::uint32_t value = integer();
    require(value >= 1 && value <= most, otherwise);
    return value;
}

float WeightsReader::number() {
    const auto value = std::bit_cast<float>(integer());
    require(std::isfinite(value), "a number is not finite");
    return value;
}

float WeightsReader::number(double least, double most, const char* otherwise) {
    const float value = number();
    require(static_cast<double>(value) >= least && static_cast<double>(value) <= most, otherwise);
    return value;
}

std::vector<float> WeightsReader::halves(std::uint64_t count) {
    WeightsReader values(take(2 * count));
    std::vector<float> result(static_cast<std::size_t>(count));
    std::generate(result.begin(), result.end(), [&] { return fromHalf(values.integer(2)); });
    return result;
}

std::vector<float> WeightsReader::numbers(std::uint64_t count) {
    WeightsReader values(take(sizeof(float) * count));
    std::vector<float> result(static_cast<std::size_t>(count));
    std::generate(result.begin(), result.end(), [&] { return values.number(); });
    return result;
}

std::span<const std::byte> weightsPayload(std::span<const std::byte> bytes, const WeightsFormat& format) {
    const auto known = std::as_bytes(std::span(format.magic));
    if (bytes.size() < headerBytes || !std::equal(known.begin(), known.end(), bytes.begin())) {
        throw WeightsRefusal("not a " + std::string(format.content));
    }
    WeightsReader header(bytes.subspan(known.size()));
    if (header.integer() != format.version) {
        throw WeightsRefusal("unsupported version of a " + std::string(format.content));
    }
    const std::uint32_t size = header.integer();
    const std::uint32_t checksum = header.integer();
    require(size <= format.payloadBytes, "the file is too large");
    require(header.rest().size() == size, "the size of the file differs from its header");
    require(crc32(header.rest()) == checksum, "the file is damaged (wrong checksum)");
    return header.rest();
}

std::vector<std::byte> weightsFileBytes(const std::filesystem::path& path, const WeightsFormat& format) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (error) {
        throw WeightsRefusal(error.message());
    }
    // Reading from a pipe or a device could block forever.
    require(std::filesystem::is_regular_file(status), "not a regular file");
    const auto size = std::filesystem::file_size(path, error);
    if (error) {
        throw WeightsRefusal(error.message());
    }
    require(size <= headerBytes + format.payloadBytes, "the file is too large");
    std::vector<std::byte> bytes(static_cast<std::size_t>(size));
    std::ifstream input(path, std::ios::binary);
    require(!!input.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size)),
            "cannot read the file");
    return bytes;
}

}  // namespace sordin

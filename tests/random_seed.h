// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>

namespace sordin {

/// The random generator of a test. The seed is fixed unless SORDIN_TEST_SEED sets it. Prints the seed.
inline std::mt19937 seededRandom() {
    const char* wish = std::getenv("SORDIN_TEST_SEED");
    const auto seed =
        static_cast<std::uint32_t>(wish != nullptr ? std::strtoul(wish, nullptr, 10) : 20261121UL);
    std::cout << "seed " << seed << '\n';
    return std::mt19937(seed);
}

}  // namespace sordin

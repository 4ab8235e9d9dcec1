// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/small_file.h"

#include <fstream>

namespace sordin {

std::string readSmallFile(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return {};
    }
    constexpr std::streamsize most = 64 << 10;
    std::string text(most, '\0');
    std::ifstream input(path, std::ios::binary);
    input.read(text.data(), most);
    text.resize(static_cast<std::size_t>(input.gcount()));
    return text;
}

}  // namespace sordin

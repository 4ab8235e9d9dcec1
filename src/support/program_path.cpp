// SPDX-License-Identifier: MIT
#include "support/program_path.h"

#include <system_error>

namespace sordin {

std::filesystem::path programPath(const char* calledBy) {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        path = std::filesystem::absolute(calledBy, error);
    }
    return path;
}

}  // namespace sordin

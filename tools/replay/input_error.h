// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace sordin::replay {

/// A file that was given cannot be used. The text is one line that names the file and says why.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace sordin::replay

// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace sordin::replay {

/// An input file cannot be used. The message is one line with the name of the file and the reason.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace sordin::replay

// SPDX-License-Identifier: MIT
#pragma once

#include <system_error>

namespace sordin {

/// Keeps the memory of this process and of all that it starts out of any dump after a crash, so that neither
/// sound nor words get onto a disk: no file is written, and a collector of dumps, which the limit of files
/// does not concern, gets no memory, only the registers. Call it first thing in main. On an error what could
/// be done is done.
///
/// The process stays as visible to the user's other programs as any: services of the desktop look into
/// /proc to see who asks them for something.
std::error_code keepOutOfDumps();

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include <system_error>

namespace sordin {

/// Keeps the memory of this process and its children out of core dumps, so that neither audio nor words reach
/// a disk. The kernel writes no core file. A dump collector, which ignores the limit on core files, receives
/// only the registers. Call it at the start of main. On an error, the remaining measures still apply.
///
/// The process remains visible to the user's other programs, because desktop services read /proc to identify
/// their clients.
std::error_code keepOutOfDumps();

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "platform/linux/sandbox/private_memory.h"

#include "support/file_descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace sordin {

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

}  // namespace

std::error_code keepOutOfDumps() {
    std::error_code error;
    const rlimit none{0, 0};
    if (setrlimit(RLIMIT_CORE, &none) != 0) {
        error = lastError();
    }
    const FileDescriptor filter(::open("/proc/self/coredump_filter", O_WRONLY | O_CLOEXEC));
    if (!filter.valid() || ::write(filter.get(), "0", 1) != 1) {
        error = lastError();
    }
    return error;
}

}  // namespace sordin

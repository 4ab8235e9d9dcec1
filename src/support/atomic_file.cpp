// SPDX-License-Identifier: MIT
#include "support/atomic_file.h"

#include "support/file_descriptor.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace sordin {

namespace {

namespace fs = std::filesystem;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code writeAll(int descriptor, std::string_view contents) {
    while (!contents.empty()) {
        const ssize_t written = ::write(descriptor, contents.data(), contents.size());
        if (written >= 0) {
            contents.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return lastError();
        }
    }
    return {};
}

std::error_code sync(const fs::path& path, int flags) {
    // Not blocking: a pipe in the file's place would make the opening wait for ever.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | flags));
    if (!file.valid() || ::fsync(file.get()) != 0) {
        return lastError();
    }
    return {};
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// The file that a chain of symbolic links ends in; the first link itself where that does not exist.
fs::path followed(const fs::path& path) {
    std::error_code error;
    auto target = fs::weakly_canonical(path, error);
    return error ? path : target;
}

}  // namespace

std::error_code replaceFile(const fs::path& path, std::string_view contents, Durability durability) {
    const fs::path target = followed(path);
    std::string temporary = (folderOf(target) / ("." + target.filename().string() + ".XXXXXX")).string();
    std::error_code error;
    {
        const FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
        if (!file.valid()) {
            return lastError();
        }
        error = writeAll(file.get(), contents);
        if (!error && durability == Durability::lossOfPower && ::fsync(file.get()) != 0) {
            error = lastError();
        }
    }
    if (!error && std::rename(temporary.c_str(), target.c_str()) != 0) {
        error = lastError();
    }
    if (error) {
        ::unlink(temporary.c_str());
        return error;
    }
    return durability == Durability::lossOfPower ? sync(folderOf(target), O_DIRECTORY) : error;
}

std::error_code syncFile(const fs::path& path) {
    const fs::path target = followed(path);
    const std::error_code error = sync(target, 0);
    if (error && error != std::errc::no_such_file_or_directory) {
        return error;
    }
    return sync(folderOf(target), O_DIRECTORY);
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "support/atomic_file.h"

#include "support/file_descriptor.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
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
    // O_NONBLOCK: without it, opening a named pipe could block forever.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | flags));
    if (!file.valid() || ::fsync(file.get()) != 0) {
        return lastError();
    }
    return {};
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// The target of a chain of symbolic links; `path` itself if it cannot be resolved.
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

std::optional<std::string> readWholeFile(const fs::path& path, std::size_t longest) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    std::string contents;
    std::array<char, 16 << 10> piece{};
    while (true) {
        const ssize_t count = ::read(file.get(), piece.data(), piece.size());
        if (count == 0) {
            return contents;
        }
        if (count > 0) {
            contents.append(piece.data(), static_cast<std::size_t>(count));
        }
        if ((count < 0 && errno != EINTR) || contents.size() > longest) {
            return std::nullopt;
        }
    }
}

std::error_code createFolders(const fs::path& folder) {
    std::error_code error;
    if (folder.empty() || fs::is_directory(folder, error)) {
        return {};
    }
    const fs::path above = folder.parent_path();
    if (above != folder) {
        if (const auto failed = createFolders(above)) {
            return failed;
        }
    }
    if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return lastError();
    }
    const bool there = fs::is_directory(folder, error);
    return there || error ? error : std::make_error_code(std::errc::not_a_directory);
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

// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>
#include <utility>

namespace sordin {

/// Owns an open file descriptor and closes it. Invalid by default. Move-only.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes the result of open() or a similar function; a negative value makes it invalid.
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            descriptor_ = std::exchange(other.descriptor_, -1);
        }
        return *this;
    }

    [[nodiscard]] bool valid() const { return descriptor_ >= 0; }
    [[nodiscard]] int get() const { return descriptor_; }

    void close() {
        if (valid()) {
            ::close(std::exchange(descriptor_, -1));
        }
    }

private:
    int descriptor_ = -1;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include "rig/temporary_folder.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <system_error>
#include <unistd.h>

namespace sordin {

/// A file system of 64 KiB in memory, mounted over a folder. Only the calling thread and the processes that
/// it starts later see it. It ends with the thread.
class SmallDisk {
public:
    /// Throws std::system_error if the system does not allow it. Call before starting other threads.
    explicit SmallDisk(std::filesystem::path folder) : folder_(std::move(folder)) {
        const uid_t user = getuid();
        const gid_t group = getgid();
        check(unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER));
        if (user != 0) {
            write("/proc/self/setgroups", "deny");
            write("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
            write("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
        }
        check(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr));
        check(mount("tmpfs", folder_.c_str(), "tmpfs", 0, "size=64k"));
    }

    /// Fills the disk completely.
    void fill() const {
        const int file = open((folder_ / "filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const std::string block(4096, 'x');
        while (::write(file, block.data(), block.size()) > 0) {
        }
        close(file);
    }
    void makeRoom() const { std::filesystem::remove(folder_ / "filler"); }
    void setReadOnly(bool readOnly) const {
        check(mount(nullptr, folder_.c_str(), nullptr, MS_REMOUNT | (readOnly ? MS_RDONLY : 0), nullptr));
    }

private:
    static void check(int result) {
        if (result != 0) {
            throw std::system_error(errno, std::generic_category());
        }
    }
    /// Writes a file of /proc in one call, as these require.
    static void write(const char* path, const std::string& text) {
        const int file = open(path, O_WRONLY | O_CLOEXEC);
        const auto written = ::write(file, text.data(), text.size());
        close(file);
        check(written == static_cast<ssize_t>(text.size()) ? 0 : -1);
    }

    std::filesystem::path folder_;
};

}  // namespace sordin

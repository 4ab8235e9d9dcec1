// SPDX-License-Identifier: MIT
#include "platform/linux/sandbox/network_filter.h"

#include "support/deleter.h"

#include <cerrno>
#include <memory>
#include <seccomp.h>
#include <sys/socket.h>

namespace sordin {

namespace {

using Filter = std::unique_ptr<void, Deleter<seccomp_release>>;

/// Refuses a system call if its first argument is an address family other than AF_UNIX and AF_NETLINK. The
/// filter compares all 64 bits of the register, although the kernel uses only the lower 32. The rules
/// therefore refuse everything except the two exact 64-bit values, so that set upper bits cannot bypass them.
int refuseFamilies(const Filter& filter, int call) {
    static_assert(AF_UNIX < AF_NETLINK);
    const auto refuse = [&](scmp_compare comparison, int family) {
        const scmp_arg_cmp first{0, comparison, static_cast<scmp_datum_t>(family), 0};
        return seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(EAFNOSUPPORT), call, 1, &first);
    };
    int error = refuse(SCMP_CMP_GT, AF_NETLINK);
    for (int family = 0; family < AF_NETLINK && error == 0; ++family) {
        if (family != AF_UNIX) {
            error = refuse(SCMP_CMP_EQ, family);
        }
    }
    return error;
}

int install(const Filter& filter) {
    int error = seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_ERRNO(ENOSYS));
    if (error == 0) {
        // Covers threads that exist already.
        error = seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);
    }
    if (error == 0) {
        // Makes libseccomp return the kernel's errors.
        error = seccomp_attr_set(filter.get(), SCMP_FLTATR_API_SYSRAWRC, 1);
    }
    if (error == 0) {
        error = refuseFamilies(filter, SCMP_SYS(socket));
    }
    if (error == 0) {
        error = refuseFamilies(filter, SCMP_SYS(socketpair));
    }
    if (error == 0) {
        error = seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(io_uring_setup), 0);
    }
    return error == 0 ? seccomp_load(filter.get()) : error;
}

}  // namespace

std::error_code refuseNetwork() {
    const Filter filter(seccomp_init(SCMP_ACT_ALLOW));
    if (!filter) {
        return std::make_error_code(std::errc::not_enough_memory);
    }
    return {-install(filter), std::generic_category()};
}

}  // namespace sordin

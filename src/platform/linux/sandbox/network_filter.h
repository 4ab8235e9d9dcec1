// SPDX-License-Identifier: MIT
#pragma once

#include <system_error>

namespace sordin {

/// Takes the network away from this process for good, and from all that it starts: sockets of any family but
/// AF_UNIX and AF_NETLINK (the kernel's own news) are EAFNOSUPPORT, as on a system without a network, and
/// what goes around socket(2), io_uring and the system calls of foreign architectures, is ENOSYS. Programs
/// started from here cannot gain privileges either (no_new_privs), so that none gets out.
///
/// Call it first thing in main: sockets that are open stay open. On an error, as where the system has no
/// seccomp, everything is as it was.
///
/// It holds mistakes, ours and those of libraries, not an attacker: other programs of the user that are
/// reached over AF_UNIX, as a desktop's services and a resolver of names, have the network that they have.
[[nodiscard]] std::error_code refuseNetwork();

}  // namespace sordin

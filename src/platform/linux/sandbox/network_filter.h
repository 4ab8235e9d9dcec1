// SPDX-License-Identifier: MIT
#pragma once

#include <system_error>

namespace sordin {

/// Removes network access from this process and all its children for good. Sockets of families other than
/// AF_UNIX and AF_NETLINK (messages from the kernel) fail with EAFNOSUPPORT, as on a system without a
/// network. Ways around socket(2), which are io_uring and the system calls of foreign architectures, fail
/// with ENOSYS. Child programs inherit the filter and cannot gain privileges (no_new_privs).
///
/// Call it at the start of main: open sockets stay open. On an error, for example on a system without
/// seccomp, nothing changes.
///
/// The filter guards against mistakes in this program and its libraries, not against an attacker: programs
/// reached over AF_UNIX, such as desktop services and a name resolver, keep their network access.
[[nodiscard]] std::error_code refuseNetwork();

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sordin {

/// Returns the identifier of the desktop application that a process was started as, from the name of its
/// systemd unit or snap scope. `text` is the contents of /proc/PID/cgroup. None for processes that were not
/// started as an application, for example programs in a terminal. The unit names follow systemd's "Desktop
/// Environment Integration" document: app[-LAUNCHER]-ID[-RANDOM].scope, app[-LAUNCHER]-ID[@RANDOM].service
/// and dbus-:CONNECTION-ID@N.service, with special characters escaped as \xNN; and snap.NAME.APP-UUID.scope,
/// whose desktop entry is NAME_APP.
[[nodiscard]] std::optional<std::string> applicationIdFromCgroup(std::string_view text);

/// Returns the application identifier of a Flatpak sandbox from the contents of its /.flatpak-info (a key
/// file: [Application] name=ID).
[[nodiscard]] std::optional<std::string> applicationIdFromFlatpakInfo(std::string_view text);

}  // namespace sordin

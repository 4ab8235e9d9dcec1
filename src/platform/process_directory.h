// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// An application as the user sees it.
struct ApplicationInfo {
    std::string bundlePath;     ///< the path of its bundle, on systems with bundles; empty elsewhere
    std::string localisedName;  ///< UTF-8; empty if it has none
};

/// Looks up applications. Any thread. On failure, operations return no value.
class ProcessDirectory {
public:
    virtual ~ProcessDirectory() = default;

    /// The application that a process belongs to.
    [[nodiscard]] virtual std::optional<ApplicationInfo> runningApplication(std::int32_t processId) const = 0;

    /// The application that has the user's focus.
    [[nodiscard]] virtual std::optional<ApplicationInfo> frontmostApplication() const = 0;

    /// Returns the identifiers of all applications, running or not, that are shown under this name; `name`
    /// itself if there is no identifier. Reads many files.
    [[nodiscard]] virtual std::vector<std::string> applicationIds(const std::string& name) const = 0;

    /// Returns the name that an application is shown under; `id` itself if it is unknown.
    [[nodiscard]] virtual std::string applicationName(const std::string& id) const = 0;

    /// This program's own process identifier.
    [[nodiscard]] virtual std::int32_t ownProcessId() const = 0;
};

}  // namespace sordin

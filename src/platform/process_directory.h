// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// An application as the user knows it.
struct ApplicationInfo {
    std::string bundlePath;     ///< where its bundle lies, on systems with bundles; empty elsewhere
    std::string localisedName;  ///< UTF-8; empty when it has none
};

/// Knows the applications that run. All operations may be called from any thread and fail by answering
/// nothing.
class ProcessDirectory {
public:
    virtual ~ProcessDirectory() = default;

    /// The application that a process belongs to.
    [[nodiscard]] virtual std::optional<ApplicationInfo> runningApplication(std::int32_t processId) const = 0;

    /// The application that the user is looking at.
    [[nodiscard]] virtual std::optional<ApplicationInfo> frontmostApplication() const = 0;

    /// The identifiers of all applications that are shown by this name, running or not; the name itself where
    /// there is no better one. Reads many files.
    [[nodiscard]] virtual std::vector<std::string> applicationIds(const std::string& name) const = 0;

    /// The name that an application is shown by; its identifier where it is not known.
    [[nodiscard]] virtual std::string applicationName(const std::string& id) const = 0;

    /// This program's own process identifier.
    [[nodiscard]] virtual std::int32_t ownProcessId() const = 0;
};

}  // namespace sordin

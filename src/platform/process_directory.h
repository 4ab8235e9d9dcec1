// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

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

    /// This program's own process identifier.
    [[nodiscard]] virtual std::int32_t ownProcessId() const = 0;
};

}  // namespace sordin

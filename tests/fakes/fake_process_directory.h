// SPDX-License-Identifier: MIT
#pragma once

#include "platform/process_directory.h"

#include <map>

namespace sordin {

/// Returns the applications that the test sets.
struct FakeProcessDirectory final : ProcessDirectory {
    std::map<std::int32_t, ApplicationInfo> applications;
    std::optional<ApplicationInfo> frontmost;

    [[nodiscard]] std::optional<ApplicationInfo> runningApplication(std::int32_t processId) const override {
        const auto found = applications.find(processId);
        return found == applications.end() ? std::nullopt : std::optional(found->second);
    }
    [[nodiscard]] std::optional<ApplicationInfo> frontmostApplication() const override { return frontmost; }
    [[nodiscard]] std::vector<std::string> applicationIds(const std::string& name) const override {
        return {"id of " + name};
    }
    [[nodiscard]] std::string applicationName(const std::string& id) const override {
        return id.starts_with("id of ") ? id.substr(6) : id;
    }
    [[nodiscard]] std::int32_t ownProcessId() const override { return 1; }
};

}  // namespace sordin

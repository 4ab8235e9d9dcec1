// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

namespace sordin::replay {

/// A progress bar on standard error. It is shown only if both standard error and standard output are
/// terminals, so that it does not mix with redirected output.
class ProgressBar {
public:
    /// If `wanted` is false, nothing is shown.
    explicit ProgressBar(bool wanted);
    ~ProgressBar();  ///< clears the bar
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// `share` is the completed part, 0 to 1; none shows nothing.
    void show(std::optional<double> share);

private:
    bool visible_;
    int shown_ = -1;  // displayed percentage
};

}  // namespace sordin::replay

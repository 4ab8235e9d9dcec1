// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

namespace sordin::replay {

/// A bar on standard error. Draws only on a terminal, and only when standard output is one too: otherwise its
/// lines would mix with whatever reads the output.
class ProgressBar {
public:
    /// `wanted` false draws nothing at all.
    explicit ProgressBar(bool wanted);
    ~ProgressBar();  ///< wipes the bar away
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// `share` of the work done, 0 to 1; none draws nothing.
    void show(std::optional<double> share);

private:
    bool visible_;
    int shown_ = -1;  // percent on the screen
};

}  // namespace sordin::replay

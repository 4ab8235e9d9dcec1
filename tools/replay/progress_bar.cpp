// SPDX-License-Identifier: MIT
#include "replay/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace sordin::replay {

ProgressBar::ProgressBar(bool wanted)
    : visible_(wanted && isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
    if (shown_ >= 0) {
        std::fputs("\r\033[K", stderr);
    }
}

void ProgressBar::show(std::optional<double> share) {
    if (!visible_ || !share) {
        return;
    }
    const int percent = static_cast<int>(std::clamp(*share, 0.0, 1.0) * 100);
    if (percent == shown_) {
        return;
    }
    shown_ = percent;
    constexpr int cells = 40;
    const auto full = static_cast<std::size_t>(percent * cells / 100);
    const std::string bar = std::string(full, '#') + std::string(cells - full, '.');
    std::fprintf(stderr, "\r[%s] %3d%%", bar.c_str(), percent);
}

}  // namespace sordin::replay

// SPDX-License-Identifier: MIT
#pragma once

#include "replay/labels.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace sordin::demo {

/// Prints what happens, with its time in the broadcast, and counts what was faded. Times are seconds.
class Timeline {
public:
    /// `ads` is where the advertisements really are; `log` is where the program writes.
    Timeline(std::vector<replay::Interval> ads, const std::filesystem::path& log);

    /// To be called often, in the order of time: `volume` is that of the output device, 0 to 1, none if it
    /// cannot be read.
    void at(double time, std::optional<float> volume);

    void printSummary() const;

private:
    void followAds(double time);
    void followVolume(double time, float volume);
    void followLog(double time);

    std::vector<replay::Interval> ads_;
    std::ifstream log_;
    std::string line_;  // of the log, so far
    double last_ = 0;
    std::optional<std::size_t> inAd_;  // which
    std::optional<float> settled_;     // the volume before it began to move
    float lastVolume_ = 0;
    double moved_ = 0;  // since when it has not
    double began_ = 0;
    bool moving_ = false;
    double adSeconds_ = 0;
    double fadedAdSeconds_ = 0;
    double otherSeconds_ = 0;
    double fadedOtherSeconds_ = 0;
};

}  // namespace sordin::demo

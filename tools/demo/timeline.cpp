// SPDX-License-Identifier: MIT
#include "demo/timeline.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace sordin::demo {

namespace {

constexpr double percent = 100;

void print(double time, const std::string& text) {
    constexpr double minute = 60;
    const double minutes = std::floor(time / minute);
    std::printf("%3.0f:%04.1f  %s\n", minutes, time - minute * minutes, text.c_str());
    std::fflush(stdout);
}

std::string percentText(float volume) {
    return std::to_string(std::lround(static_cast<double>(volume) * percent)) + " %";
}

}  // namespace

Timeline::Timeline(std::vector<replay::Interval> ads, const std::filesystem::path& log)
    : ads_(std::move(ads)), log_(log) {}

void Timeline::at(double time, std::optional<float> volume) {
    followAds(time);
    followLog(time);
    if (volume) {
        followVolume(time, *volume);
        const bool faded = settled_ && *volume < *settled_ / 2;
        (inAd_ ? adSeconds_ : otherSeconds_) += time - last_;
        if (faded) {
            (inAd_ ? fadedAdSeconds_ : fadedOtherSeconds_) += time - last_;
        }
    }
    last_ = time;
}

void Timeline::followAds(double time) {
    std::optional<std::size_t> now;
    for (std::size_t i = 0; i < ads_.size(); ++i) {
        if (time >= ads_[i].start && time < ads_[i].end) {
            now = i;
        }
    }
    if (now != inAd_) {
        print(time, now ? "the broadcast: an advertisement begins" : "the broadcast: the programme goes on");
        inAd_ = now;
    }
}

void Timeline::followLog(double time) {
    log_.clear();  // there may be more by now
    for (char character = 0; log_.get(character);) {
        if (character != '\n') {
            line_ += character;
        } else {
            print(time, "Sordin: " + std::exchange(line_, {}));
        }
    }
}

void Timeline::followVolume(double time, float volume) {
    constexpr double stillness = 0.1;  // between two steps of a fade less time passes
    if (!settled_) {
        settled_ = lastVolume_ = volume;
    }
    if (volume != std::exchange(lastVolume_, volume)) {
        if (!std::exchange(moving_, true)) {
            began_ = time;
        }
        moved_ = time;
    } else if (moving_ && time - moved_ > stillness) {
        moving_ = false;
        std::array<char, 32> seconds{};
        std::snprintf(seconds.data(), seconds.size(), "%.1f", moved_ - began_);
        print(began_, "the volume: to " + percentText(volume) + " within " + seconds.data() + " s");
        if (volume > *settled_) {
            settled_ = volume;
        }
    }
}

void Timeline::printSummary() const {
    const auto share = [](double part, double whole) { return whole > 0 ? percent * part / whole : 0; };
    std::printf("\nFaded: %.0f of %.0f seconds of advertisements (%.0f %%), %.0f of %.0f seconds of "
                "programme (%.1f %%).\n",
                fadedAdSeconds_, adSeconds_, share(fadedAdSeconds_, adSeconds_), fadedOtherSeconds_,
                otherSeconds_, share(fadedOtherSeconds_, otherSeconds_));
}

}  // namespace sordin::demo

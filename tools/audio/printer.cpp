// SPDX-License-Identifier: MIT
#include "audio/printer.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace sordin::audio {

namespace {

using Json = nlohmann::ordered_json;

std::string oneLine(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string fixed(double value, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

std::string decibels(double amplitude) {
    return amplitude > 0 ? fixed(20 * std::log10(amplitude), 1) + " dB" : "silence";
}

}  // namespace

void Printer::state(const std::string& state, const std::string& detail) {
    if (json_) {
        print(oneLine({{"t", seconds()}, {"state", state}, {"detail", detail}}));
    } else {
        print(fixed(seconds(), 3) + "  " + state + (detail.empty() ? "" : ": " + detail));
    }
}

void Printer::level(const Level& level) {
    if (json_) {
        print(oneLine({{"t", seconds()},
                       {"rms", level.rms},
                       {"peak", level.peak},
                       {"frames", level.frames},
                       {"device", level.device},
                       {"volume", level.volume ? Json(*level.volume) : Json()},
                       {"playing", level.playing},
                       {"source", level.source}}));
        return;
    }
    std::string line = fixed(seconds(), 3) + "  " + decibels(level.rms) + ", peak " + decibels(level.peak);
    line += "  |  " + (level.device.empty() ? "no device" : level.device);
    line += level.volume ? " at " + fixed(static_cast<double>(*level.volume) * 100, 1) + " %" : "";
    for (std::size_t i = 0; i < level.playing.size(); ++i) {
        line += (i == 0 ? "  |  " : ", ") + level.playing[i];
    }
    print(line);
}

void Printer::volume(const std::string& device, float volume) {
    if (json_) {
        print(oneLine({{"t", seconds()}, {"write", volume}, {"device", device}}));
    } else {
        print(fixed(seconds(), 3) + "  " + device + " set to " + fixed(static_cast<double>(volume) * 100, 2) +
              " %");
    }
}

double Printer::seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void Printer::print(const std::string& line) {
    const std::lock_guard lock(mutex_);
    std::cout << line << '\n' << std::flush;
}

}  // namespace sordin::audio

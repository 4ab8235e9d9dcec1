// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>
#include <span>
#include <string>

namespace sordin {

/// A sine at 48 kHz, configured by a player's arguments: FREQUENCY AMPLITUDE [left-only] [channels=1]
/// [target=SINK] [role=ROLE] [record=SOURCE].
class Tone {
public:
    static constexpr std::uint32_t rate = 48'000;

    explicit Tone(std::span<char*> arguments)
        : step_(2 * std::numbers::pi * std::strtod(arguments[1], nullptr) / rate),
          amplitude_(std::strtod(arguments[2], nullptr)) {
        for (const std::string argument : arguments.subspan(3)) {
            if (argument == "left-only") {
                leftOnly_ = true;
            } else if (argument == "channels=1") {
                channels = 1;
            } else if (argument.starts_with("target=")) {
                target = argument.substr(7);
            } else if (argument.starts_with("role=")) {
                role = argument.substr(5);
            } else if (argument.starts_with("record=")) {
                source = argument.substr(7);
            }
        }
    }

    /// Writes the next frames, interleaved.
    void fill(std::span<float> samples) {
        for (std::size_t i = 0; i + channels <= samples.size(); i += channels) {
            const auto value = static_cast<float>(amplitude_ * std::sin(phase_));
            phase_ = std::fmod(phase_ + step_, 2 * std::numbers::pi);
            for (std::size_t channel = 0; channel < channels; ++channel) {
                samples[i + channel] = leftOnly_ && channel == 1 ? 0 : value;
            }
        }
    }

    std::uint8_t channels = 2;
    std::string target;  ///< empty for the server's choice
    std::string role;    ///< of the stream; empty for none
    std::string source;  ///< source to record while playing; empty for none

private:
    const double step_;
    const double amplitude_;
    double phase_ = 0;
    bool leftOnly_ = false;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include "detection/captured_audio.h"
#include "platform/linux/audio/linux_audio.h"
#include "platform/loopback_capture.h"
#include "rig/wait_until.h"
#include "support/asio_serial_queue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <future>
#include <memory>
#include <mutex>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

namespace sordin {

/// The real capture, and its recent sound.
class Ear {
public:
    static constexpr std::chrono::seconds deadline{20};
    static constexpr std::size_t window = 4'000;  // frames that level() and tone() use: a quarter second

    explicit Ear(const LinuxAudio& audio)
        : capture_(std::make_shared<AsioSerialQueue>("sordin.capture"), audio.loopbackSource()) {
        capture_.onStop([this](const auto& failure) {
            const std::lock_guard lock(mutex_);
            losses_.push_back(failure->description);
        });
    }

    /// Starts the capture. Returns an empty string, or the error message for the user.
    std::string start() {
        const auto result = std::make_shared<std::promise<std::string>>();
        capture_.start(
            queue_, [this](const CapturedAudio& audio) { hear(audio); },
            [result](const auto& failure) { result->set_value(failure ? failure->description : ""); });
        return waitFor(*result);
    }
    void stop() {
        const auto result = std::make_shared<std::promise<std::string>>();
        capture_.stop([result] { result->set_value(""); });
        waitFor(*result);
    }

    /// Whether the level (RMS) of the last quarter second reaches this value within 0.02.
    testing::AssertionResult hears(double rms) {
        const auto so = [&] { return std::fabs(level() - rms) <= 0.02 * rms + 1e-4; };
        return (waitUntil(so, deadline) ? testing::AssertionSuccess() : testing::AssertionFailure())
               << level();
    }
    /// Whether all of the next `seconds` has this level, except for zeros of at most `rest` seconds in total.
    bool keepsHearing(double rms, double seconds, double rest = 0) {
        forget();
        bool always = true;
        const auto enough = static_cast<std::size_t>(seconds * SystemAudioCapture::sampleRate);
        waitUntil([&] { return heardFrames() >= enough; }, deadline);
        const std::lock_guard lock(mutex_);
        const std::size_t zeros = rest > 0 ? std::erase(samples_, 0.0F) : 0;
        for (std::size_t begin = 0; begin + window <= samples_.size(); begin += window) {
            always = always && std::fabs(rmsOf(begin) - rms) <= 0.02 * rms + 1e-4;
        }
        return always && static_cast<double>(zeros) <= rest * SystemAudioCapture::sampleRate &&
               samples_.size() + zeros >= enough;
    }
    /// Root mean square of the last quarter second; below 0 if less sound has arrived.
    [[nodiscard]] double level() {
        const std::lock_guard lock(mutex_);
        return samples_.size() < window ? -1 : rmsOf(samples_.size() - window);
    }
    /// Amplitude of one frequency (a multiple of 4 Hz) in the last quarter second.
    [[nodiscard]] double tone(double frequency) {
        const std::lock_guard lock(mutex_);
        double sine = 0;
        double cosine = 0;
        for (std::size_t i = 0; i < window && samples_.size() >= window; ++i) {
            const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / 16'000;
            const auto sample = static_cast<double>(samples_[samples_.size() - window + i]);
            sine += sample * std::sin(phase);
            cosine += sample * std::cos(phase);
        }
        return 2 * std::hypot(sine, cosine) / window;
    }
    [[nodiscard]] std::size_t heardFrames() {
        const std::lock_guard lock(mutex_);
        return samples_.size();
    }
    void forget() {
        const std::lock_guard lock(mutex_);
        samples_.clear();
    }
    [[nodiscard]] std::vector<std::string> losses() {
        const std::lock_guard lock(mutex_);
        return losses_;
    }

private:
    static std::string waitFor(std::promise<std::string>& promise) {
        auto future = promise.get_future();
        return future.wait_for(deadline) == std::future_status::ready ? future.get() : "no answer";
    }
    [[nodiscard]] double rmsOf(std::size_t begin) const {
        double energy = 0;
        for (std::size_t i = begin; i < begin + window; ++i) {
            const auto sample = static_cast<double>(samples_[i]);
            energy += sample * sample;
        }
        return std::sqrt(energy / window);
    }
    void hear(const CapturedAudio& audio) {
        const auto buffer = pcmBuffer(audio);
        const std::lock_guard lock(mutex_);
        if (buffer && buffer->format() == AudioFormat{16'000, 1}) {
            samples_.insert(samples_.end(), buffer->channel(0).begin(), buffer->channel(0).end());
        }
    }

    std::mutex mutex_;
    std::vector<float> samples_;
    std::vector<std::string> losses_;
    const std::shared_ptr<SerialQueue> queue_ = std::make_shared<AsioSerialQueue>("sordin.audio");
    LoopbackCapture capture_;  // destroyed first; the queue drops what it still delivers
};

}  // namespace sordin

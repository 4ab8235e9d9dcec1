// SPDX-License-Identifier: MIT
#include "platform/linux/server/device_volume.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace sordin {

namespace {

constexpr float rounding = 0.005F;          // on the volume scale of mixers; Bluetooth has 127 steps
constexpr std::size_t mostUnanswered = 64;  // two ramps; the server may omit replies

float loudest(const std::vector<float>& channels) {
    return channels.empty() ? 0 : *std::max_element(channels.begin(), channels.end());
}

bool sameVolume(const std::vector<float>& a, const std::vector<float>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](float x, float y) { return std::fabs(std::cbrt(x) - std::cbrt(y)) <= rounding; });
}

}  // namespace

std::vector<float> DeviceVolume::appeared(const std::vector<float>& channels) {
    unanswered_.clear();
    lastAnswered_ = true;
    channels_ = channels;
    if (!written_ && !adopted_) {
        changedByOthers(channels);
        return {};
    }
    // The device appears with the last step of a fade, or with a volume stored before the fade.
    const float volume = std::cbrt(loudest(channels));
    reference_ = std::max(reference_, volume);
    scalar_ = volume / reference_;
    return written_ ? write(*written_) : std::vector<float>();
}

void DeviceVolume::writeRemembered() {
    adopted_ = adopted_ || written_;
    written_.reset();
}

void DeviceVolume::reported(const std::vector<float>& channels) {
    if (channels == channels_) {
        return;
    }
    channels_ = channels;
    if (!isEcho(channels)) {
        changedByOthers(channels);
    }
}

bool DeviceVolume::isEcho(const std::vector<float>& channels) {
    const auto write = std::find_if(unanswered_.begin(), unanswered_.end(), [&](const State& written) {
        return sameVolume(written.channels, channels);
    });
    if (write == unanswered_.end()) {
        return false;
    }
    lastAnswered_ = write + 1 == unanswered_.end();
    if (lastAnswered_) {
        scalar_ = write->scalar;
    }
    unanswered_.erase(unanswered_.begin(), lastAnswered_ ? write : write + 1);
    return true;
}

void DeviceVolume::changedByOthers(const std::vector<float>& channels) {
    const float factor = loudest(channels);
    const float volume = std::cbrt(factor);
    reference_ = std::max(1.0F, volume);
    scalar_ = volume / reference_;
    if (factor > 0) {
        ratios_.clear();
        for (const float channel : channels) {
            ratios_.push_back(std::max(channel, 0.0F) / factor);
        }
    }
    others_ = State{scalar_, channels};
    adopted_ = false;
    adoptedRatios_.clear();
    written_.reset();
    if (lastAnswered_) {
        unanswered_.clear();
    }
}

std::vector<float> DeviceVolume::write(float scalar) {
    // A restore also restores the balance of the record; a new fade keeps the current balance.
    const auto adopted = std::exchange(adoptedRatios_, {});
    if (!adopted.empty() && (channels_.empty() || scalar > scalar_)) {
        ratios_ = adopted;
    }
    scalar_ = scalar;
    written_ = scalar;
    if (channels_.empty()) {
        return {};
    }
    std::vector<float> result;
    if (others_ && others_->scalar == scalar && others_->channels.size() == channels_.size()) {
        result = others_->channels;
    } else {
        const float factor = std::pow(scalar * reference_, 3.0F);
        result = ratios_.size() == channels_.size() ? ratios_ : std::vector<float>(channels_.size(), 1.0F);
        for (float& channel : result) {
            channel *= factor;
        }
    }
    unanswered_.push_back({scalar, result});
    lastAnswered_ = false;
    if (unanswered_.size() > mostUnanswered) {
        unanswered_.pop_front();
    }
    return result;
}

void DeviceVolume::adopt(float reference, const std::vector<float>& ratios) {
    const float volume = scalar_ * reference_;
    const bool known = !channels_.empty();
    reference_ = std::max({1.0F, reference, known ? volume : 0.0F});
    scalar_ = known ? volume / reference_ : 1.0F;
    adoptedRatios_ = ratios;
    others_.reset();
    adopted_ = true;
}

}  // namespace sordin

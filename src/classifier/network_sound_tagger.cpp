// SPDX-License-Identifier: MIT
#include "classifier/network_sound_tagger.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace sordin {

namespace {

/// Number of frames that are resampled at a time.
constexpr std::size_t pieceFrames = 1024;

/// Upper bound of the resampler's delay, seconds.
constexpr double resamplerDelay = 0.01;

}  // namespace

NetworkSoundTagger::NetworkSoundTagger(const SoundModel& model)
    : rate_(model.frontEnd.rate),
      interval_(resultInterval(model.frontEnd)),
      analysis_(model, [this](std::span<const double> confidences) { announce(confidences); }),
      silence_(pieceFrames) {
    for (const SoundModel::Label& label : model.labels) {
        labels_.push_back({label.identifier, 0});
    }
}

void NetworkSoundTagger::onLabels(LabelHandler handler) {
    onLabels_ = std::move(handler);
}

std::optional<std::string> NetworkSoundTagger::prepare(const AudioFormat& format) {
    try {
        stream_.emplace(begun(format));
    } catch (const std::exception& error) {
        return error.what();
    }
    return std::nullopt;
}

void NetworkSoundTagger::countHopsFrom(std::int64_t framePosition) {
    if (stream_) {
        stream_->origin = framePosition;
    }
}

NetworkSoundTagger::Stream NetworkSoundTagger::begun(const AudioFormat& format) const {
    constexpr double highestRate = 1e9;
    const double hop = std::floor(format.sampleRate * 0.5);
    if (format.channelCount == 0 || !(hop >= 1 && hop <= highestRate)) {
        throw std::invalid_argument("unsupported audio format");
    }
    // The detector's hops are whole numbers of frames, at an odd rate slightly less than 0.5 s. Counting each
    // as exactly 0.5 s keeps the results in step with the hops.
    const auto longestGap = static_cast<std::int64_t>(analysis_.memorySeconds() * 2 * hop);
    const auto origin = stream_ ? std::nullopt : std::optional<std::int64_t>(0);
    return {format,      static_cast<std::int64_t>(hop), longestGap, Resampler(2 * hop, rate_), origin,
            std::nullopt};
}

void NetworkSoundTagger::analyze(const PcmBuffer& buffer, std::int64_t framePosition) {
    if (!stream_ || buffer.format() != stream_->format || buffer.frameLength() == 0) {
        return;
    }
    const std::int64_t gap = stream_->end ? framePosition - *stream_->end : -1;
    if (gap < 0 || gap >= stream_->longestGap) {
        beginAt(framePosition);
    } else {
        hearSilence(gap);
    }
    hear(buffer.channel(0));
    stream_->end = framePosition + static_cast<std::int64_t>(buffer.frameLength());
}

void NetworkSoundTagger::beginAt(std::int64_t framePosition) {
    if (!stream_->origin) {
        stream_->origin = framePosition;
    }
    const std::int64_t hop = stream_->hop;
    const std::int64_t sinceHop = ((framePosition - *stream_->origin) % hop + hop) % hop;
    analysis_.begin(sinceHop * interval_ / hop);
    resampled_.clear();
    stream_->resampler.finish(resampled_);  // discard its pending samples
    if (2 * hop != rate_) {
        const auto delay = static_cast<std::size_t>(resamplerDelay * rate_);
        resampled_.assign(delay, 0);
        analysis_.hear(resampled_);
    }
}

void NetworkSoundTagger::hear(std::span<const float> samples) {
    while (!samples.empty()) {
        const auto piece = samples.first(std::min(samples.size(), pieceFrames));
        samples = samples.subspan(piece.size());
        resampled_.clear();
        stream_->resampler.process(piece, resampled_);
        analysis_.hear(resampled_);
    }
}

void NetworkSoundTagger::hearSilence(std::int64_t frames) {
    while (frames > 0) {
        const auto piece = std::min(frames, static_cast<std::int64_t>(silence_.size()));
        hear(std::span(silence_).first(static_cast<std::size_t>(piece)));
        frames -= piece;
    }
}

void NetworkSoundTagger::announce(std::span<const double> confidences) {
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        labels_[i].confidence = confidences[i];
    }
    if (onLabels_) {
        onLabels_(labels_);
    }
}

}  // namespace sordin

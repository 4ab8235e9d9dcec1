// SPDX-License-Identifier: MIT
#pragma once

#include "classifier/sliding_analysis.h"
#include "classifier/sound_model.h"
#include "platform/sound_tagger.h"
#include "support/resampler.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace sordin {

/// The project's own tagger: a small neural network over the last seconds. Computes within analyze(), on the
/// caller's thread. The same buffers always give the same results.
///
/// Analyzes channel 0, like the detector, and has one result for the end of each hop of 0.5 s. analyze() of
/// the buffer that completes the hop delivers it. The hops of the first stream are counted from position 0;
/// those of a later stream from countHopsFrom(), or from its first buffer if that is not called. At rates
/// other than the model's, the input is 10 ms late because of the resampler.
///
/// If skipped silence is shorter than the time that a result looks back on, the tagger inserts the silence
/// and delivers the results within it. After a longer gap, or if positions go back, it restarts: the first
/// result comes after one second of audio, and the time before counts as silence.
class NetworkSoundTagger final : public SoundTagger {
public:
    explicit NetworkSoundTagger(const SoundModel& model);
    ~NetworkSoundTagger() override = default;
    NetworkSoundTagger(const NetworkSoundTagger&) = delete;
    NetworkSoundTagger& operator=(const NetworkSoundTagger&) = delete;

    void onLabels(LabelHandler handler) override;
    [[nodiscard]] std::optional<std::string> prepare(const AudioFormat& format) override;
    void countHopsFrom(std::int64_t framePosition) override;
    void analyze(const PcmBuffer& buffer, std::int64_t framePosition) override;

private:
    /// A stream of one format. Positions and lengths are in its frames.
    struct Stream {
        AudioFormat format;
        std::int64_t hop;  // 0.5 s, rounded down
        std::int64_t longestGap;
        Resampler resampler;
        std::optional<std::int64_t> origin;  // position at which a hop begins
        std::optional<std::int64_t> end;     // of the audio analyzed so far
    };

    [[nodiscard]] Stream begun(const AudioFormat& format) const;
    void beginAt(std::int64_t framePosition);
    void hear(std::span<const float> samples);
    void hearSilence(std::int64_t frames);
    void announce(std::span<const double> confidences);

    const std::uint32_t rate_;
    const std::uint32_t interval_;  // samples at the model's rate from one result to the next
    LabelHandler onLabels_;
    std::vector<SoundLabel> labels_;
    SlidingAnalysis analysis_;
    std::optional<Stream> stream_;
    std::vector<float> silence_;
    std::vector<float> resampled_;
};

}  // namespace sordin

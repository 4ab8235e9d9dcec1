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

/// The project's own tagger: a small network over the last seconds. It works within analyze(), on the
/// caller's thread, and always gives the same results for the same buffers.
///
/// Like the detector, it hears channel 0 and has a result for the end of every hop of half a second, at the
/// latest when the buffer is analysed that ends the hop. The hops of the first stream are counted from
/// position 0; those of a stream that is prepared later from where countHopsFrom() says, else from its first
/// buffer. At other rates than the model's own it hears 10 ms late, which is the time that the resampler
/// needs.
///
/// Silence that was left out is put back while it is shorter than what a result looks back on; with it come
/// the results that fell into it. After a longer one, and where positions go back, the tagger begins anew: it
/// has no results until it has heard one second, and takes what was before for silence.
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
    /// A stream of one format. All but the rate counts in its frames.
    struct Stream {
        AudioFormat format;
        std::int64_t hop;  // half a second
        std::int64_t longestGap;
        Resampler resampler;
        std::optional<std::int64_t> origin;  // where the hops are counted from
        std::optional<std::int64_t> end;     // of what was heard
    };

    [[nodiscard]] Stream begun(const AudioFormat& format) const;
    void beginAt(std::int64_t framePosition);
    void hear(std::span<const float> samples);
    void hearSilence(std::int64_t frames);
    void announce(std::span<const double> confidences);

    const std::uint32_t rate_;
    const std::uint32_t interval_;  // samples of the model from result to result
    LabelHandler onLabels_;
    std::vector<SoundLabel> labels_;
    SlidingAnalysis analysis_;
    std::optional<Stream> stream_;
    std::vector<float> silence_;
    std::vector<float> resampled_;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "detection/ad_segmenter.h"

#include "support/fatal.h"

#include <algorithm>
#include <array>
#include <limits>

namespace sordin {

std::optional<AdSegmenter::Event> AdSegmenter::update(float confidence, float threshold, double hop,
                                                      const Contributions& contributions) {
    return inAd_ ? updateInside(confidence, threshold, hop, contributions)
                 : updateOutside(confidence, threshold, contributions);
}

// Comparisons test whether the confidence reaches a level. A NaN threshold or confidence fails them, which
// starts no ad, ends an ad in progress and so brings the volume up.

std::optional<AdSegmenter::Event> AdSegmenter::updateOutside(float confidence, float threshold,
                                                             const Contributions& contributions) {
    if (!(confidence >= threshold)) {
        above_ = 0;
        return std::nullopt;
    }
    if (above_ == std::numeric_limits<decltype(above_)>::max()) {
        fatal("the count of hops above the threshold overflowed");
    }
    ++above_;
    const std::int64_t requiredRun =
        confidence >= threshold + rules_.strongMargin ? rules_.strongRun : rules_.weakRun;
    if (above_ < requiredRun) {
        return std::nullopt;
    }
    inAd_ = true;
    belowTime_ = 0;
    elapsed_ = 0;
    above_ = 0;
    setPeak(confidence, contributions);
    return Started{};
}

std::optional<AdSegmenter::Event> AdSegmenter::updateInside(float confidence, float threshold, double hop,
                                                            const Contributions& contributions) {
    elapsed_ += hop;
    if (confidence > peak_) {
        setPeak(confidence, contributions);
    }
    belowTime_ = confidence >= threshold - rules_.exitMargin ? 0 : belowTime_ + hop;
    if (belowTime_ >= rules_.holdSeconds || elapsed_ >= maxAdSeconds) {
        return Ended{forceEnd()};
    }
    return std::nullopt;
}

AdSummary AdSegmenter::forceEnd() {
    inAd_ = false;
    above_ = 0;
    return {peak_, reasons(peakContributions_)};
}

void AdSegmenter::setPeak(float confidence, const Contributions& contributions) {
    peak_ = confidence;
    peakContributions_ = contributions;
}

std::vector<std::string> AdSegmenter::reasons(const Contributions& contributions) {
    constexpr float leastShare = 0.15F;
    constexpr std::size_t most = 3;
    std::array<Contribution, Contributions::capacity> strong;
    const auto end = std::copy_if(contributions.begin(), contributions.end(), strong.begin(),
                                  [](const Contribution& entry) { return entry.value > leastShare; });
    // A stable sort keeps equal shares in the order of the scorer's weights.
    std::stable_sort(strong.begin(), end,
                     [](const Contribution& a, const Contribution& b) { return a.value > b.value; });
    std::vector<std::string> names;
    for (auto entry = strong.begin(); entry != end && names.size() < most; ++entry) {
        names.emplace_back(entry->name);
    }
    return names;
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <utility>

namespace sordin {

/// Notices when sound that should arrive does not. For one thread at a time.
class FlowWatch {
public:
    /// A stream that plays delivers a buffer every few hundredths of a second.
    static constexpr auto longestDrought = std::chrono::seconds(2);

    enum class Verdict {
        fine,     ///< look again after the longest drought
        mend,     ///< connect anew, and look again then
        hopeless  ///< that has not helped
    };

    [[nodiscard]] bool active() const { return active_; }

    /// Whether sound should arrive from now on.
    void setActive(bool active) {
        if (std::exchange(active_, active) != active) {
            flowed();
        }
    }

    /// Sound has arrived.
    void flowed() {
        lastFlow_ = Clock::now();
        mendings_ = 0;
    }

    [[nodiscard]] Verdict look() {
        if (!active_ || Clock::now() < lastFlow_ + longestDrought) {
            return Verdict::fine;
        }
        if (mendings_ == mostMendings) {
            return Verdict::hopeless;
        }
        ++mendings_;
        lastFlow_ = Clock::now();
        return Verdict::mend;
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr int mostMendings = 2;

    bool active_ = false;
    Clock::time_point lastFlow_;  // when sound came, or when it could be expected to
    int mendings_ = 0;            // since sound came
};

}  // namespace sordin

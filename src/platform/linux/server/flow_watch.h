// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <utility>

namespace sordin {

/// Detects that expected sound does not arrive. Call it from one thread at a time.
class FlowWatch {
public:
    /// A playing stream delivers a buffer every few hundredths of a second.
    static constexpr auto longestDrought = std::chrono::seconds(2);

    enum class Verdict {
        fine,     ///< check again after longestDrought
        mend,     ///< reconnect, then check again
        hopeless  ///< reconnecting did not help
    };

    [[nodiscard]] bool active() const { return active_; }

    /// Sets whether sound is expected from now on.
    void setActive(bool active) {
        if (std::exchange(active_, active) != active) {
            flowed();
        }
    }

    /// Sound arrived.
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
    Clock::time_point lastFlow_;  // when sound last arrived, or when it was first expected
    int mendings_ = 0;            // since sound last arrived
};

}  // namespace sordin

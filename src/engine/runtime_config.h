// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>

namespace sordin {

/// The settings that are needed where an ad is noticed, on the pipeline's queue, where nobody may touch the
/// engine. Any thread.
class RuntimeConfig {
public:
    /// Whether the volume is left alone.
    [[nodiscard]] bool dryRun() const { return read(dryRun_); }
    void setDryRun(bool dryRun) { write(dryRun_, dryRun); }

    /// The share of the volume that stays during an ad, 0 to 1; 0 is silence.
    [[nodiscard]] float duck() const { return read(duck_); }
    void setDuck(float fraction) { write(duck_, fraction); }

    /// Whether a call is on for which nothing is to be faded.
    [[nodiscard]] bool inCall() const { return read(inCall_); }
    void setInCall(bool inCall) { write(inCall_, inCall); }

private:
    template <class Value>
    Value read(const Value& value) const {
        const std::lock_guard held(lock_);
        return value;
    }
    template <class Value>
    void write(Value& value, Value to) {
        const std::lock_guard held(lock_);
        value = to;
    }

    mutable std::mutex lock_;
    bool dryRun_ = false;  // guarded by lock_, as what follows
    float duck_ = 0;
    bool inCall_ = false;
};

}  // namespace sordin

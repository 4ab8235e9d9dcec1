// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>

namespace sordin {

/// The settings that the pipeline's callbacks read on the pipeline's queue, where they must not access the
/// engine. Thread-safe.
class RuntimeConfig {
public:
    /// Whether ads leave the volume unchanged (test mode).
    [[nodiscard]] bool dryRun() const { return read(dryRun_); }
    void setDryRun(bool dryRun) { write(dryRun_, dryRun); }

    /// Fraction of the volume during an ad, 0 to 1; 0 is silence.
    [[nodiscard]] float duck() const { return read(duck_); }
    void setDuck(float fraction) { write(duck_, fraction); }

    /// Whether a call is in progress during which nothing may be faded.
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
    bool dryRun_ = false;  // this and the following fields are guarded by lock_
    float duck_ = 0;
    bool inCall_ = false;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <optional>
#include <vector>

namespace sordin {

/// The one volume that the user sees of a device, over the amplitude factors of its channels.
///
/// Mixers show the cube root of the loudest channel's factor, and so does this, divided by the reference: the
/// volume at the last change by anybody else, or 1 if that was lower. So 1 is full volume, or more where the
/// user had more. Balance is kept as each channel's share of the loudest; silence does not lose it.
///
/// The server repeats what it was asked for, later and perhaps rounded. Such echoes are told from changes by
/// anybody else by comparing them with the writes that have not been answered yet.
class DeviceVolume {
public:
    /// The device has come, with these factors (from 0, at least one). If the last change before was a write
    /// that was not remembered yet, that still holds: the factors to write again, else nothing.
    [[nodiscard]] std::vector<float> appeared(const std::vector<float>& channels);

    /// By now the server remembers the last write. What the device has when it comes next time is right then.
    void writeRemembered();

    /// The server says what the device has now.
    void reported(const std::vector<float>& channels);

    /// Takes `scalar` (0 to 1) for the volume; the factors to write. Nothing before a device has appeared.
    [[nodiscard]] std::vector<float> write(float scalar);

    /// What was written or reported last.
    [[nodiscard]] float scalar() const { return scalar_; }

    [[nodiscard]] float reference() const { return reference_; }
    [[nodiscard]] const std::vector<float>& ratios() const { return ratios_; }

    /// Takes reference and balance from a record, until somebody else changes the volume: the balance for a
    /// write that raises the volume, as bringing it back does, or while the device is away.
    void adopt(float reference, const std::vector<float>& ratios);

private:
    void changedByOthers(const std::vector<float>& channels);
    [[nodiscard]] bool isEcho(const std::vector<float>& channels);

    /// The factors of all channels for a volume, and that volume.
    struct State {
        float scalar;
        std::vector<float> channels;
    };

    float scalar_ = 1;
    float reference_ = 1;
    std::vector<float> ratios_;
    bool adopted_ = false;  // the reference holds until others change the volume
    std::vector<float> adoptedRatios_;
    std::optional<float> written_;  // by the last change, if that was a write not remembered yet
    std::vector<float> channels_;   // as reported last
    std::optional<State> others_;   // as others left it: comes back to the last bit
    std::deque<State> unanswered_;  // writes, oldest first; the last stays for when its answer is repeated
    bool lastAnswered_ = true;
};

}  // namespace sordin

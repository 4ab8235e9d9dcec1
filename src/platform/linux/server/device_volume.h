// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <optional>
#include <vector>

namespace sordin {

/// The volume of a device as the user sees it, above the amplitude factors of its channels.
///
/// Mixers show the cube root of the loudest channel's factor. The scalar is this volume divided by the
/// reference: the volume at the last change by another program, or 1 if that was lower. A scalar of 1 is
/// therefore full volume, or more if the user had set more. The balance is stored as each channel's ratio to
/// the loudest channel, and survives silence.
///
/// The server reports each write back, later and possibly rounded. Comparing a report with the unanswered
/// writes distinguishes such an echo from a change by another program.
class DeviceVolume {
public:
    /// The device appeared with these factors (0 or more, at least one). If the last change was a write that
    /// the server has not stored yet, the write still holds: returns the factors to write again. Otherwise
    /// returns an empty list.
    [[nodiscard]] std::vector<float> appeared(const std::vector<float>& channels);

    /// The server has stored the last write. The volume that the device has at its next appearance is then
    /// correct.
    void writeRemembered();

    /// The server reported the current factors.
    void reported(const std::vector<float>& channels);

    /// Sets the scalar (0 to 1) and returns the factors to write; empty if the device has never appeared.
    [[nodiscard]] std::vector<float> write(float scalar);

    /// The scalar of the last write or report.
    [[nodiscard]] float scalar() const { return scalar_; }

    [[nodiscard]] float reference() const { return reference_; }
    [[nodiscard]] const std::vector<float>& ratios() const { return ratios_; }

    /// Sets reference and balance from a record, until another program changes the volume. The balance
    /// applies to the next write if that raises the volume, as a restore does, or if the device is absent.
    void adopt(float reference, const std::vector<float>& ratios);

private:
    void changedByOthers(const std::vector<float>& channels);
    [[nodiscard]] bool isEcho(const std::vector<float>& channels);

    /// A scalar and its factors for all channels.
    struct State {
        float scalar;
        std::vector<float> channels;
    };

    float scalar_ = 1;
    float reference_ = 1;
    std::vector<float> ratios_;
    bool adopted_ = false;  // the reference holds until another program changes the volume
    std::vector<float> adoptedRatios_;
    std::optional<float> written_;  // the last change, if it was a write that the server has not stored yet
    std::vector<float> channels_;   // last reported factors
    std::optional<State> others_;   // as another program set it; restored exactly
    // Writes, oldest first; the last one remains, because its echo may be repeated.
    std::deque<State> unanswered_;
    bool lastAnswered_ = true;
};

}  // namespace sordin

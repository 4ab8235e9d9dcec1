// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace sordin {

/// An audio device or a process that plays. Given by an adapter, never used again for another thing, and the
/// same when a device goes and comes back. 0 is none.
using AudioObjectId = std::uint32_t;

/// The object that stands for the audio system itself.
inline constexpr AudioObjectId systemAudioObject = 1;

/// A code of four characters, as audio systems name properties: fourCharacters("volm").
[[nodiscard]] constexpr std::uint32_t fourCharacters(std::string_view text) {
    std::uint32_t code = 0;
    for (const char character : text) {
        code = code << 8U | static_cast<unsigned char>(character);
    }
    return code;
}

/// Names one property of an object. Element 0 is the object as a whole, 1 and 2 are its front channels.
struct AudioProperty {
    std::uint32_t selector = 0;
    std::uint32_t scope = 0;
    std::uint32_t element = 0;

    bool operator==(const AudioProperty&) const = default;
};

namespace audio_property {

inline constexpr std::uint32_t global = fourCharacters("glob");
inline constexpr std::uint32_t output = fourCharacters("outp");

/// Of the system: the default output device, unsigned; 0 when there is none.
inline constexpr AudioProperty defaultOutputDevice{fourCharacters("dOut"), global, 0};
/// Of the system: the processes that play or could, a list.
inline constexpr AudioProperty processList{fourCharacters("prs#"), global, 0};
/// Of a process: not 0 while it sends audio to an output, unsigned.
inline constexpr AudioProperty isRunningOutput{fourCharacters("piro"), global, 0};
/// Of a process: its identifier, signed.
inline constexpr AudioProperty processId{fourCharacters("ppid"), global, 0};
/// Of a device: 1 muted, 0 not, unsigned.
inline constexpr AudioProperty mute{fourCharacters("mute"), output, 0};

/// Of a device: the volume as mixers show it, 0 to 1, float. 1 stands for full volume, or for the volume at
/// the last change by anybody else where that was above full.
[[nodiscard]] constexpr AudioProperty volume(std::uint32_t element) {
    return {fourCharacters("volm"), output, element};
}

}  // namespace audio_property

using AudioPropertyValue = std::variant<std::uint32_t, std::int32_t, float, std::vector<AudioObjectId>>;

/// What is kept of a device beside a volume that has to come back to it in another run of the program.
struct OutputDeviceRecord {
    std::string name;           ///< the device's lasting name
    std::string route;          ///< its connector, for example headphones; empty when it has none
    float reference = 1;        ///< the volume that the scalar 1 stands for, at least 1
    std::vector<float> ratios;  ///< each channel's share of the loudest channel, 0 to 1

    bool operator==(const OutputDeviceRecord&) const = default;
};

/// The audio system as objects with properties. All operations may be called from any thread, return soon,
/// and fail by answering nothing or false. A device that is known but away has the properties that it had
/// (one that has never been seen: a volume, element 0), so that it can be written to; they cannot be read.
class AudioObjects {
public:
    virtual ~AudioObjects() = default;

    [[nodiscard]] virtual std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                                const AudioProperty& property) const = 0;

    /// Writes; what was written is what get() answers until somebody else changes it. A write to a device
    /// that is known but away is kept and applied when it returns.
    virtual bool set(AudioObjectId object, const AudioProperty& property,
                     const AudioPropertyValue& value) = 0;

    [[nodiscard]] virtual bool has(AudioObjectId object, const AudioProperty& property) const = 0;
    [[nodiscard]] virtual bool settable(AudioObjectId object, const AudioProperty& property) const = 0;

    /// Waits until the audio system has taken all writes so far; false if that took longer than `deadline`.
    /// True at once if it has taken them already, or there were none.
    virtual bool flush(std::chrono::milliseconds deadline) = 0;

    /// What to keep of a device; none if it is not known.
    [[nodiscard]] virtual std::optional<OutputDeviceRecord> record(AudioObjectId device) const = 0;

    /// The object of the device that a record describes, whether it is there or not. Until somebody else
    /// changes the device's volume, its reference and balance are those of the record.
    virtual AudioObjectId adopt(const OutputDeviceRecord& record) = 0;

    /// Whether a device is there now.
    [[nodiscard]] virtual bool present(AudioObjectId device) const = 0;

    /// Sets what is called, on any thread, after the default output device or the set of devices has changed.
    /// The handler must not call back into this object; empty for nothing.
    virtual void onDevicesChanged(std::function<void()> handler) = 0;
};

/// A property of the expected type; none when it cannot be read or is of another.
template <class Value>
[[nodiscard]] std::optional<Value> read(const AudioObjects& objects, AudioObjectId object,
                                        const AudioProperty& property) {
    const auto value = objects.get(object, property);
    const auto* typed = value ? std::get_if<Value>(&*value) : nullptr;
    return typed != nullptr ? std::optional(*typed) : std::nullopt;
}

}  // namespace sordin

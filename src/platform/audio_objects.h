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

/// Identifies an audio device or a playing process. The adapter assigns it and never reuses it for a
/// different object; a device that goes and comes back keeps its identifier. 0 means none.
using AudioObjectId = std::uint32_t;

/// Represents the audio system itself.
inline constexpr AudioObjectId systemAudioObject = 1;

/// Packs up to four characters into a property code: fourCharacters("volm").
[[nodiscard]] constexpr std::uint32_t fourCharacters(std::string_view text) {
    std::uint32_t code = 0;
    for (const char character : text) {
        code = code << 8U | static_cast<unsigned char>(character);
    }
    return code;
}

/// Names one property of an object. Element 0 is the whole object, 1 and 2 are its front channels.
struct AudioProperty {
    std::uint32_t selector = 0;
    std::uint32_t scope = 0;
    std::uint32_t element = 0;

    bool operator==(const AudioProperty&) const = default;
};

namespace audio_property {

inline constexpr std::uint32_t global = fourCharacters("glob");
inline constexpr std::uint32_t output = fourCharacters("outp");

/// System: the default output device (unsigned); 0 if there is none.
inline constexpr AudioProperty defaultOutputDevice{fourCharacters("dOut"), global, 0};
/// System: the processes that play or can play (list).
inline constexpr AudioProperty processList{fourCharacters("prs#"), global, 0};
/// Process: nonzero while it sends audio to an output (unsigned).
inline constexpr AudioProperty isRunningOutput{fourCharacters("piro"), global, 0};
/// Process: its process identifier (signed).
inline constexpr AudioProperty processId{fourCharacters("ppid"), global, 0};
/// Device: 1 if muted, else 0 (unsigned).
inline constexpr AudioProperty mute{fourCharacters("mute"), output, 0};

/// Device: the volume on the scale of mixers, 0 to 1 (float). 1 is full volume; if another program last set
/// the volume above full, 1 is that volume.
[[nodiscard]] constexpr AudioProperty volume(std::uint32_t element) {
    return {fourCharacters("volm"), output, element};
}

}  // namespace audio_property

using AudioPropertyValue = std::variant<std::uint32_t, std::int32_t, float, std::vector<AudioObjectId>>;

/// The properties of a device that are stored with a pending restore, so that another run of the program can
/// finish it.
struct OutputDeviceRecord {
    std::string name;           ///< the device's persistent name
    std::string route;          ///< its connector, for example headphones; empty if it has none
    float reference = 1;        ///< the volume that the scalar 1 stands for, at least 1 (1 is full volume)
    std::vector<float> ratios;  ///< each channel's share of the loudest channel, 0 to 1

    bool operator==(const OutputDeviceRecord&) const = default;
};

/// The audio system as objects with properties. Any thread. All operations return quickly; on failure they
/// return no value or false. A device that is known but absent keeps its set of properties (a device never
/// seen so far has one: volume, element 0). They can be written, but not read.
class AudioObjects {
public:
    virtual ~AudioObjects() = default;

    [[nodiscard]] virtual std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                                const AudioProperty& property) const = 0;

    /// Writes a property. get() returns the written value until another program changes it. A write to a
    /// device that is known but absent is stored and applied when the device returns.
    virtual bool set(AudioObjectId object, const AudioProperty& property,
                     const AudioPropertyValue& value) = 0;

    [[nodiscard]] virtual bool has(AudioObjectId object, const AudioProperty& property) const = 0;
    [[nodiscard]] virtual bool settable(AudioObjectId object, const AudioProperty& property) const = 0;

    /// Waits until the audio system has processed all writes so far, and returns true; at once if no write is
    /// pending. Returns false if this takes longer than `deadline`.
    virtual bool flush(std::chrono::milliseconds deadline) = 0;

    /// Returns the properties to store with a pending restore; none if the device is unknown.
    [[nodiscard]] virtual std::optional<OutputDeviceRecord> record(AudioObjectId device) const = 0;

    /// Returns the object of the device that a record describes, present or not. Until another program
    /// changes the device's volume, its reference and balance are those of the record.
    virtual AudioObjectId adopt(const OutputDeviceRecord& record) = 0;

    /// Returns whether the device is currently present.
    [[nodiscard]] virtual bool present(AudioObjectId device) const = 0;

    /// Sets the handler for changes of the default output device or of the set of devices. It is called on
    /// any thread, after the change, and must not call back into this object. An empty handler removes the
    /// current one.
    virtual void onDevicesChanged(std::function<void()> handler) = 0;
};

/// Returns a property of the expected type; none if it cannot be read or has another type.
template <class Value>
[[nodiscard]] std::optional<Value> read(const AudioObjects& objects, AudioObjectId object,
                                        const AudioProperty& property) {
    const auto value = objects.get(object, property);
    const auto* typed = value ? std::get_if<Value>(&*value) : nullptr;
    return typed != nullptr ? std::optional(*typed) : std::nullopt;
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/server/audio_object_table.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace sordin {

/// The thread-safe audio objects of a sound server: a table under the lock of the session with the server.
/// Session needs lock(), which also guards its events, and flush(deadline), which is called without the lock.
template <class Session>
class ServerAudioObjects : public AudioObjects {
public:
    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const final {
        const auto lock = session_->lock();
        return table_.get(object, property);
    }
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) final {
        const auto lock = session_->lock();
        ++writes_;  // also for an absent device, because its write is pending
        return table_.set(object, property, value);
    }
    [[nodiscard]] bool has(AudioObjectId object, const AudioProperty& property) const final {
        const auto lock = session_->lock();
        return table_.has(object, property);
    }
    [[nodiscard]] bool settable(AudioObjectId object, const AudioProperty& property) const final {
        return has(object, property);
    }
    bool flush(std::chrono::milliseconds deadline) final {
        std::uint64_t writes = 0;
        {
            const auto lock = session_->lock();
            writes = writes_;
            if (writes == taken_) {
                return true;
            }
        }
        if (!session_->flush(deadline)) {
            return false;
        }
        const auto lock = session_->lock();
        taken_ = std::max(taken_, writes);
        return true;
    }
    [[nodiscard]] std::optional<OutputDeviceRecord> record(AudioObjectId device) const final {
        const auto lock = session_->lock();
        return table_.record(device);
    }
    AudioObjectId adopt(const OutputDeviceRecord& record) final {
        const auto lock = session_->lock();
        return table_.adopt(record);
    }
    [[nodiscard]] bool present(AudioObjectId device) const final {
        const auto lock = session_->lock();
        return table_.present(device);
    }
    void onDevicesChanged(std::function<void()> handler) final {
        const auto lock = session_->lock();
        std::swap(onDevicesChanged_, handler);  // destroys the old handler without the lock
    }

protected:
    ServerAudioObjects(std::shared_ptr<Session> session, AudioObjectTable::Write write,
                       AudioObjectTable::Clock::duration rememberingTime)
        : session_(std::move(session)),
          table_(
              [this, write = std::move(write)](std::uint32_t sink, const VolumeProps& volume) {
                  ++writes_;
                  write(sink, volume);
              },
              rememberingTime) {}

    /// Reports a change of the devices. Call it under the lock.
    void tell(bool devicesChanged) const {
        if (devicesChanged && onDevicesChanged_) {
            onDevicesChanged_();
        }
    }

    [[nodiscard]] Session& session() const { return *session_; }
    [[nodiscard]] AudioObjectTable& table() { return table_; }

private:
    const std::shared_ptr<Session> session_;
    // Guarded by the session's lock:
    std::uint64_t writes_ = 0;
    std::uint64_t taken_ = 0;  // the number of writes before the last successful flush
    AudioObjectTable table_;
    std::function<void()> onDevicesChanged_;
};

}  // namespace sordin

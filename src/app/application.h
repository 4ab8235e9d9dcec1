// SPDX-License-Identifier: MIT
#pragma once

#include "app/qt_main_queue.h"
#include "engine/sordin_engine.h"
#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/desktop/linux_process_directory.h"
#include "support/asio_serial_queue.h"
#include "volume/volume_guard.h"

#include <filesystem>
#include <memory>

namespace sordin {

/// Builds the engine and the parts that it uses on this platform, and ends them in an order that leaves
/// nothing behind. Main thread only.
class Application {
public:
    /// `program` is the path of the running program, from which data files are found. `guard` may be null.
    /// Waits up to two seconds until the audio server has listed its devices.
    Application(const std::filesystem::path& program, std::shared_ptr<VolumeGuard> guard);
    /// On return, the volume is restored and the history is on the disk.
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    [[nodiscard]] SordinEngine& engine() { return *engine_; }

private:
    void createEngine(const std::filesystem::path& program, std::shared_ptr<VolumeGuard> guard);

    // Destroyed in reverse order:
    const std::shared_ptr<LinuxAudio> audio_;
    const LinuxProcessDirectory directory_;
    const std::shared_ptr<SerialQueue> audioQueue_ = std::make_shared<AsioSerialQueue>("sordin.audio");
    const std::shared_ptr<QtMainQueue> mainQueue_ = std::make_shared<QtMainQueue>();
    std::unique_ptr<SordinEngine> engine_;
};

}  // namespace sordin

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

/// Builds everything that the engine works with on this platform, and the engine; ends all of it in the order
/// in which nothing is left behind. Lives on the main thread.
class Application {
public:
    /// `program` is the running program's own path, by which it finds what came with it. `guard` may be null.
    /// Waits up to two seconds for the audio server's list of devices.
    Application(const std::filesystem::path& program, std::shared_ptr<VolumeGuard> guard);
    /// The volume is back when it returns, and the history on the disk.
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    [[nodiscard]] SordinEngine& engine() { return *engine_; }

private:
    void createEngine(const std::filesystem::path& program, std::shared_ptr<VolumeGuard> guard);

    // In the order of their ends, last first.
    const std::shared_ptr<LinuxAudio> audio_;
    const LinuxProcessDirectory directory_;
    const std::shared_ptr<SerialQueue> audioQueue_ = std::make_shared<AsioSerialQueue>("sordin.audio");
    const std::shared_ptr<QtMainQueue> mainQueue_ = std::make_shared<QtMainQueue>();
    std::unique_ptr<SordinEngine> engine_;
};

}  // namespace sordin

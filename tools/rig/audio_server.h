// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"
#include "rig/temporary_folder.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sordin {

struct AudioServerOptions {
    std::vector<std::string> sinks{"test-sink-A", "test-sink-B"};  ///< null sinks, the preferred one first
    bool monitorVolumes = false;  ///< PipeWire: what monitors of these sinks deliver follows their volume
    bool pulse = true;            ///< PipeWire: the PulseAudio server too; without sinks it makes "auto_null"
};

/// An audio server of a test's own, without D-Bus and without hardware, of one kind or another. The
/// constructor points the whole process to it by environment variables, so make it before there are threads.
/// Errors are std::runtime_error.
class AudioServer {
public:
    virtual ~AudioServer() = default;
    AudioServer(const AudioServer&) = delete;
    AudioServer& operator=(const AudioServer&) = delete;

    /// Returns when the server is ready. May be called again after stop() and the kills: what has been saved
    /// of volumes is then still there.
    virtual void start() = 0;
    /// Ends all in order.
    virtual void stop() = 0;
    /// Ends all at once; nothing is said to clients.
    virtual void kill() = 0;
    /// It hangs: it answers nothing, but its connections stay. Until it is told to go on.
    virtual void hang() = 0;
    virtual void goOn() = 0;

    /// The default sink as the server has decided; empty if there is none.
    [[nodiscard]] virtual std::string defaultSink() const = 0;
    /// Makes it the user's choice and returns when the server has followed.
    virtual void setDefaultSink(const std::string& sink) = 0;

    /// Per channel and linear, of the active route if the sink belongs to a card; empty if there is no such
    /// sink.
    [[nodiscard]] virtual std::vector<float> volume(const std::string& sink) const = 0;
    [[nodiscard]] virtual bool muted(const std::string& sink) const = 0;
    /// "running", "idle", "suspended", ...; empty if there is no such sink.
    [[nodiscard]] virtual std::string sinkState(const std::string& sink) const = 0;
    /// A null sink that is preferred to none of the first ones. Returns when it can be used.
    virtual void createSink(const std::string& sink) = 0;
    virtual void destroySink(const std::string& sink) = 0;

    /// As a mixer of the desktop does it (which saves it): percents of the cubic scale, one or one per
    /// channel. Needs a PulseAudio server. May return before volume() follows.
    void setVolume(const std::string& sink, const std::vector<int>& percents) const;
    void setMute(const std::string& sink, bool mute) const;

    /// "state" in it has what a session manager has saved, "log" what the processes wrote.
    [[nodiscard]] const TemporaryFolder& folder() const { return *folder_; }

protected:
    explicit AudioServer(AudioServerOptions options);
    /// In the environment of another.
    AudioServer(AudioServerOptions options, const AudioServer& beside);

    [[nodiscard]] const AudioServerOptions& options() const { return options_; }
    /// Runs a command and expects it to succeed.
    void run(const std::vector<std::string>& arguments) const;
    /// Waits for `condition` while all of `processes` run; says else that there is no `what`.
    void wait(const std::string& what, const std::vector<ChildProcess*>& processes,
              const std::function<bool()>& condition) const;

private:
    const AudioServerOptions options_;
    const std::shared_ptr<const TemporaryFolder> folder_;
};

}  // namespace sordin

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
    bool monitorVolumes = false;  ///< PipeWire: the monitors of these sinks follow their volume
    /// PipeWire: also start the PulseAudio server, which creates "auto_null" if there are no sinks.
    bool pulse = true;
};

/// A private audio server for a test, without D-Bus and hardware. The constructor directs the whole process
/// to it by environment variables, so create it before any thread. Errors are std::runtime_error.
class AudioServer {
public:
    virtual ~AudioServer() = default;
    AudioServer(const AudioServer&) = delete;
    AudioServer& operator=(const AudioServer&) = delete;

    /// Starts the server and waits until it is ready. May be called again after stop() or kill(); stored
    /// volumes persist.
    virtual void start() = 0;
    /// Shuts the server down.
    virtual void stop() = 0;
    /// Kills the server without notice to its clients.
    virtual void kill() = 0;
    /// Suspends the server: it does not respond, but its connections remain. goOn() resumes it.
    virtual void hang() = 0;
    virtual void goOn() = 0;

    /// Returns the server's default sink; empty if there is none.
    [[nodiscard]] virtual std::string defaultSink() const = 0;
    /// Sets the user's choice and waits until the server has applied it.
    virtual void setDefaultSink(const std::string& sink) = 0;

    /// Returns the linear volume per channel, of the active route if the sink belongs to a card; empty if the
    /// sink does not exist.
    [[nodiscard]] virtual std::vector<float> volume(const std::string& sink) const = 0;
    [[nodiscard]] virtual bool muted(const std::string& sink) const = 0;
    /// Returns "running", "idle", "suspended", ...; empty if the sink does not exist.
    [[nodiscard]] virtual std::string sinkState(const std::string& sink) const = 0;
    /// Creates a null sink with a lower priority than the initial ones, and waits until it is usable.
    virtual void createSink(const std::string& sink) = 0;
    virtual void destroySink(const std::string& sink) = 0;

    /// Sets the volume like a desktop mixer, which also stores it: percent on the cubic scale, one value or
    /// one per channel. Needs a PulseAudio server. May return before volume() shows the change.
    void setVolume(const std::string& sink, const std::vector<int>& percents) const;
    void setMute(const std::string& sink, bool mute) const;

    /// Its folder "state" contains the data of the session manager, "log" the output of the processes.
    [[nodiscard]] const TemporaryFolder& folder() const { return *folder_; }

protected:
    explicit AudioServer(AudioServerOptions options);
    /// Shares the folder and environment of another server.
    AudioServer(AudioServerOptions options, const AudioServer& beside);

    [[nodiscard]] const AudioServerOptions& options() const { return options_; }
    /// Runs a command; throws if it fails.
    void run(const std::vector<std::string>& arguments) const;
    /// Waits for `condition` while all of `processes` run. On failure, throws an error that names `what` and
    /// contains the logs.
    void wait(const std::string& what, const std::vector<ChildProcess*>& processes,
              const std::function<bool()>& condition) const;

private:
    const AudioServerOptions options_;
    const std::shared_ptr<const TemporaryFolder> folder_;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"
#include "rig/temporary_folder.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sordin {

struct AudioServerOptions {
    std::vector<std::string> sinks{"test-sink-A", "test-sink-B"};  ///< null sinks, the preferred one first
    bool monitorVolumes = false;  ///< what monitors of these sinks deliver follows their volume
    bool pulse = true;            ///< the PulseAudio server too; without sinks it makes "auto_null"
};

/// An audio server of a test's own: PipeWire, its session manager and the PulseAudio server, without D-Bus
/// and without hardware. The constructor points the whole process to it by environment variables, so make it
/// before there are threads. Errors are std::runtime_error. Stops with the object.
class PrivateAudioServer {
public:
    explicit PrivateAudioServer(AudioServerOptions options = {});
    ~PrivateAudioServer();
    PrivateAudioServer(const PrivateAudioServer&) = delete;
    PrivateAudioServer& operator=(const PrivateAudioServer&) = delete;

    /// Returns when the server is ready. May be called again after stop() and the kills: what the session
    /// manager has saved is then still there.
    void start();
    /// Ends all in order.
    void stop();
    /// Ends all at once; nothing is said to clients.
    void kill();
    /// Ends PipeWire alone; its session manager and the PulseAudio server notice.
    void killServer();
    /// It hangs: it answers nothing, but its connections stay. Until it is told to go on.
    void hang();
    void goOn();

    /// The default sink as the session manager has decided; empty if there is none.
    [[nodiscard]] std::string defaultSink() const;
    /// Makes it the user's choice and returns when the session manager has followed.
    void setDefaultSink(const std::string& sink);

    /// Per channel and linear, of the active route if the sink belongs to a card; empty if there is no such
    /// sink.
    [[nodiscard]] std::vector<float> volume(const std::string& sink) const;
    [[nodiscard]] bool muted(const std::string& sink) const;
    /// As a mixer of the desktop does it (which saves it): percents of the cubic scale, one or one per
    /// channel. Needs the PulseAudio server. May return before volume() follows.
    void setVolume(const std::string& sink, const std::vector<int>& percents);
    void setMute(const std::string& sink, bool mute);

    /// "running", "idle", "suspended", ...; empty if no node has this name.
    [[nodiscard]] std::string nodeState(const std::string& node) const;
    /// A null sink that is preferred to none of the first ones. Returns when it can be used.
    void createSink(const std::string& sink);
    void destroySink(const std::string& sink);

    /// The id of the node; nothing if there is none of this name.
    [[nodiscard]] std::optional<int> nodeId(const std::string& node) const;
    /// "state" in it has what the session manager has saved, "log" what the processes wrote.
    [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

private:
    void writeConfiguration();
    [[nodiscard]] std::string sinkProperties(const std::string& sink, int priority) const;
    [[nodiscard]] bool ready() const;
    [[nodiscard]] bool usable(const std::string& sink) const;
    [[nodiscard]] std::string logs() const;
    void run(const std::vector<std::string>& arguments) const;
    void wait(const std::string& what, const std::function<bool()>& condition);

    AudioServerOptions options_;
    TemporaryFolder folder_;
    std::optional<ChildProcess> pipewire_;
    std::optional<ChildProcess> sessionManager_;
    std::optional<ChildProcess> pulse_;
};

}  // namespace sordin

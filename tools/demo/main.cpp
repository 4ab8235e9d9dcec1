// SPDX-License-Identifier: MIT
// sordin-demo: shows Sordin at work without a desktop. A player plays a broadcast to a private audio server,
// and the real program listens; events are printed as they happen. With --windows, the program shows its
// windows on the current display (tools/demo/make-pictures).
#include "demo/commentary.h"
#include "demo/interruption.h"
#include "platform/linux/pipewire/audio_objects.h"
#include "rig/private_audio_server.h"
#include "rig/private_bus.h"
#include "volume/output_device.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace sordin;
using namespace std::chrono_literals;

constexpr int failed = 1;
constexpr int misused = 2;
constexpr auto deadline = 10s;

/// Thrown after a signal. Not an error: the process then ends by the signal.
struct Interrupted {};

/// Waits for a condition; returns false after the deadline. Throws Interrupted.
template <class Condition>
bool waitFor(Condition condition) {
    const bool so = waitUntil([&] { return demo::Interruption::came() || condition(); }, deadline);
    if (demo::Interruption::came()) {
        throw Interrupted();
    }
    return so;
}

/// Returns whether a process plays.
bool plays(const AudioObjects& objects, pid_t program) {
    const auto processes =
        read<std::vector<AudioObjectId>>(objects, systemAudioObject, audio_property::processList);
    for (const AudioObjectId process : processes.value_or(std::vector<AudioObjectId>())) {
        if (read<std::int32_t>(objects, process, audio_property::processId) == program) {
            return read<std::uint32_t>(objects, process, audio_property::isRunningOutput).value_or(0) != 0;
        }
    }
    return false;
}

/// Reads the program's confidence, which changes twice a second.
class ConfidenceReader {
public:
    explicit ConfidenceReader(const std::string& busAddress)
        : bus_(QDBusConnection::connectToBus(QString::fromStdString(busAddress),
                                             QStringLiteral("sordin-demo"))) {}

    [[nodiscard]] std::optional<float> get() {
        constexpr auto interval = 250ms;
        constexpr int patience = 250;  // milliseconds
        const auto now = std::chrono::steady_clock::now();
        if (now - asked_ >= interval) {
            asked_ = now;
            auto question = QDBusMessage::createMethodCall(
                QStringLiteral("org.sordin.Sordin"), QStringLiteral("/org/sordin/Sordin"),
                QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
            question << QStringLiteral("org.sordin.Sordin1") << QStringLiteral("Confidence");
            const QDBusMessage answer = bus_.call(question, QDBus::Block, patience);
            const auto value = answer.arguments().value(0).value<QDBusVariant>().variant();
            confidence_ = value.isValid() ? std::optional(value.toFloat()) : std::nullopt;
        }
        return confidence_;
    }

private:
    QDBusConnection bus_;
    std::chrono::steady_clock::time_point asked_{};
    std::optional<float> confidence_;
};

/// Prints what the program writes to its log from now on.
class LogReader {
public:
    explicit LogReader(const std::filesystem::path& log) : log_(log, std::ios::ate) {}

    void follow(double time, demo::Commentary& commentary) {
        log_.clear();  // clears the end-of-file state, because the log may have grown
        for (char character = 0; log_.get(character);) {
            if (character != '\n') {
                line_ += character;
                continue;
            }
            const std::string line = std::exchange(line_, {});
            // These two accompany every ad, whose own lines contain more.
            if (line.rfind("status: listening", 0) != 0 && line.rfind("status: ad in progress", 0) != 0) {
                commentary.note(time, "Sordin: " + line);
            }
        }
    }

private:
    std::ifstream log_;
    std::string line_;  // the incomplete last line
};

/// Prints each fade of the volume once it is complete.
class VolumeReader {
public:
    /// Returns whether the volume is down.
    bool follow(double time, float volume, demo::Commentary& commentary) {
        constexpr double stillness = 0.1;  // seconds; longer than the time between two steps of a fade
        if (!settled_) {
            settled_ = last_ = volume;
        }
        if (volume != std::exchange(last_, volume)) {
            if (!std::exchange(moving_, true)) {
                began_ = time;
            }
            moved_ = time;
        } else if (moving_ && time - moved_ > stillness) {
            moving_ = false;
            std::array<char, 64> text{};
            std::snprintf(text.data(), text.size(), "Volume: to %.0f %% within %.1f s",
                          100 * static_cast<double>(volume), moved_ - began_);
            commentary.note(began_, text.data());
            settled_ = std::max(*settled_, volume);
        }
        return volume < *settled_ / 2;
    }

private:
    std::optional<float> settled_;  // the highest volume at rest
    float last_ = 0;
    double moved_ = 0;  // time of the last change
    double began_ = 0;
    bool moving_ = false;
};

void demonstrate(demo::Rules rules, const std::string& program, const std::string& replay,
                 const std::string& recording, const std::string& labels, bool windows) {
    const auto broadcast = demo::readBroadcast(recording, labels);
    demo::Commentary commentary(broadcast, rules);
    commentary.introduce("Sordin listens as it plays on a private audio server, so your loudspeakers stay "
                         "silent.\nPress Ctrl+C to quit.");
    const char* display = windows ? std::getenv("DISPLAY") : nullptr;
    const std::string shownOn = display != nullptr ? display : "";  // the server clears the environment
    PrivateAudioServer server({.sinks = {"Loudspeakers"}, .pulse = false});
    server.start();
    const PrivateBus bus;

    // Skips the first-run guide. Settings and history are discarded with the demonstration.
    const std::filesystem::path home = server.folder() / "home";
    std::filesystem::create_directories(home / "config/Sordin");
    writeText(home / "config/Sordin/defaults.json", std::string(R"({"onboarded": true, "tunedDetection": )") +
                                                        (rules == demo::Rules::tuned ? "true}" : "false}"));
    const std::filesystem::path log = home / "log";
    writeText(log, "");
    ChildProcess sordin({program},
                        {.environment = {"XDG_CONFIG_HOME=" + (home / "config").string(),
                                         "XDG_DATA_HOME=" + (home / "data").string(), "DISPLAY=" + shownOn,
                                         "WAYLAND_DISPLAY=", "QT_LOGGING_RULES=sordin.*.info=true",
                                         "QT_FORCE_STDERR_LOGGING=1", "QT_MESSAGE_PATTERN=%{message}"},
                         .log = log});
    const auto listens = [&] { return contentsOf(log).find("status: listening") != std::string::npos; };
    if (!waitFor([&] { return listens() || !sordin.running(); }) || !listens()) {
        throw std::runtime_error("Sordin failed to start listening: " + contentsOf(log));
    }

    const auto session = std::make_shared<pipewire::Session>();
    const pipewire::PipeWireAudioObjects objects(session);
    ConfidenceReader confidence(bus.address());
    LogReader logReader(log);
    VolumeReader volumeReader;
    ChildProcess player({"pw-play", recording}, {.log = server.folder() / "player"});
    if (!waitFor([&] { return plays(objects, player.pid()) || !player.running(); }) || !player.running()) {
        throw std::runtime_error("the player failed to play: " + contentsOf(server.folder() / "player"));
    }
    const auto start = std::chrono::steady_clock::now();
    while (player.running() && !demo::Interruption::came()) {
        const double time = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        demo::Commentary::State state{confidence.get(), std::nullopt};
        if (const auto device = defaultOutputDevice(objects)) {
            state.volume = outputVolume(objects, *device);
        }
        state.faded = state.volume && volumeReader.follow(time, *state.volume, commentary);
        commentary.at(time, state);
        logReader.follow(time, commentary);
        std::this_thread::sleep_for(10ms);
    }
    sordin.kill(SIGTERM);
    const auto status = sordin.wait(deadline);  // also after a signal, so that it is not killed
    if (demo::Interruption::came()) {
        throw Interrupted();
    }
    const auto other = demo::replayed(replay, otherThan(rules), recording, broadcast);
    if (!other) {
        throw Interrupted();
    }
    commentary.summarize(*other);
    if (status != 0) {
        throw std::runtime_error("Sordin did not exit cleanly: " + contentsOf(log));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bool windows = argc > 1 && std::string_view(argv[argc - 1]) == "--windows";
    const auto arguments = demo::readArguments(windows ? argc - 1 : argc, argv, 4);
    if (!arguments) {
        std::fprintf(stderr,
                     "usage: sordin-demo [--tuned] SORDIN SORDIN-REPLAY BROADCAST LABELS [--windows]\n");
        return misused;
    }
    const demo::Interruption interruption;
    setenv("LC_ALL", "C.UTF-8", 1);  // also for child programs: all output is in English
    const QCoreApplication qt(argc, argv);
    try {
        const auto& [rules, rest] = *arguments;
        demonstrate(rules, rest[0], rest[1], rest[2], rest[3], windows);
    } catch (const Interrupted&) {
        return failed;
    } catch (const std::exception& error) {
        // After a signal, errors are expected, because the signal may also have ended the audio server.
        if (!demo::Interruption::came()) {
            std::fprintf(stderr, "sordin-demo: %s\n", error.what());
        }
        return failed;
    }
    return 0;
}

// SPDX-License-Identifier: MIT
// sordin-audio: captures and fades the real audio system by command, for developers and tests.
#include "audio/listener.h"
#include "audio/options.h"
#include "audio/printer.h"
#include "audio/tracing_audio_objects.h"
#include "platform/linux/audio/linux_audio.h"
#include "platform/linux/desktop/linux_process_directory.h"
#include "platform/linux/storage/file_user_defaults.h"
#include "platform/loopback_capture.h"
#include "support/asio_serial_queue.h"
#include "support/numbers.h"
#include "volume/volume_controller.h"

#include <array>
#include <csignal>
#include <exception>
#include <iostream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

using namespace sordin;
using namespace sordin::audio;
using namespace std::chrono_literals;

constexpr auto duckSeconds = 0.15;
constexpr auto restoreSeconds = 0.6;
constexpr auto listingDeadline = 2s;
constexpr auto flushDeadline = 500ms;

/// Returns a descriptor for the termination signals, which are blocked in all threads that start later.
int endingSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

/// The parts of the application without the detector and the engine.
class Program {
public:
    Program(const Options& options, Printer& printer)
        : printer_(printer),
          objects_(std::make_shared<TracingAudioObjects>(audio_->objects(), printer)),
          defaults_(std::make_shared<FileUserDefaults>(
              options.folder,
              std::make_shared<AsioSerialQueue>("sordin.defaults", QualityOfService::utility))),
          volume_(std::make_shared<VolumeController>(
              std::make_shared<AsioSerialQueue>("sordin.volume", QualityOfService::userInteractive), objects_,
              defaults_)),
          listener_(std::make_unique<LoopbackCapture>(std::make_shared<AsioSerialQueue>("sordin.capture"),
                                                      audio_->loopbackSource()),
                    objects_, directory_, printer) {
        audio_->waitUntilKnown(listingDeadline);
        volume_->recoverFromCrash();
        listener_.start();
    }

    /// Executes a command. Returns false after the last one.
    bool obey(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        words >> command;
        const auto number = [&words](double otherwise) {
            std::string word;
            words >> word;
            return parseNumber(word).value_or(otherwise);
        };
        if (command == "duck") {
            const auto fraction = static_cast<float>(number(0));
            volume_->duck(fraction, number(duckSeconds));
        } else if (command == "restore") {
            volume_->restore(number(restoreSeconds));
        } else if (command == "restore-now") {
            volume_->restoreImmediately();
            printer_.state("restored");
        } else if (command == "start") {
            listener_.start();
        } else if (command == "stop") {
            listener_.stop();
        } else if (!command.empty() && command != "quit") {
            printer_.state("unknown command", command);
        }
        return command != "quit";
    }

    void end() {
        volume_->restoreImmediately();
        if (!objects_->flush(flushDeadline)) {
            printer_.state("flush", "the audio server has not confirmed the volume");
        }
        defaults_->flush();
        printer_.state("end");
    }

private:
    Printer& printer_;
    const std::shared_ptr<LinuxAudio> audio_ = std::make_shared<LinuxAudio>();
    const LinuxProcessDirectory directory_{DesktopEntries::ofUser(), "/proc", [audio = audio_](auto pid) {
                                               return audio->portalApplication(pid);
                                           }};
    const std::shared_ptr<AudioObjects> objects_;
    const std::shared_ptr<FileUserDefaults> defaults_;
    const std::shared_ptr<VolumeController> volume_;
    Listener listener_;
};

/// Executes commands until the end of input, a termination signal or the end of the time.
void run(Program& program, int signals, std::optional<double> seconds) {
    const auto start = std::chrono::steady_clock::now();
    std::string input;
    while (true) {
        int left = -1;
        if (seconds) {
            const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
            constexpr double longest = 86'400'000;  // a day in milliseconds, within the range of poll()
            left = static_cast<int>(std::clamp((*seconds - passed.count()) * 1000, 0.0, longest));
        }
        std::array<pollfd, 2> sources{{{STDIN_FILENO, POLLIN, 0}, {signals, POLLIN, 0}}};
        const int ready = poll(sources.data(), sources.size(), left);
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0 || sources[1].revents != 0) {
            return;
        }
        std::array<char, 256> text{};
        const auto got = read(STDIN_FILENO, text.data(), text.size());
        if (got <= 0) {
            return;
        }
        input.append(text.data(), static_cast<std::size_t>(got));
        for (auto end = input.find('\n'); end != std::string::npos; end = input.find('\n')) {
            if (!program.obey(input.substr(0, end))) {
                return;
            }
            input.erase(0, end + 1);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const Options options = parseOptions({argv, argv + argc});
        if (options.help) {
            std::cout << helpText();
            return 0;
        }
        const int signals = endingSignals();
        std::signal(SIGPIPE, SIG_IGN);  // the audio server may close the connection during a write
        Printer printer(options.json);
        Program program(options, printer);
        run(program, signals, options.seconds);
        program.end();
        return 0;
    } catch (const std::invalid_argument& error) {
        std::cerr << "sordin-audio: " << error.what() << " (see --help)\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "sordin-audio: " << error.what() << '\n';
        return 1;
    }
}

// SPDX-License-Identifier: MIT
#include "platform/linux/speech/decoder_process.h"

#include "platform/linux/speech/decoder_messages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <spawn.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace sordin {

namespace {

void waitAtMost(std::chrono::seconds patience, int socket) {
    const timeval time{patience.count(), 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
}

/// Returns the error that a process reported. A broken process may send text that cannot be displayed.
SpeechDecoderError failure(const ReceivedMessage& message) {
    constexpr std::size_t longest = 200;
    const std::string& why = message.content;
    const bool legible = message.kind == DecoderMessage::failed && !why.empty() && why.size() <= longest &&
                         std::all_of(why.begin(), why.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return legible ? SpeechDecoderError(why)
                   : SpeechDecoderError("the speech decoder sent an invalid message");
}

/// Starts a program whose standard input is `socket`. Returns its process identifier, or -1.
pid_t spawned(std::vector<std::string> command, int socket) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
    // The helper must not inherit this program's signal mask.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

}  // namespace

void DecoderInterruption::interrupt() {
    const std::scoped_lock lock(lock_);
    interrupted_ = true;
    if (socket_ >= 0) {
        shutdown(socket_, SHUT_RDWR);
    }
}

bool DecoderInterruption::watch(int socket) {
    const std::scoped_lock lock(lock_);
    socket_ = socket;
    return !interrupted_;
}

void DecoderInterruption::leave() {
    const std::scoped_lock lock(lock_);
    socket_ = -1;
}

DecoderProcess::DecoderProcess(const std::filesystem::path& helper, const SpeechModelFiles& files,
                               std::shared_ptr<DecoderInterruption> interruption, DecoderPatience patience)
    : interruption_(std::move(interruption)) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        throw SpeechDecoderError("cannot create a socket for the speech decoder");
    }
    socket_ = FileDescriptor(ends[0]);
    FileDescriptor theirs(ends[1]);
    if (!interruption_->watch(socket_.get())) {
        close();
        throw SpeechDecoderError("the speech decoder was interrupted");
    }
    waitAtMost(patience.loading, socket_.get());
    pid_ = spawned({helper.string(), files.acousticModel.string(), files.generalLanguage.string(),
                    files.dictionary.string(), files.advertisingLanguage.string(), files.mask.string()},
                   theirs.get());
    theirs.close();
    const auto answer = pid_ < 0 ? std::nullopt : receiveMessage(socket_.get());
    if (!answer || answer->kind != DecoderMessage::ready) {
        close();
        throw answer ? failure(*answer) : SpeechDecoderError("the speech decoder failed to start");
    }
    waitAtMost(patience.answers, socket_.get());
}

DecoderProcess::~DecoderProcess() {
    close();
}

void DecoderProcess::close() {
    interruption_->leave();
    socket_.close();
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

void DecoderProcess::begin() {
    if (!sendMessage(socket_.get(), DecoderMessage::begin)) {
        throw SpeechDecoderError("the speech decoder ended unexpectedly");
    }
}

void DecoderProcess::process(std::span<const std::int16_t> samples) {
    const std::string_view bytes(reinterpret_cast<const char*>(samples.data()), samples.size_bytes());
    if (!sendMessage(socket_.get(), DecoderMessage::samples, bytes)) {
        throw SpeechDecoderError("the speech decoder ended unexpectedly");
    }
}

void DecoderProcess::end() {
    // A failure shows in words().
    static_cast<void>(sendMessage(socket_.get(), DecoderMessage::end));
}

std::vector<HeardWord> DecoderProcess::words() {
    if (sendMessage(socket_.get(), DecoderMessage::ask)) {
        const auto answer = receiveMessage(socket_.get());
        if (answer && answer->kind == DecoderMessage::words) {
            if (auto words = wordsIn(answer->content)) {
                return *std::move(words);
            }
        }
        if (answer) {
            throw failure(*answer);
        }
    }
    throw SpeechDecoderError("the speech decoder ended unexpectedly");
}

}  // namespace sordin

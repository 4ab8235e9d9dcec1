// SPDX-License-Identifier: MIT
// A recognizer and a decoder that do what the test sets and record their calls.
#pragma once

#include "platform/speech_decoder.h"
#include "platform/speech_recogniser.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace sordin {

struct FakeSpeechRecogniser final : SpeechRecogniser {
    struct Session final : SpeechSession {
        TextHandler say;
        ErrorHandler fail;
        std::size_t frames = 0;
        int ends = 0;
        int finishes = 0;

        void append(const PcmBuffer& buffer) override { frames += buffer.frameLength(); }
        void endAudio() override { ++ends; }
        void finish() override { ++finishes; }
    };

    bool permitted = true;
    bool askable = true;
    bool usable = true;
    bool local = true;
    bool starting = true;
    std::string saidAtOnce;  // reported before start() returns
    int rests = 0;
    std::vector<std::shared_ptr<Session>> sessions;

    [[nodiscard]] bool authorised() const override { return permitted; }
    [[nodiscard]] bool canRequestAuthorisation() const override { return askable; }
    void requestAuthorisation(std::function<void()> done) override { done(); }
    [[nodiscard]] bool available() const override { return usable; }
    [[nodiscard]] bool supportsOnDevice() const override { return local; }
    [[nodiscard]] std::shared_ptr<SpeechSession> start(TextHandler onText, ErrorHandler onError) override {
        if (!starting) {
            onError("does not start");
            return nullptr;
        }
        sessions.push_back(std::make_shared<Session>());
        sessions.back()->say = std::move(onText);
        sessions.back()->fail = std::move(onError);
        if (!saidAtOnce.empty()) {
            sessions.back()->say(saidAtOnce);
        }
        return sessions.back();
    }
    void drain() override {}
    void rest() override { ++rests; }
};

/// "Recognizes" the number of half seconds of audio that it received.
class FakeSpeechDecoder final : public SpeechDecoder {
public:
    /// Shared with the test; outlives the decoder.
    struct Script {
        bool loads = true;
        bool begins = true;
        bool works = true;
        int loaded = 0;
        int alive = 0;
        int begun = 0;
        int ended = 0;
        std::vector<std::int16_t> heard;  // samples since the last begin()
        std::function<void()> onProcess;
    };

    explicit FakeSpeechDecoder(std::shared_ptr<Script> script) : script_(std::move(script)) {
        if (!script_->loads) {
            throw SpeechDecoderError("does not load");
        }
        ++script_->loaded;
        ++script_->alive;
    }
    ~FakeSpeechDecoder() override { --script_->alive; }
    FakeSpeechDecoder(const FakeSpeechDecoder&) = delete;
    FakeSpeechDecoder& operator=(const FakeSpeechDecoder&) = delete;

    [[nodiscard]] unsigned sampleRate() const override { return 16'000; }
    void begin() override {
        require(script_->begins);
        ++script_->begun;
        script_->heard.clear();
    }
    void process(std::span<const std::int16_t> samples) override {
        require(script_->works);
        script_->heard.insert(script_->heard.end(), samples.begin(), samples.end());
        if (script_->onProcess) {
            script_->onProcess();
        }
    }
    void end() override { ++script_->ended; }
    [[nodiscard]] std::vector<HeardWord> words() override {
        require(script_->works);
        return {{std::to_string(script_->heard.size() / 8000), 0.3, -4}};
    }

private:
    static void require(bool works) {
        if (!works) {
            throw SpeechDecoderError("died");
        }
    }

    const std::shared_ptr<Script> script_;
};

}  // namespace sordin

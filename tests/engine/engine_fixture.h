// SPDX-License-Identifier: MIT
#pragma once

#include "detection/keyword_transcript_scorer.h"
#include "engine/sordin_engine.h"
#include "fakes/detection_fakes.h"
#include "fakes/fake_application_streams.h"
#include "fakes/fake_audio_objects.h"
#include "fakes/fake_capture.h"
#include "fakes/fake_process_directory.h"
#include "fakes/fake_speech.h"
#include "fakes/fake_user_defaults.h"
#include "rig/temporary_folder.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace sordin {

struct FakePermissions final : Permissions {
    bool granted = true;
    bool grantedWhenAsked = false;
    std::vector<std::string> opened;

    [[nodiscard]] bool screenCapturePreflight() const override { return granted; }
    void requestScreenCapture() override { granted = granted || grantedWhenAsked; }
    bool hasSettings = true;
    bool openSettings(const std::string& anchor) override {
        opened.push_back(anchor);
        return hasSettings;
    }
};

/// The engine with the real pipeline, volume controller, transcriber and history file. The platform parts are
/// fakes, the test controls the clocks, and the scorer's confidence decides what is an ad.
class EngineTest : public testing::Test {
protected:
    using Kind = EngineStatus::Kind;
    static constexpr AudioObjectId speakers = 10;
    static constexpr float fullVolume = 0.8F;

    EngineTest() {
        objects->devices[speakers] = {"speakers", {{0, fullVolume}}, {}};
        objects->defaultDevice = speakers;
        objects->processes.push_back({20, {1, 4711}});
        directory.applications[4711] = {"", "Radio"};
        defaults->set("onboarded", true);
    }

    void create() {
        transcriber = std::make_shared<OnDeviceTranscriber>(recogniser);
        pipeline = std::make_shared<DetectionPipeline>(
            DetectionPipeline::Parts{audioQueue, clock, std::make_shared<FakeClassifier>(), transcriber,
                                     std::make_shared<KeywordTranscriptScorer>(), scorer});
        volume = std::make_shared<VolumeController>(volumeQueue, objects, defaults);
        engine = std::make_unique<SordinEngine>(
            SordinEngine::Parts{mainQueue, defaults, permissions, transcriber, pipeline, capture, streams,
                                volume, std::make_shared<AudioProcessInspector>(*objects, directory),
                                std::make_shared<AdHistoryFile>(folder / "Sordin/history.json", historyQueue),
                                clock, [this] { return wallClock; }});
        settle();
    }

    using Failure = SystemAudioCapture::Failure;
    using Error = SystemAudioCapture::Error;

    /// Completes the start of the capture, with an error if given.
    void started(const std::optional<Failure>& failure = std::nullopt) {
        capture->completion(failure);
        settle();
    }
    void stopped(const std::optional<Failure>& failure = std::nullopt) {
        capture->stopped(failure);
        settle();
    }
    void ready() {
        capture->ready();
        settle();
    }

    /// Creates the engine and completes the start of its capture.
    void listen() {
        create();
        started();
        ASSERT_EQ(engine->status(), Kind::listening);
    }

    /// Runs all posted work on all queues.
    void settle() {
        constexpr int rounds = 4;  // more than the longest chain of queues
        for (int i = 0; i < rounds; ++i) {
            for (const auto& queue : {audioQueue, volumeQueue, mainQueue, historyQueue}) {
                queue->runPending();
            }
        }
    }

    /// Advances all clocks.
    void pass(double seconds) {
        constexpr double step = 0.1;
        for (double done = 0; done < seconds - step / 2; done += step) {
            clock->advance(step);
            wallClock += step;
            for (const auto& queue : {audioQueue, volumeQueue, mainQueue, historyQueue}) {
                queue->advance(std::chrono::milliseconds(100));
            }
            settle();
        }
    }

    /// Plays `hops` hops of half a second, each with the given ad confidence.
    void hear(int hops, float confidence) {
        scorer->confidence = confidence;
        for (int i = 0; i < hops; ++i) {
            pass(0.5);
            constexpr std::int64_t frames = 8000;
            const std::vector<std::byte> bytes(frames * 2, std::byte{0x0C});  // each sample 0.09
            capture->handler({StreamDescription{16'000, 1, SampleType::int16, true}, frames, bytes});
            settle();
        }
    }

    void hearAdBegin() {
        hear(2, 0.9F);
        ASSERT_TRUE(engine->adActive());
    }
    /// Plays long enough for the detector to end the ad.
    void hearAdEnd() {
        for (int i = 0; i < 60 && engine->adActive(); ++i) {
            hear(1, 0);
        }
        ASSERT_FALSE(engine->adActive());
    }

    [[nodiscard]] float volumeNow() const { return objects->devices.at(speakers).volumes.at(0); }

    TemporaryFolder folder;
    std::shared_ptr<ManualSerialQueue> mainQueue = std::make_shared<ManualSerialQueue>("main");
    std::shared_ptr<ManualSerialQueue> audioQueue = std::make_shared<ManualSerialQueue>("sordin.audio");
    std::shared_ptr<ManualSerialQueue> volumeQueue = std::make_shared<ManualSerialQueue>("sordin.volume");
    std::shared_ptr<ManualSerialQueue> historyQueue = std::make_shared<ManualSerialQueue>("sordin.history");
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>(1e9);
    ReferenceDate wallClock = 8e8;
    std::shared_ptr<FakeUserDefaults> defaults = std::make_shared<FakeUserDefaults>();
    std::shared_ptr<FakePermissions> permissions = std::make_shared<FakePermissions>();
    std::shared_ptr<FakeAudioObjects> objects = std::make_shared<FakeAudioObjects>();
    FakeProcessDirectory directory;
    std::shared_ptr<FakeSpeechRecogniser> recogniser = std::make_shared<FakeSpeechRecogniser>();
    std::shared_ptr<FakeScorer> scorer = std::make_shared<FakeScorer>();
    std::shared_ptr<FakeCapture> capture = std::make_shared<FakeCapture>();
    std::shared_ptr<FakeApplicationStreams> streams = std::make_shared<FakeApplicationStreams>();
    std::shared_ptr<OnDeviceTranscriber> transcriber;
    std::shared_ptr<DetectionPipeline> pipeline;
    std::shared_ptr<VolumeController> volume;
    std::unique_ptr<SordinEngine> engine;
};

}  // namespace sordin

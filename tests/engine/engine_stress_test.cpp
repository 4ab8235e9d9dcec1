// SPDX-License-Identifier: MIT
// Runs random operations on the engine's real threads while ads come and go, for the thread sanitizer.
#include "detection/keyword_transcript_scorer.h"
#include "engine/sordin_engine.h"
#include "engine_fixture.h"
#include "platform/loopback_capture.h"
#include "random_seed.h"
#include "rig/forwarding_audio_objects.h"
#include "rig/wait_until.h"
#include "support/asio_serial_queue.h"
#include "support/system_clock.h"

#include <mutex>
#include <thread>

namespace sordin {
namespace {

using namespace std::chrono_literals;

/// Serializes access to the fakes, which are not thread-safe.
class LockedObjects final : public ForwardingAudioObjects {
public:
    using ForwardingAudioObjects::ForwardingAudioObjects;
    [[nodiscard]] std::optional<AudioPropertyValue> get(AudioObjectId object,
                                                        const AudioProperty& property) const override {
        const std::scoped_lock held(lock_);
        return ForwardingAudioObjects::get(object, property);
    }
    bool set(AudioObjectId object, const AudioProperty& property, const AudioPropertyValue& value) override {
        const std::scoped_lock held(lock_);
        return ForwardingAudioObjects::set(object, property, value);
    }

private:
    mutable std::mutex lock_;
};

class LockedDefaults final : public UserDefaults {
public:
    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const override {
        const std::scoped_lock held(lock_);
        return defaults_.boolean(key);
    }
    [[nodiscard]] std::optional<double> number(const std::string& key) const override {
        const std::scoped_lock held(lock_);
        return defaults_.number(key);
    }
    [[nodiscard]] std::optional<std::string> text(const std::string& key) const override {
        const std::scoped_lock held(lock_);
        return defaults_.text(key);
    }
    [[nodiscard]] std::optional<std::vector<std::string>> texts(const std::string& key) const override {
        const std::scoped_lock held(lock_);
        return defaults_.texts(key);
    }
    void apply(const Changes& changes) override {
        const std::scoped_lock held(lock_);
        defaults_.apply(changes);
    }

private:
    mutable std::mutex lock_;
    FakeUserDefaults defaults_;
};

/// Delivers half a second of sound every millisecond.
class BusySource final : public LoopbackSource {
public:
    void onChange(std::function<void()> /*handler*/) override {}
    std::optional<Obstacle> obstacle() override { return std::nullopt; }
    void open(Handlers handlers) override {
        player_ = std::jthread([handlers = std::move(handlers)](const std::stop_token& stop) {
            handlers.opened();
            while (!stop.stop_requested()) {
                handlers.heard({StreamDescription{16'000, 1, SampleType::int16, true}, 8000,
                                std::vector<std::byte>(16'000, std::byte{0x0C})});
                std::this_thread::sleep_for(1ms);
            }
        });
    }
    void setWanted(bool /*wanted*/) override {}
    void close() override { player_ = {}; }

private:
    std::jthread player_;
};

/// Alternates between an ad of eight hops and eight hops without an ad.
struct ChangingScorer final : AdScoring {
    int hops = 0;
    void setRules(const DetectorRules& /*rules*/) override {}
    [[nodiscard]] AdVerdict update(const DetectionSignals& /*signals*/) override {
        const float confidence = ++hops % 16 < 8 ? 0.9F : 0.0F;
        return {confidence, confidence, {}};
    }
    void reset() override {}
};

TEST(EngineStress, WhateverIsAskedForTheVolumeIsBackInTheEnd) {
    constexpr AudioObjectId speakers = 10;
    auto random = seededRandom();
    const TemporaryFolder folder;
    const auto devices = std::make_shared<FakeAudioObjects>();
    devices->devices[speakers] = {"speakers", {{0, 0.8F}}, {}};
    devices->defaultDevice = speakers;
    const auto objects = std::make_shared<LockedObjects>(devices);
    const auto defaults = std::make_shared<LockedDefaults>();
    defaults->set("onboarded", true);
    const FakeProcessDirectory directory;
    const auto queue = [](const char* label) { return std::make_shared<AsioSerialQueue>(label); };
    const auto main = queue("main");
    std::unique_ptr<SordinEngine> engine;
    main->sync([&] {
        const auto transcriber = std::make_shared<OnDeviceTranscriber>(nullptr);
        engine = std::make_unique<SordinEngine>(SordinEngine::Parts{
            main, defaults, std::make_shared<FakePermissions>(), transcriber,
            std::make_shared<DetectionPipeline>(DetectionPipeline::Parts{
                queue("sordin.audio"), std::make_shared<SystemClock>(), std::make_shared<FakeClassifier>(),
                transcriber, std::make_shared<KeywordTranscriptScorer>(),
                std::make_shared<ChangingScorer>()}),
            std::make_shared<LoopbackCapture>(queue("sordin.capture"), std::make_unique<BusySource>()),
            std::make_shared<FakeApplicationStreams>(),
            std::make_shared<VolumeController>(queue("sordin.volume"), objects, defaults),
            std::make_shared<AudioProcessInspector>(*objects, directory),
            std::make_shared<AdHistoryFile>(folder / "history.json", queue("sordin.history")),
            std::make_shared<SystemClock>(), [] { return 8e8; }});
    });
    std::size_t ads = 0;
    for (int i = 0; i < 400; ++i) {
        main->sync([&, what = std::uniform_int_distribution(0, 7)(random)] {
            switch (what) {
            case 0:
                engine->simulate(0.001);
                break;
            case 1:
                engine->restoreVolume();
                break;
            case 2:
                engine->forgetLearnedAds();
                break;
            case 3:
                engine->setTestMode(!engine->testMode());
                break;
            case 4:
                engine->setDuckPercent(10.0 * what);
                break;
            default:
                engine->setIsEnabled(!engine->isEnabled());
            }
            ads = engine->history().size();
        });
        std::this_thread::sleep_for(
            std::chrono::microseconds(std::uniform_int_distribution(0, 5000)(random)));
    }
    EXPECT_GT(ads, 0U);
    main->sync([&] { engine->setIsEnabled(false); });
    EXPECT_TRUE(waitUntil(
        [&] {
            return read<float>(*objects, speakers, audio_property::volume(0)) == 0.8F &&
                   !defaults->number("pendingRestoreVolume");
        },
        20s));
    main->sync([&] { engine.reset(); });
}

}  // namespace
}  // namespace sordin

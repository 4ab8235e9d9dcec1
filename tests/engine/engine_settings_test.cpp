// SPDX-License-Identifier: MIT
#include "engine_fixture.h"

namespace sordin {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class EngineSettingsTest : public EngineTest {};

TEST_F(EngineSettingsTest, AFirstLaunchHasTheStandardSettingsAndWaitsForTheGuide) {
    defaults->values.clear();
    create();
    EXPECT_TRUE(engine->isEnabled());
    EXPECT_EQ(engine->sensitivity(), 0.5);
    EXPECT_EQ(engine->threshold(), static_cast<double>(0.575F));
    EXPECT_EQ(engine->duckPercent(), 0);
    EXPECT_FALSE(engine->testMode());
    EXPECT_TRUE(engine->transcriptionEnabled());
    EXPECT_FALSE(engine->tunedDetection());
    EXPECT_TRUE(engine->pauseInCalls());
    EXPECT_FALSE(engine->onboardingComplete());
    EXPECT_EQ(engine->status(), Kind::starting);
    EXPECT_EQ(capture->starts, 0);
    EXPECT_THAT(defaults->values, IsEmpty());

    defaults->set("enabled", false);
    create();
    EXPECT_EQ(engine->status(), Kind::disabled);
    EXPECT_EQ(capture->starts, 0);
}

TEST_F(EngineSettingsTest, EveryAssignmentIsKeptButForTestMode) {
    create();
    engine->setSensitivity(1);
    EXPECT_EQ(engine->threshold(), static_cast<double>(0.35F));
    engine->setSensitivity(0);
    EXPECT_EQ(engine->threshold(), static_cast<double>(0.8F));
    engine->setDuckPercent(20);
    engine->setTranscriptionEnabled(false);
    engine->setTunedDetection(true);
    engine->setPauseInCalls(false);
    engine->setTestMode(true);
    engine->setIsEnabled(false);
    EXPECT_EQ(defaults->values, (std::map<std::string, UserDefaults::Value>{{"enabled", false},
                                                                            {"sensitivity", 0.0},
                                                                            {"duckPercent", 20.0},
                                                                            {"transcription", false},
                                                                            {"tunedDetection", true},
                                                                            {"pauseInCalls", false},
                                                                            {"onboarded", true}}));
    EXPECT_EQ(recogniser->rests, 1);  // the decoder frees its memory

    engine.reset();
    create();
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_EQ(engine->duckPercent(), 20);
    EXPECT_FALSE(engine->transcriptionEnabled());
    EXPECT_TRUE(engine->tunedDetection());
    EXPECT_FALSE(engine->pauseInCalls());
    EXPECT_FALSE(engine->testMode());
}

TEST_F(EngineSettingsTest, TheSettingsReachTheDetectorAndTheVolume) {
    listen();
    engine->setDuckPercent(25);
    engine->setSensitivity(0);
    hear(8, 0.7F);
    EXPECT_FALSE(engine->adActive());  // below 0.8
    engine->setSensitivity(1);
    hear(8, 0.5F);
    EXPECT_TRUE(engine->adActive());
    EXPECT_FLOAT_EQ(volumeNow(), fullVolume * 0.25F);

    constexpr float standardMemory = standardRules().keywordMemory;
    constexpr float tunedMemory = tunedRules().keywordMemory;
    static_assert(standardMemory != tunedMemory);
    for (const auto& [tuned, memory] : std::map<bool, float>{{false, standardMemory}, {true, tunedMemory}}) {
        engine->setTunedDetection(tuned);
        hear(1, 0.5F);
        EXPECT_EQ(scorer->rules.keywordMemory, memory);
    }
}

TEST_F(EngineSettingsTest, NumbersBeyondMeasureAreUsedAsFarAsTheyGo) {
    constexpr auto most = static_cast<double>(std::numeric_limits<float>::max());
    for (const double sign : {1.0, -1.0}) {
        defaults->set("sensitivity", sign * 1e300);
        defaults->set("duckPercent", sign * 1e300);
        create();
        EXPECT_EQ(engine->threshold(), -sign * most);
        EXPECT_EQ(engine->sensitivity(), sign * 1e300);
        engine->simulate(1);
        pass(0.5);
        EXPECT_EQ(volumeNow(), sign > 0 ? 1.0F : 0.0F);
        pass(3);
        EXPECT_EQ(volumeNow(), fullVolume);
    }
}

TEST_F(EngineSettingsTest, AssigningTheSameValueAgainTakesEffectAgain) {
    listen();
    EXPECT_EQ(capture->starts, 1);
    defaults->values.erase("enabled");
    engine->setIsEnabled(true);
    EXPECT_EQ(defaults->boolean("enabled"), true);
    EXPECT_EQ(engine->status(), Kind::listening);  // it was already running
    EXPECT_EQ(capture->starts, 1);
    engine->setIsEnabled(false);
    engine->setIsEnabled(false);
    EXPECT_EQ(capture->stops, 2);
    engine->setIsEnabled(true);
    EXPECT_EQ(capture->starts, 2);
}

TEST_F(EngineSettingsTest, ChangesAreToldOnce) {
    create();
    std::vector<std::string> told;
    QObject::connect(engine.get(), &SordinEngine::sensitivityChanged,
                     [&] { told.emplace_back("sensitivity"); });
    QObject::connect(engine.get(), &SordinEngine::thresholdChanged, [&] { told.emplace_back("threshold"); });
    QObject::connect(engine.get(), &SordinEngine::menuIconChanged,
                     [&] { told.push_back(engine->menuIcon().toStdString()); });
    engine->setSensitivity(0.9);
    engine->setSensitivity(0.9);
    engine->setIsEnabled(false);
    EXPECT_THAT(told, ElementsAre("sensitivity", "threshold", "speaker.zzz"));
}

TEST_F(EngineSettingsTest, PermissionsAreAskedForWhereThatLeadsSomewhere) {
    permissions->granted = false;
    recogniser->permitted = false;
    create();
    EXPECT_FALSE(engine->screenAccess());
    EXPECT_FALSE(engine->speechAccess());
    EXPECT_TRUE(engine->speechRequestPossible());
    EXPECT_EQ(engine->status(), Kind::needsPermission);

    permissions->grantedWhenAsked = true;
    recogniser->permitted = true;
    engine->requestScreenAccess();
    EXPECT_TRUE(engine->screenAccess());
    EXPECT_TRUE(engine->speechAccess());
    EXPECT_EQ(capture->starts, 0);  // only the user starts listening

    recogniser->permitted = false;
    engine->requestSpeechAccess();
    settle();
    EXPECT_FALSE(engine->speechAccess());

    recogniser->askable = false;
    engine->requestSpeechAccess();  // was possible at the start, so the state is read again
    EXPECT_THAT(permissions->opened, IsEmpty());
    create();
    EXPECT_FALSE(engine->speechRequestPossible());
    EXPECT_TRUE(engine->requestSpeechAccess());
    permissions->hasSettings = false;
    EXPECT_FALSE(engine->requestSpeechAccess());
    EXPECT_THAT(permissions->opened, Each("Privacy_SpeechRecognition"));
}

}  // namespace
}  // namespace sordin

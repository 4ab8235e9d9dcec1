// SPDX-License-Identifier: MIT
// The messages to the guard and their times: whenever a device is down, the guard must know it.
#include "fakes/fake_volume_guard.h"
#include "volume/volume_fixture.h"

namespace sordin {
namespace {

using testing::ElementsAre;

class VolumeGuardTest : public VolumeTest {
protected:
    VolumeGuardTest() {
        controller = std::make_shared<VolumeController>(queue, objects, defaults, guard);
        guard->onTold = [this] { note(guard->told ? "told" : "cleared"); };
        defaults->onApplied = [this] { note(pending() ? "record" : "no record"); };
        objects->onVolumeWritten = [this](auto...) { note("write"); };
        objects->onFlush = [this] { note("confirmed"); };
    }

    /// Records an event; repetitions count once.
    void note(const std::string& event) {
        if (events.empty() || events.back() != event) {
            events.push_back(event);
        }
    }

    /// Leaves the device only a mute switch.
    void makeSwitch(AudioObjectId device) {
        objects->devices[device].volumes.clear();
        objects->devices[device].mute = 0;
    }

    /// Speakers that went away while they were faded, and were restored while away.
    void leaveSpeakersUnrestored() {
        controller->recoverFromCrash();
        duck();
        objects->leave(speakers);
        objects->makeDefault(headphones);
        restore();
    }

    [[nodiscard]] const PendingRestore* toldVolume() const {
        return guard->told ? std::get_if<PendingRestore>(&*guard->told) : nullptr;
    }
    [[nodiscard]] std::string toldMuted() const {
        const auto* muted = guard->told ? std::get_if<MutedDevice>(&*guard->told) : nullptr;
        return muted != nullptr ? muted->device.name : "";
    }

    std::vector<std::string> events;
    std::shared_ptr<FakeVolumeGuard> guard = std::make_shared<FakeVolumeGuard>();
};

TEST_F(VolumeGuardTest, IsToldBeforeAnythingElseAndClearedAfterEverythingElse) {
    duck(0.5F);
    EXPECT_THAT(events, ElementsAre("told", "record", "write"));
    ASSERT_TRUE(toldVolume());
    EXPECT_EQ(*toldVolume(), PendingRestore::read(*defaults)) << "the same as the record";
    events.clear();
    controller->restore(0.6);
    pass(300);
    duck(0.25F);  // reversed: still the user's volume
    ASSERT_TRUE(toldVolume());
    EXPECT_EQ(toldVolume()->volume, 0.8F);
    events.clear();
    restore();
    EXPECT_THAT(events, ElementsAre("write", "confirmed", "no record", "cleared"));
    duck();
    events.clear();
    controller->restoreImmediately();
    EXPECT_THAT(events, ElementsAre("write", "confirmed", "no record", "cleared"));
    objects->makeDefault(0);
    events.clear();
    duck();
    EXPECT_THAT(events, ElementsAre()) << "no device, no duck";
}

TEST_F(VolumeGuardTest, IsClearedOnlyWhenTheAudioSystemHasAnswered) {
    for (const bool atOnce : {false, true}) {
        duck();
        objects->answers = false;
        atOnce ? controller->restoreImmediately() : restore();
        pass(3'000);
        ASSERT_TRUE(toldVolume()) << "the volume is not confirmed yet";
        EXPECT_TRUE(pending());
        objects->answers = true;
        pass(1'000);
        EXPECT_FALSE(guard->told);
        EXPECT_FALSE(pending());
    }
    duck();
    objects->answers = false;
    restore();
    objects->answers = true;
    duck();  // another duck, before the retry
    pass(3'000);
    EXPECT_TRUE(toldVolume());
    EXPECT_TRUE(pending());
}

TEST_F(VolumeGuardTest, KnowsAMutedDeviceWhichTheRecordDoesNot) {
    makeSwitch(speakers);
    auto muteWhenTold = objects->devices[speakers].mute;
    guard->onTold = [&] { muteWhenTold = objects->devices[speakers].mute; };
    for (const bool atOnce : {false, true}) {
        duck();
        EXPECT_EQ(muteWhenTold, 0U) << "informed before the change";
        EXPECT_EQ(objects->devices[speakers].mute, 1U);
        EXPECT_EQ(toldMuted(), "speakers");
        atOnce ? controller->restoreImmediately() : restore();
        EXPECT_FALSE(guard->told);
        EXPECT_EQ(muteWhenTold, 0U) << "cleared after the change";
    }
    controller->recoverFromCrash();
    duck();
    objects->leave(speakers);
    restore();
    EXPECT_EQ(toldMuted(), "speakers") << "the device is not unmuted yet";
    objects->comeBack(speakers);
    pass(1);
    EXPECT_FALSE(guard->told);
}

TEST_F(VolumeGuardTest, IsToldOfWhatAnEarlierRunLeftDown) {
    PendingRestore{0.9F, OutputDeviceRecord{"speakers", "", 1, {1}}}.write(*defaults);
    events.clear();
    controller->recoverFromCrash();
    pass(1);
    EXPECT_THAT(events, ElementsAre("told", "write", "confirmed", "no record", "cleared"));

    PendingRestore{0.9F, OutputDeviceRecord{"headphones", "", 1, {1}}}.write(*defaults);
    objects->leave(headphones);
    controller->recoverFromCrash();
    pass(1);
    ASSERT_TRUE(toldVolume());
    EXPECT_EQ(toldVolume()->device->name, "headphones");
    objects->comeBack(headphones);
    pass(1);
    EXPECT_FALSE(guard->told);
}

TEST_F(VolumeGuardTest, ADeviceThatIsAwayIsNotForgottenForAMutedOne) {
    makeSwitch(headphones);
    leaveSpeakersUnrestored();
    ASSERT_TRUE(toldVolume()) << "the speakers' restore is pending";
    duck();
    EXPECT_EQ(toldMuted(), "headphones");
    restore();
    ASSERT_TRUE(toldVolume());
    EXPECT_EQ(toldVolume()->device->name, "speakers");
    EXPECT_TRUE(pending());

    duck();
    objects->comeBack(speakers);
    pass(1);
    EXPECT_FALSE(pending());
    EXPECT_EQ(toldMuted(), "headphones") << "still muted";
    restore();
    EXPECT_FALSE(guard->told);
}

}  // namespace
}  // namespace sordin

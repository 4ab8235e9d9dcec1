// SPDX-License-Identifier: MIT
// Recovery of volumes after a crash.
#include "volume/volume_fixture.h"

#include <cmath>

namespace sordin {
namespace {

using testing::SizeIs;

class VolumeRecoveryTest : public VolumeTest {
protected:
    /// The program dies while ducked, and starts again.
    void crashWhileDucked() {
        duck();
        controller.reset();
        controller = std::make_shared<VolumeController>(queue, objects, defaults);
        writes.clear();
    }

    void recover() {
        controller->recoverFromCrash();
        pass(1);
    }
};

TEST_F(VolumeRecoveryTest, RaisesTheDeviceThatWasDuckedAndNoOther) {
    crashWhileDucked();
    objects->makeDefault(headphones);
    recover();
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    EXPECT_EQ(volumeOf(headphones), 0.5F);
    EXPECT_TRUE(defaults->values.empty());
}

TEST_F(VolumeRecoveryTest, NeverLowers) {
    crashWhileDucked();
    objects->devices[speakers].volumes[0] = 0.9F;
    recover();
    EXPECT_THAT(writes, SizeIs(0));
    EXPECT_TRUE(defaults->values.empty());

    defaults->set(PendingRestore::key, 0.7);  // a record that has only a volume
    recover();
    EXPECT_EQ(volumeOf(speakers), 0.9F);
    objects->devices[speakers].volumes[0] = 0.2F;
    defaults->set(PendingRestore::key, 0.7);
    recover();
    EXPECT_FLOAT_EQ(volumeOf(speakers), 0.7F);
    objects->devices[speakers].readable = false;
    defaults->set(PendingRestore::key, 0.9);
    recover();
    EXPECT_FLOAT_EQ(volumeOf(speakers), 0.7F) << "an unreadable volume counts as full";
    EXPECT_TRUE(defaults->values.empty());
}

TEST_F(VolumeRecoveryTest, WaitsForADeviceBeforeAnyDuck) {
    crashWhileDucked();
    objects->makeDefault(0);
    recover();
    EXPECT_TRUE(pending());
    duck();
    EXPECT_THAT(writes, SizeIs(0));
    objects->makeDefault(speakers);
    duck(0.5F);  // posted before the notification of the device
    EXPECT_FLOAT_EQ(static_cast<float>(*pending()), 0.8F) << "the recovery precedes the duck";
    EXPECT_FLOAT_EQ(volumeOf(speakers), 0.4F);
    restore();
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    EXPECT_TRUE(defaults->values.empty());
}

TEST_F(VolumeRecoveryTest, ReachesADeviceThatIsAway) {
    crashWhileDucked();
    objects->leave(speakers);
    objects->makeDefault(headphones);
    recover();
    EXPECT_EQ(volumeOf(headphones), 0.5F);
    EXPECT_TRUE(pending()) << "the restore is still pending";
    objects->comeBack(speakers);
    pass(1);
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    EXPECT_TRUE(defaults->values.empty());

    defaults->values = {};
    objects->devices.erase(speakers);  // this run has never seen the device
    PendingRestore{0.6F, OutputDeviceRecord{"usb", "", 1, {}}}.write(*defaults);
    recover();
    EXPECT_TRUE(pending());
    objects->comeBack(1'000);
    pass(1);
    EXPECT_FLOAT_EQ(volumeOf(1'000), 0.6F);
    EXPECT_FALSE(pending());
}

TEST_F(VolumeRecoveryTest, ARestoreToADeviceThatIsAwayKeepsTheRecordUntilItReturns) {
    controller->recoverFromCrash();
    duck();
    objects->leave(speakers);
    restore();
    EXPECT_TRUE(pending());
    controller->restoreImmediately();
    EXPECT_TRUE(pending());
    objects->comeBack(speakers);
    pass(1);
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    EXPECT_TRUE(defaults->values.empty());
}

TEST_F(VolumeRecoveryTest, ADeviceThatRefusesItsVolumeKeepsTheRecordUntilItHasIt) {
    controller->recoverFromCrash();
    for (const int way : {0, 1, 2}) {
        duck();
        objects->devices[speakers].writable = false;
        if (way == 0) {
            restore();
        } else if (way == 1) {
            controller->restoreImmediately();
        } else {
            controller = std::make_shared<VolumeController>(queue, objects, defaults);
            recover();
        }
        pass(5000);
        EXPECT_TRUE(pending()) << way;
        objects->devices[speakers].writable = true;
        pass(1000);
        EXPECT_EQ(volumeOf(speakers), 0.8F) << way;
        EXPECT_TRUE(defaults->values.empty()) << way;
    }
}

TEST_F(VolumeRecoveryTest, ADeviceThatIsAwayGetsItsVolumeThoughAnotherWasFadedSince) {
    const auto leaveSpeakersOutOfAnAd = [this] {
        objects->makeDefault(speakers);
        duck();
        objects->leave(speakers);
        objects->makeDefault(headphones);
        restore();
    };
    for (const bool crash : {false, true}) {
        controller->recoverFromCrash();
        leaveSpeakersOutOfAnAd();
        duck();
        EXPECT_EQ(volumeOf(headphones), 0);
        if (crash) {
            controller = std::make_shared<VolumeController>(queue, objects, defaults);
            recover();
        } else {
            restore();
        }
        EXPECT_EQ(volumeOf(headphones), 0.5F);
        EXPECT_FALSE(defaults->values.empty()) << "the speakers' pending restore stays";
        controller = std::make_shared<VolumeController>(queue, objects, defaults);
        recover();
        objects->devices[speakers].volumes[0] = 0;  // as its server stored it
        objects->comeBack(speakers);
        pass(1);
        EXPECT_EQ(volumeOf(speakers), 0.8F);
        EXPECT_TRUE(defaults->values.empty());
    }
    leaveSpeakersOutOfAnAd();
    duck();
    objects->comeBack(speakers);  // during the ad on the headphones
    pass(1);
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    EXPECT_EQ(pending(), 0.5) << "the headphones' record stays";
    restore();
    EXPECT_TRUE(defaults->values.empty());
}

TEST_F(VolumeRecoveryTest, TheRecordReadsBackWhole) {
    const PendingRestore written{0.375F,
                                 OutputDeviceRecord{"alsa \"x\"", "headphones", 1.3F, {1, 0.123456789F, 0}}};
    written.write(*defaults);
    const auto read = PendingRestore::read(*defaults);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->volume, written.volume);
    EXPECT_EQ(read->device, written.device);
    for (const auto& [key, damaged] : std::vector<std::pair<std::string, UserDefaults::Value>>{
             {"pendingRestoreDevice", std::string()},
             {"pendingRestoreRoute", 5.0},
             {"pendingRestoreReference", 0.5},
             {"pendingRestoreRatios", std::string("1 x")},
             {"pendingRestoreRatios", std::string("1 1.5")},
             {"pendingRestoreRatios", std::string("1 -0.5")},
             {"pendingRestoreRatios", std::string("1 -")},
             {"pendingRestoreRatios", std::string("0 0")},
             {"pendingRestoreRatios", true}}) {
        written.write(*defaults);
        defaults->set(key, damaged);
        ASSERT_TRUE(PendingRestore::read(*defaults)) << key;
        EXPECT_FALSE(PendingRestore::read(*defaults)->device) << key;
    }
    written.write(*defaults);
    defaults->set("pendingRestoreReference", 1e30);
    EXPECT_EQ(PendingRestore::read(*defaults)->device->reference, 1.5F) << "the maximum of mixers";
    PendingRestore{0.5F, std::nullopt}.write(*defaults);
    EXPECT_THAT(defaults->values, SizeIs(1));
    for (const auto& [kept, volume] : {std::pair(-0.1, 0.0F), {1.1, 1.0F}}) {
        defaults->set(PendingRestore::key, kept);
        EXPECT_EQ(PendingRestore::read(*defaults)->volume, volume);
    }
    defaults->set(PendingRestore::key, std::nan(""));
    EXPECT_FALSE(PendingRestore::read(*defaults));
}

}  // namespace
}  // namespace sordin

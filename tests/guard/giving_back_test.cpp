// SPDX-License-Identifier: MIT
#include "fakes/fake_audio_objects.h"
#include "guard/giving_back.h"

#include <gmock/gmock.h>

namespace sordin {
namespace {

using namespace std::chrono_literals;

class GivingBackTest : public testing::Test {
protected:
    static constexpr AudioObjectId speakers = 10;
    static constexpr AudioObjectId headphones = 11;

    GivingBackTest() {
        objects.devices[speakers] = {"speakers", {{0, 0.1F}}, {}, 1};
        objects.devices[headphones] = {"headphones", {{0, 0.1F}}, {}, 1};
        objects.defaultDevice = headphones;
    }

    [[nodiscard]] static OutputDeviceRecord record() { return {"speakers", "", 1, {1}}; }

    bool give(const DuckInForce& duck) {
        const auto device = awaitDevice(objects, duck, 1ms);
        return device && giveBack(objects, *device, duck);
    }

    FakeAudioObjects objects;
};

TEST_F(GivingBackTest, RaisesOrUnmutesTheDeviceThatWasFadedAndNoOther) {
    EXPECT_TRUE(give(MutedDevice{record()}));
    EXPECT_EQ(objects.devices[speakers].mute, 0U);
    EXPECT_EQ(objects.devices[speakers].volumes[0], 0.1F);
    objects.devices[speakers].mute = 1;
    EXPECT_TRUE(give(PendingRestore{0.7F, record()}));
    EXPECT_EQ(objects.devices[speakers].volumes[0], 0.7F);
    EXPECT_TRUE(give(PendingRestore{0.3F, record()}));
    EXPECT_EQ(objects.devices[speakers].volumes[0], 0.7F) << "a restore never lowers";
    EXPECT_EQ(objects.devices[speakers].mute, 1U);
    EXPECT_EQ(objects.devices[headphones].volumes[0], 0.1F);
    EXPECT_TRUE(give(PendingRestore{0.5F, std::nullopt}));
    EXPECT_EQ(objects.devices[headphones].volumes[0], 0.5F)
        << "without a device in the record, the default device is restored";
    EXPECT_EQ(objects.devices[headphones].mute, 1U);
}

TEST_F(GivingBackTest, LeavesADeviceThatIsAwayAsItIs) {
    objects.leave(speakers);
    EXPECT_FALSE(give(PendingRestore{0.7F, record()}));
    EXPECT_FALSE(give(MutedDevice{record()}));
    objects.makeDefault(0);
    EXPECT_FALSE(give(PendingRestore{0.7F, std::nullopt}));
    objects.comeBack(speakers);
    EXPECT_EQ(objects.devices[speakers].volumes[0], 0.1F) << "no volume is pending for its return";
    EXPECT_EQ(objects.devices[speakers].mute, 1U);
}

}  // namespace
}  // namespace sordin

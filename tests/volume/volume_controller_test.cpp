// SPDX-License-Identifier: MIT
#include "random_seed.h"
#include "volume/volume_fixture.h"

#include <cmath>

namespace sordin {
namespace {

using testing::FloatEq;
using testing::SizeIs;

class VolumeControllerTest : public VolumeTest {};

TEST_F(VolumeControllerTest, DucksInSevenAndRestoresInThirtyStepsAlongTheCurve) {
    controller->duck(0, 0.15);
    EXPECT_THAT(writes, SizeIs(0)) << "the caller does not wait";
    pass(1000);
    ASSERT_THAT(writes, SizeIs(7));
    for (int i = 0; i < 7; ++i) {
        const auto& write = writes[static_cast<std::size_t>(i)];
        const double t = (i + 1) / 7.0;
        EXPECT_EQ(write.milliseconds, 20 * i);
        EXPECT_NEAR(write.volume, 0.8 - 0.8 * t * t * (3 - 2 * t), 1e-6);
        EXPECT_TRUE(write.pending) << "the record precedes every change";
    }
    EXPECT_EQ(writes.back().volume, 0);
    EXPECT_FLOAT_EQ(static_cast<float>(*pending()), 0.8F);

    writes.clear();
    controller->restore(0.6);
    pass(579);
    ASSERT_THAT(writes, SizeIs(29));
    EXPECT_NEAR(writes[14].volume, 0.4, 1e-6) << "half of the way in half of the time";
    EXPECT_TRUE(pending()) << "the record stays until the volume is back";
    pass(1000);
    ASSERT_THAT(writes, SizeIs(30));
    EXPECT_EQ(writes.back().volume, 0.8F);
    EXPECT_TRUE(writes.back().pending);
    EXPECT_TRUE(defaults->values.empty());
}

TEST_F(VolumeControllerTest, KeepsAShareOfTheVolume) {
    duck(0.25F);
    EXPECT_FLOAT_EQ(volumeOf(speakers), 0.2F);
    duck(0);  // a second duck has no effect
    EXPECT_FLOAT_EQ(volumeOf(speakers), 0.2F);
    restore();
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    writes.clear();
    restore();
    EXPECT_THAT(writes, SizeIs(0));
    controller->duck(0.5F, 0.001);  // at least one step
    pass(0);
    EXPECT_FLOAT_EQ(volumeOf(speakers), 0.4F);
}

TEST_F(VolumeControllerTest, TurnsAroundInMidRampWithoutAJump) {
    duck(0, 50);
    const float reached = volumeOf(speakers);
    EXPECT_GT(reached, 0.1F);
    EXPECT_LT(reached, 0.8F);
    writes.clear();
    restore();
    EXPECT_NEAR(writes.front().volume, reached, 0.01);
    EXPECT_EQ(volumeOf(speakers), 0.8F);

    duck();
    restore(300);
    const float halfway = volumeOf(speakers);
    writes.clear();
    duck(0.5F);
    EXPECT_NEAR(writes.front().volume, halfway, 0.05);
    EXPECT_FLOAT_EQ(volumeOf(speakers), 0.4F) << "half of the user's volume, not of the faded one";
    EXPECT_FLOAT_EQ(static_cast<float>(*pending()), 0.8F);
    restore();
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    EXPECT_FALSE(pending());
}

TEST_F(VolumeControllerTest, UsesTheFrontChannelsOrTheMuteSwitch) {
    auto& device = objects->devices[speakers];
    device.volumes = {{1, 0.6F}, {2, 0.4F}};
    duck(0.5F);
    EXPECT_FLOAT_EQ(volumeOf(speakers, 1), 0.25F);
    EXPECT_FLOAT_EQ(volumeOf(speakers, 2), 0.25F);
    restore();
    EXPECT_FLOAT_EQ(volumeOf(speakers, 1), 0.5F);

    device.fixed = {2};  // a single settable channel of two is not a volume control
    device.mute = 0;
    duck();
    EXPECT_EQ(device.mute, 1U);
    EXPECT_FALSE(pending());
    EXPECT_FLOAT_EQ(volumeOf(speakers, 1), 0.5F);
    restore();
    EXPECT_EQ(device.mute, 0U);

    device.mute = 1;
    duck();
    restore();
    EXPECT_EQ(device.mute, 1U) << "muted by the user";

    device.mute.reset();
    writes.clear();
    duck();
    restore();
    EXPECT_THAT(writes, SizeIs(0));
    EXPECT_FALSE(pending());

    device.fixed.clear();
    device.readable = false;
    duck();
    EXPECT_THAT(writes, SizeIs(0)) << "a volume that cannot be read could not be restored";
    objects->makeDefault(0);
    duck();
    objects->makeDefault(headphones);
    duck();
    EXPECT_FLOAT_EQ(volumeOf(headphones), 0) << "a duck without a device leaves no duck in force";
}

TEST_F(VolumeControllerTest, SaysWhetherADeviceIsLower) {
    std::vector<bool> said;
    controller->onLowered([&](bool lowered) { said.push_back(lowered); });
    const auto expect = [&](const std::vector<bool>& expected, const char* when) {
        duck(when == std::string("all is kept") ? 1 : 0.5F);
        restore();
        duck(when == std::string("all is kept") ? 1 : 0.5F);
        controller->restoreImmediately();
        EXPECT_EQ(std::exchange(said, {}), expected) << when;
    };
    expect({true, false, true, false}, "faded");
    expect({}, "all is kept");
    objects->devices[speakers].volumes[0] = 0;
    expect({}, "silent already");
    objects->devices[speakers] = {"switch", {}, {}, 0};
    expect({true, false, true, false}, "muted by the duck");
    objects->devices[speakers].mute = 1;
    expect({}, "muted by the user");
    objects->makeDefault(0);
    expect({}, "no device");
}

TEST_F(VolumeControllerTest, RestoresTheDeviceThatItDucked) {
    duck();
    objects->makeDefault(headphones);
    duck();
    EXPECT_FLOAT_EQ(volumeOf(headphones), 0.5F);
    controller->restore(0.6);
    pass(300);
    duck(0, 0);  // on the headphones, while the speakers' restore is running
    EXPECT_EQ(volumeOf(speakers), 0.8F) << "the running restore finishes at once";
    EXPECT_FLOAT_EQ(static_cast<float>(*pending()), 0.5F);
    pass(1000);
    restore();
    EXPECT_FLOAT_EQ(volumeOf(headphones), 0.5F);
    EXPECT_FALSE(pending());
}

TEST_F(VolumeControllerTest, RestoresAtOnceAtTheEndOfTheProgram) {
    duck(0, 60);
    writes.clear();
    controller->restoreImmediately();
    ASSERT_THAT(writes, SizeIs(1));
    EXPECT_EQ(volumeOf(speakers), 0.8F);
    EXPECT_FALSE(pending());
    pass(1000);
    EXPECT_THAT(writes, SizeIs(1)) << "no ramp continues";

    duck();
    restore(200);
    controller->restoreImmediately();
    EXPECT_EQ(volumeOf(speakers), 0.8F) << "a running restore finishes";
    EXPECT_FALSE(pending());

    defaults->set(PendingRestore::key, 0.3);
    controller->restoreImmediately();
    EXPECT_TRUE(pending()) << "with nothing to restore, the record of another run stays";
    defaults->remove(PendingRestore::key);

    objects->devices[speakers].volumes.clear();
    objects->devices[speakers].mute = 0;
    duck();
    controller->restoreImmediately();
    EXPECT_EQ(objects->devices[speakers].mute, 0U);
}

TEST_F(VolumeControllerTest, StopsWhenItGoesAwayAndKeepsTheRecord) {
    duck(0, 60);
    controller->restore(0.6);
    pass(100);
    writes.clear();
    controller.reset();
    pass(1000);
    EXPECT_THAT(writes, SizeIs(0));
    EXPECT_TRUE(pending()) << "the next start brings the volume back";
    objects->makeDefault(headphones);  // the listener has been removed
}

TEST_F(VolumeControllerTest, SurvivesAThousandOfEverything) {
    auto random = seededRandom();
    const auto pick = [&](int most) { return std::uniform_int_distribution(0, most)(random); };
    const std::vector<AudioObjectId> all{speakers, headphones, 12, 13};
    objects->devices[12] = {"channels", {{1, 0.7F}, {2, 0.7F}}, {}};
    objects->devices[13] = {"switch", {}, {}, 0};
    controller->recoverFromCrash();
    const auto before = objects->devices;
    const auto expectUntouched = [&](int step) {
        for (const AudioObjectId id : all) {
            EXPECT_EQ(objects->devices[id].volumes, before.at(id).volumes) << step << " " << id;
            EXPECT_EQ(objects->devices[id].mute, before.at(id).mute) << step << " " << id;
        }
        EXPECT_TRUE(defaults->values.empty()) << step;
    };
    for (int step = 0; step < 1000; ++step) {
        const AudioObjectId device = all[static_cast<std::size_t>(pick(3))];
        switch (pick(7)) {
        case 0:
        case 1:
            controller->duck(0.01F * static_cast<float>(pick(50)), 0.15);
            break;
        case 2:
        case 3:
            controller->restore(0.6);
            break;
        case 4:
            controller->restoreImmediately();
            break;
        case 5:
            objects->makeDefault(objects->devices[device].present ? device : 0);
            break;
        case 6:
            objects->leave(device);
            break;
        default:
            objects->comeBack(device);
            break;
        }
        pass(pick(1) == 0 ? pick(40) : pick(900));
        if (step % 50 == 49) {
            for (const AudioObjectId id : all) {
                objects->comeBack(id);
            }
            restore();
            expectUntouched(step);
            if (HasFailure()) {
                return;
            }
        }
    }
}

}  // namespace
}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "platform/linux/server/device_volume.h"

#include <gmock/gmock.h>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointwise;

using Channels = std::vector<float>;

auto near(const Channels& expected) {
    return Pointwise(testing::FloatNear(1e-6F), expected);
}

TEST(DeviceVolume, IsTheCubeRootOfTheLoudestChannelAndKeepsBalanceThroughSilence) {
    DeviceVolume volume;
    EXPECT_THAT(volume.appeared({0.216F, 0.108F}), IsEmpty());
    EXPECT_FLOAT_EQ(volume.scalar(), 0.6F);
    EXPECT_THAT(volume.write(0.3F), near({0.027F, 0.0135F}));  // 0.3 cubed, and half of that
    EXPECT_THAT(volume.write(0), ElementsAre(0.0F, 0.0F));
    volume.reported({0, 0});
    EXPECT_THAT(volume.write(0.6F), ElementsAre(0.216F, 0.108F));  // to the last bit
    volume.reported({0.216F, 0.108F});
    volume.reported({0, 0});  // by another program; the balance survives that, too
    EXPECT_THAT(volume.write(0.5F), near({0.125F, 0.0625F}));
}

TEST(DeviceVolume, AboveFullVolumeOneStandsForTheVolumeThatTheUserHad) {
    DeviceVolume volume;
    volume.reported({2.197F});  // 1.3 cubed
    EXPECT_FLOAT_EQ(volume.scalar(), 1);
    EXPECT_FLOAT_EQ(volume.reference(), 1.3F);
    EXPECT_THAT(volume.write(0.5F), near({0.274625F}));  // 0.65 cubed
    EXPECT_THAT(volume.write(1), ElementsAre(2.197F));
    volume.reported({2.197F});
    volume.reported({0.5F});  // another program lowers it
    EXPECT_FLOAT_EQ(volume.reference(), 1);
}

TEST(DeviceVolume, TellsEchoesOfItsOwnWritesFromChangesByOthers) {
    DeviceVolume volume;
    volume.reported({0.512F});
    const auto first = volume.write(0.6F);
    const auto second = volume.write(0.4F);
    const auto third = volume.write(0.2F);
    volume.reported(first);  // a late echo
    EXPECT_FLOAT_EQ(volume.scalar(), 0.2F);
    volume.reported(
        {third[0] + 0.0001F});  // the second is missing, the third rounded as by Bluetooth devices
    EXPECT_FLOAT_EQ(volume.scalar(), 0.2F);
    volume.reported(third);  // a repeated echo
    EXPECT_FLOAT_EQ(volume.scalar(), 0.2F);
    volume.reported(second);  // no echo is pending: a change by the user
    EXPECT_FLOAT_EQ(volume.scalar(), 0.4F);
    volume.reported(third);  // another change by the user
    EXPECT_FLOAT_EQ(volume.scalar(), 0.2F);

    // During a fade, the last applied volume counts.
    const auto fourth = volume.write(0.1F);
    volume.reported({0.729F});
    EXPECT_FLOAT_EQ(volume.scalar(), 0.9F);
    volume.reported(fourth);
    EXPECT_FLOAT_EQ(volume.scalar(), 0.1F);
}

TEST(DeviceVolume, AWriteThatTheServerMayHaveForgottenIsWrittenAgain) {
    DeviceVolume volume;
    volume.reported({2.197F, 1.0985F});
    static_cast<void>(volume.write(0));
    static_cast<void>(volume.write(1));  // the device is away
    EXPECT_THAT(volume.appeared({0, 0}), ElementsAre(2.197F, 1.0985F));
    EXPECT_FLOAT_EQ(volume.scalar(), 1);

    volume.writeRemembered();
    EXPECT_THAT(volume.appeared({0.027F, 0.0135F}),
                IsEmpty());  // another program lowered it while it was away
    EXPECT_FLOAT_EQ(volume.scalar(), 0.3F / 1.3F);
    EXPECT_FLOAT_EQ(volume.reference(), 1.3F);

    volume.reported({0.125F, 0.125F});
    EXPECT_THAT(volume.appeared({1, 1}), IsEmpty());  // a change by another program cancels the pending write
    EXPECT_FLOAT_EQ(volume.scalar(), 1);
}

TEST(DeviceVolume, ARecordGivesReferenceAndBalanceBack) {
    DeviceVolume away;
    away.adopt(1.3F, {1, 0.5F});
    EXPECT_THAT(away.write(1), IsEmpty());
    EXPECT_THAT(away.appeared({0, 0}), near({2.197F, 1.0985F}));

    DeviceVolume silent;
    silent.reported({0, 0});
    silent.adopt(1.3F, {1, 0.5F});
    EXPECT_FLOAT_EQ(silent.scalar(), 0);
    EXPECT_THAT(silent.write(1), near({2.197F, 1.0985F}));

    DeviceVolume quiet;  // its volume and balance are not the user's
    quiet.reported({0.064F, 0.064F});
    quiet.adopt(1, {1, 0.5F});
    EXPECT_THAT(quiet.write(0.5F), near({0.125F, 0.0625F}));

    DeviceVolume raised;  // restored by another program: the next fade starts from the current volume
    raised.reported({0.064F, 0.064F});
    raised.adopt(1, {1, 0.5F});
    EXPECT_THAT(raised.ratios(), ElementsAre(1.0F, 1.0F));
    EXPECT_THAT(raised.write(0.2F), near({0.008F, 0.008F}));

    DeviceVolume surround;  // a record with a different number of channels is ignored
    surround.reported({0, 0, 0});
    surround.adopt(1, {1, 0.5F});
    EXPECT_THAT(surround.write(1), ElementsAre(1.0F, 1.0F, 1.0F));
}

}  // namespace
}  // namespace sordin

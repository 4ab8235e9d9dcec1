// SPDX-License-Identifier: MIT
// The real engine, controlled over a bus.
#include "app/remote_control.h"
#include "engine/engine_fixture.h"
#include "platform/linux/bus_fixture.h"
#include "property_ear.h"

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class RemoteControlTest : public EngineTest, protected BusParties {
protected:
    [[nodiscard]] QVariant is(const char* name) const {
        return property(ApplicationService::path, ControlInterface::name, name);
    }
    void call(const char* method) const {
        EXPECT_EQ(ask(ApplicationService::path, ControlInterface::name, method).errorName(), "");
    }
    void set(const char* name, const QVariant& value) const {
        static_cast<void>(ask(ApplicationService::path, "org.freedesktop.DBus.Properties", "Set",
                              {ControlInterface::name, name, QVariant::fromValue(QDBusVariant(value))}));
    }
    void begin() {
        create();
        remote.emplace(*engine, service);
    }

    ApplicationService service{program, [](const QString&) {}};
    std::optional<RemoteControl> remote;
};

TEST_F(RemoteControlTest, SaysWhatTheEngineDoes) {
    defaults->set("onboarded", false);
    begin();
    EXPECT_EQ(is("Status"), "waiting");
    engine->setOnboardingComplete(true);
    EXPECT_EQ(is("Status"), "starting");
    engine->startCapture();
    started();
    EXPECT_EQ(is("Status"), "listening");
    EXPECT_EQ(is("Source"), "");

    PropertyEar ear(desktop, program.baseService(), ApplicationService::path);
    EXPECT_EQ(is("StatusText"), "Listening") << "the bus has registered the listener by then";
    hearAdBegin();
    ASSERT_TRUE(comes([&] { return !ear.changes.empty(); }));
    EXPECT_EQ(ear.changes[0], (QVariantMap{{"Status", "ad"},
                                           {"StatusText", "Ad detected, muted"},
                                           {"AdActive", true},
                                           {"Faded", true},
                                           {"Source", "Radio"}}));
    EXPECT_NEAR(is("Confidence").toDouble(), 0.9, 1e-6);
    hear(4, 0.9F);
    hearAdEnd();
    ASSERT_TRUE(comes([&] { return ear.changes.size() > 1; }));
    EXPECT_THAT(ear.changes, SizeIs(2)) << "hops send no signals";
    EXPECT_EQ(is("Source"), "") << "no ad is playing";
    EXPECT_EQ(is("Faded"), false);
    streams->changed({{ApplicationStream::Kind::playsCall, "9", {}, "Phone"}});
    pass(2);
    EXPECT_EQ(is("Status"), "listening");
    ASSERT_TRUE(comes([&] { return ear.changes.size() > 2; }));
    EXPECT_EQ(ear.changes.back(), (QVariantMap{{"Call", "Phone"}}));

    engine->stopCapture();
    EXPECT_EQ(is("Status"), "off");
    permissions->granted = false;
    engine->startCapture();
    EXPECT_EQ(is("Status"), "permission");
    permissions->granted = true;
    engine->startCapture();
    started(Failure(Error::refused, "no server"));
    EXPECT_EQ(is("Status"), "failed");
    EXPECT_EQ(is("StatusText"), "no server");
}

TEST_F(RemoteControlTest, GivesTheVolumeBack) {
    begin();
    started();
    hearAdBegin();
    pass(1);
    ASSERT_EQ(volumeNow(), 0);
    call("RestoreNow");
    pass(1);
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_EQ(is("AdActive"), true);
    EXPECT_EQ(is("Faded"), false);
}

TEST_F(RemoteControlTest, SwitchesOnAndOff) {
    begin();
    started();
    set("Enabled", true);
    EXPECT_EQ(defaults->boolean("enabled"), std::nullopt) << "it is on already, so nothing is written";
    set("Enabled", false);
    EXPECT_EQ(is("Status"), "off");
    EXPECT_EQ(defaults->boolean("enabled"), false);
    call("Toggle");
    EXPECT_TRUE(comes([&] { return is("Status") == "starting"; }));
    EXPECT_EQ(defaults->boolean("enabled"), true);
    PropertyEar ear(desktop, program.baseService(), ApplicationService::path);
    EXPECT_EQ(is("TunedDetection"), false);
    set("TunedDetection", true);
    EXPECT_TRUE(engine->tunedDetection());
    ASSERT_TRUE(comes([&] { return !ear.changes.empty(); }));
    EXPECT_EQ(ear.changes.back().value("TunedDetection"), true);
    set("IgnoredApplications", QStringList{"b", "a", "b"});
    EXPECT_EQ(is("IgnoredApplications"), QStringList({"b", "a"}));
    EXPECT_EQ(streams->leftOut.applications, (std::set<std::string>{"a", "b"}));
    remote.reset();
    EXPECT_FALSE(is("Status").isValid()) << "the interface goes before the engine";
}

}  // namespace
}  // namespace sordin

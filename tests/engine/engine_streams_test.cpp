// SPDX-License-Identifier: MIT
#include "engine_fixture.h"

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class EngineStreamsTest : public EngineTest {
protected:
    using Stream = ApplicationStream;

    /// Runs these streams from now on, for at least `seconds`.
    void run(const std::vector<Stream>& now, double seconds) {
        streams->changed(now);
        settle();
        pass(seconds);
    }

    const Stream player{Stream::Kind::plays, "4711", 4711, "radio"};
    const Stream recorder{Stream::Kind::records, "4711", 4711, "radio"};
};

TEST_F(EngineStreamsTest, ACallEndsTheAdAndIsLeftAloneUntilItIsOver) {
    listen();
    hearAdBegin();
    pass(0.5);
    ASSERT_TRUE(engine->adFaded());
    run({player, recorder}, 0.9);
    run({player}, 1.1);
    EXPECT_TRUE(engine->adFaded()) << "a call needs one second without interruption";
    run({player, recorder}, 2);
    EXPECT_EQ(engine->callApp(), "Radio");
    EXPECT_TRUE(streams->leftOut.everything);
    EXPECT_FALSE(engine->adActive());
    EXPECT_EQ(volumeNow(), fullVolume);
    EXPECT_THAT(engine->history(), SizeIs(1));
    EXPECT_EQ(engine->status(), Kind::listening);
    EXPECT_EQ(capture->stops, 0);

    hear(4, 0.9F);  // hops that were still pending
    EXPECT_FALSE(engine->adActive());
    EXPECT_FALSE(engine->adFaded());
    hear(20, 0);
    run({player}, 0.9);
    run({player, recorder}, 2);
    EXPECT_TRUE(streams->leftOut.everything) << "the call continued";
    engine->setIsEnabled(false);
    EXPECT_EQ(engine->callApp(), "") << "no call is reported while switched off";
    engine->setIsEnabled(true);
    EXPECT_EQ(engine->callApp(), "Radio");
    settle();
    started();
    run({player}, 1.1);
    EXPECT_EQ(engine->callApp(), "");
    EXPECT_FALSE(streams->leftOut.everything);
    hearAdBegin();

    engine->setPauseInCalls(false);
    run({player, recorder}, 2);
    EXPECT_EQ(engine->callApp(), "");
    EXPECT_FALSE(streams->leftOut.everything);
    EXPECT_TRUE(engine->adFaded());
    engine->setPauseInCalls(true);
    pass(1);
    EXPECT_EQ(engine->callApp(), "Radio");
    EXPECT_EQ(volumeNow(), fullVolume);
    for (const auto& [name, shown] : {std::pair("Phone", "Phone"), {"", "Unknown"}}) {
        run({{Stream::Kind::playsCall, "client 9", {}, name}}, 2);
        EXPECT_EQ(engine->callApp(), shown);
    }
}

TEST_F(EngineStreamsTest, ChosenApplicationsAreLeftOut) {
    defaults->set("ignoredApplications", std::vector<std::string>{"org.unknown", "org.unknown", ""});
    listen();
    EXPECT_THAT(streams->leftOut.applications, ElementsAre("org.unknown"));
    hearAdBegin();
    pass(1);
    engine->setIgnored("Radio", true);
    pass(1);
    EXPECT_EQ(volumeNow(), fullVolume) << "the excluded application played the ad";
    EXPECT_THAT(streams->leftOut.applications, ElementsAre("id of Radio", "org.unknown"));
    EXPECT_THAT(engine->ignoredNames(), ElementsAre("org.unknown", "Radio"));
    engine.reset();
    listen();
    EXPECT_THAT(engine->ignoredApplications(), ElementsAre("org.unknown", "id of Radio"));
    engine->setIgnored("Radio", false);
    EXPECT_THAT(streams->leftOut.applications, ElementsAre("org.unknown"));
    EXPECT_EQ(defaults->texts("ignoredApplications"), std::vector<std::string>{"org.unknown"});

    QStringList many(1, QString(300, 'x'));
    for (int i = 0; i < 300; ++i) {
        many.append(QString::number(i));
    }
    engine->setIgnoredApplications(many);
    EXPECT_EQ(engine->ignoredApplications(), many.mid(1, 256));
    engine->setIgnored("org.unknown", false);
    engine->setIgnoredApplications({});
    EXPECT_THAT(streams->leftOut.applications, IsEmpty());
    EXPECT_EQ(defaults->texts("ignoredApplications"), std::vector<std::string>{});
}

}  // namespace
}  // namespace sordin

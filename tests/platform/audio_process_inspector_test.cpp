// SPDX-License-Identifier: MIT
#include "fakes/fake_audio_objects.h"
#include "fakes/fake_process_directory.h"
#include "platform/audio_process_inspector.h"

#include <gmock/gmock.h>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct AudioProcessInspectorTest : testing::Test {
    FakeAudioObjects objects;
    FakeProcessDirectory directory;
    AudioProcessInspector inspector{objects, directory};

    void plays(AudioObjectId object, std::int32_t processId, ApplicationInfo application) {
        objects.processes.push_back({object, {1, processId}});
        directory.applications[processId] = std::move(application);
    }
};

TEST_F(AudioProcessInspectorTest, NamesTheOutermostBundleElseTheLocalisedName) {
    directory.applications = {
        {2, {"/Applications/Radio.app", "Radio Player"}},
        {3, {"/Applications/Radio.app/Contents/Frameworks/Helper.app", "Helper"}},
        {4, {"/opt/radio/bin", "Radio"}},
        {5, {"", "Music"}},
        {6, {"", ""}},
        {7, {"/opt/.app/x", "Hidden"}},
    };
    EXPECT_EQ(inspector.appName(2), "Radio");
    EXPECT_EQ(inspector.appName(3), "Radio");
    EXPECT_EQ(inspector.appName(4), "Radio");
    EXPECT_EQ(inspector.appName(5), "Music");
    EXPECT_EQ(inspector.appName(6), std::nullopt);
    EXPECT_EQ(inspector.appName(7), "Hidden");
    EXPECT_EQ(inspector.appName(99), std::nullopt);
}

TEST_F(AudioProcessInspectorTest, ListsEachPlayingApplicationOnceButThisOne) {
    plays(10, 100, {"/A/Radio.app", ""});
    plays(11, 101, {"/A/Radio.app/Helper.app", ""});
    plays(12, 1, {"", "Sordin"});
    plays(13, 103, {"", "Music"});
    objects.processes.push_back({14, {0, 104}});
    objects.processes.push_back({15, {1, std::nullopt}});
    objects.processes.push_back({16, {std::nullopt, 104}});
    objects.processes.push_back({17, {1, 999}});  // an unknown process
    directory.applications[104] = {"", "Quiet"};
    EXPECT_THAT(inspector.activeOutputApps(), ElementsAre("Radio", "Music"));
    objects.tellsProcesses = false;
    EXPECT_THAT(inspector.activeOutputApps(), IsEmpty());
}

TEST_F(AudioProcessInspectorTest, PrefersTheApplicationInFrontAmongThosePlaying) {
    EXPECT_EQ(inspector.likelySource(), "Unknown");
    directory.frontmost = {"", ""};
    EXPECT_EQ(inspector.likelySource(), "Unknown");
    directory.frontmost = {"", "Editor"};
    EXPECT_EQ(inspector.likelySource(), "Editor");
    plays(10, 100, {"", "Music"});
    plays(11, 101, {"", "Browser"});
    EXPECT_EQ(inspector.likelySource(), "Music");
    directory.frontmost = {"", "Browser"};
    EXPECT_EQ(inspector.likelySource(), "Browser");
    directory.frontmost = std::nullopt;
    EXPECT_EQ(inspector.likelySource(), "Music");
}

}  // namespace
}  // namespace sordin

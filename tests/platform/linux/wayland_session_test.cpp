// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/wayland_session.h"
#include "rig/temporary_folder.h"
#include "rig/wait_until.h"
#include "system/private_display.h"

#include <gmock/gmock.h>

namespace sordin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(WaylandSessionTest, RealServersSayWhatTheyAre) {
    const TemporaryFolder folder;
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    setenv("WAYLAND_DISPLAY", "nobody", 1);
    setenv("DISPLAY", ":12345", 1);
    EXPECT_FALSE(waylandSession());
    EXPECT_THAT(x11Monitors(), IsEmpty());

    const PrivateDisplay display;
    EXPECT_THAT(x11Monitors(), ElementsAre(MonitorSize(1280, 800)));
    EXPECT_FALSE(waylandSession()) << "without a name there is no session";

    std::ofstream(folder / "weston.ini") << "[output]\nname=headless\ntransform=rotate-90\nscale=2\n";
    const ChildProcess compositor(
        {"weston", "--backend=headless-backend.so", "--socket=here", "--idle-time=0", "--use-pixman",
         "--config=" + (folder / "weston.ini").string(), "--width=600", "--height=500"},
        {.log = folder / "log"});
    ASSERT_TRUE(waitUntil([&] { return exists(folder / "here"); }, std::chrono::seconds(30)));
    setenv("WAYLAND_DISPLAY", "here", 1);
    const auto session = waylandSession();
    ASSERT_TRUE(session);
    EXPECT_FALSE(session->drawsTitleBars);
    EXPECT_FALSE(session->isPlasma);
    EXPECT_THAT(session->monitors, ElementsAre(MonitorSize(1000, 1200))) << "in pixels, and rotated";
}

TEST(WaylandSessionTest, XwaylandIsForTitleBarsAndPlasmaUnlessItsWindowsAreEnlarged) {
    const std::vector<MonitorSize> two{{1920, 1080}, {3840, 2160}};
    const std::vector<MonitorSize> enlarged{{1920, 1080}, {1920, 1080}};
    for (const auto& [titleBars, plasma, x11, xwayland] : {std::tuple(false, false, two, true),
                                                           {true, true, two, true},
                                                           {true, false, two, false},
                                                           {false, false, enlarged, false},
                                                           {true, true, enlarged, false},
                                                           {false, false, {}, false}}) {
        EXPECT_EQ(prefersXwayland({titleBars, plasma, two}, x11), xwayland)
            << titleBars << plasma << x11.size();
    }
    EXPECT_FALSE(prefersXwayland({false, false, {}}, {})) << "Xwayland does not answer";
}

}  // namespace
}  // namespace sordin

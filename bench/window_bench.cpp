// SPDX-License-Identifier: MIT
// Cost of the windows, on a private display and audio server. Needs Xvfb, openbox and xdotool.
//   sordin_window_bench SECONDS MUSIC ADS   seconds per measurement, and two recordings
#include "measured_program.h"
#include "rig/private_audio_server.h"
#include "rig/private_bus.h"
#include "system/private_display.h"

namespace {

using namespace sordin;
using namespace std::chrono_literals;

/// Measures the time from the start of the process to the first frame of its window.
void measureStart() {
    std::printf("from the start to the first frame:");
    for (int i = 0; i < 5; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        const MeasuredProgram program({.windows = true});
        program.waitFor("the window is drawn");
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        std::printf(" %.2f s", time.count());
    }
    std::printf("\n");
}

void measureWindow(std::chrono::duration<double> time, const std::string& music, const std::string& ads) {
    const MeasuredProgram program({.windows = true});
    std::this_thread::sleep_for(3s);
    measure("the window, nothing plays", program.pid(), time);
    {
        const ChildProcess player({"pw-play", music}, {});
        std::this_thread::sleep_for(5s);
        measure("the window on its Live page, music plays", program.pid(), time);
    }
    {
        const ChildProcess player({"pw-play", ads}, {});
        program.waitFor("an ad began");
        measure("the window on its Live page, ads play", program.pid(), time);
    }
    outputOf({"xdotool", "key", "alt+F4"});  // without a panel this minimizes the window
    const ChildProcess player({"pw-play", music}, {});
    std::this_thread::sleep_for(5s);
    measure("the window minimised, music plays", program.pid(), time);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: sordin_window_bench SECONDS MUSIC ADS\n");
        return 2;
    }
    const std::chrono::duration<double> time(std::atof(argv[1]));
    PrivateAudioServer server;
    server.start();
    const PrivateBus bus;
    const PrivateDisplay display;
    const ChildProcess windowManager({"openbox"}, {});
    std::this_thread::sleep_for(2s);
    outputOf({"xdotool", "mousemove", "5", "5"});  // away from the window
    measureStart();
    {
        const MeasuredProgram program({.windows = true, .arguments = {"--hidden"}});
        std::this_thread::sleep_for(3s);
        measure("the icon alone, nothing plays", program.pid(), time);
        const ChildProcess player({"pw-play", argv[2]}, {});
        std::this_thread::sleep_for(5s);
        measure("the icon alone, music plays", program.pid(), time);
    }
    measureWindow(time, argv[2], argv[3]);
    return 0;
}

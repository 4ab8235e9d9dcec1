// SPDX-License-Identifier: MIT
// Cost of the whole program with its helpers, on a private audio server, without windows.
//   sordin_program_bench SECONDS [RECORDING]...
// SECONDS is the time per measurement. It measures each recording and then silence, first without and then
// with transcription.
#include "measured_program.h"
#include "rig/private_audio_server.h"

int main(int argc, char** argv) {
    using namespace sordin;
    using namespace std::chrono_literals;
    const std::chrono::duration<double> time(argc > 1 ? std::atof(argv[1]) : 30);
    const std::vector<std::string> recordings(argv + std::min(argc, 2), argv + argc);
    PrivateAudioServer server;
    server.start();
    for (const bool transcribes : {false, true}) {
        const MeasuredProgram program({.transcribes = transcribes});
        const std::string how = transcribes ? ", with transcription" : "";
        for (const auto& recording : recordings) {
            const ChildProcess player({"pw-play", recording}, {});
            std::this_thread::sleep_for(5s);  // skips the cost of the start
            measure(recording + how, program.pid(), time);
        }
        waitUntil([&] { return server.nodeState("test-sink-A") == "suspended"; }, 30s);
        measure("nothing plays" + how, program.pid(), time);
    }
    return 0;
}

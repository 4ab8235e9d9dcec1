// SPDX-License-Identifier: MIT
// The speed of a replay, including reading and resampling.
#include "replay/replay.h"

#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <filesystem>
#include <memory>
#include <random>
#include <string>

namespace sordin::replay {
namespace {

constexpr int seconds = 60;

/// A recording of a minute of noise; the destructor removes it.
class Recording {
public:
    Recording(int rate, int channels) {
        SF_INFO info{};
        info.samplerate = rate;
        info.channels = channels;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path_.c_str(), SFM_WRITE, &info),
                                                               sf_close);
        std::mt19937 random(1);
        std::normal_distribution<float> noise(0, 0.1F);
        std::vector<float> second(static_cast<std::size_t>(rate) * static_cast<std::size_t>(channels));
        for (int i = 0; i < seconds; ++i) {
            for (float& sample : second) {
                sample = noise(random);
            }
            sf_writef_float(file.get(), second.data(), rate);
        }
    }
    ~Recording() { std::filesystem::remove(path_); }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_ = (std::filesystem::temp_directory_path() / "sordin-replay-bench.wav").string();
};

/// Arguments: sample rate in Hz, channels.
void replaySpeed(benchmark::State& state) {
    const Recording recording(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for (auto _ : state) {
        AudioFile file(recording.path());
        benchmark::DoNotOptimize(replay(file, recording.path(), {}, {}, {}, {}));
    }
    state.counters["x real time"] =
        benchmark::Counter(seconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(replaySpeed)->Args({16'000, 1})->Args({44'100, 2})->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace sordin::replay

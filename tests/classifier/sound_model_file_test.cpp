// SPDX-License-Identifier: MIT
#include "classifier/model_files.h"
#include "classifier/sound_model_file.h"
#include "random_seed.h"
#include "rig/temporary_folder.h"
#include "support/own_files.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <optional>
#include <sys/stat.h>

namespace sordin {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// The error of reading a model; none if it succeeds.
std::optional<std::string> errorOf(const std::function<SoundModel()>& read) {
    try {
        static_cast<void>(read());
    } catch (const SoundModelError& error) {
        return error.what();
    }
    return std::nullopt;
}

std::optional<std::string> refusal(const Bytes& bytes) {
    return errorOf([&] { return readSoundModel(bytes, "some.bin"); });
}

class SoundModelFile : public testing::Test {
protected:
    std::mt19937 random = seededRandom();
    SoundModel model = smallModel(random);
};

TEST_F(SoundModelFile, GivesBackWhatWasWritten) {
    // Limits of binary16: 2^-24 and 1023 * 2^-24 are subnormal, 65504 is the largest value.
    const Bytes plain = payloadOf(model);
    model.embedding.weights[0] = -65504;
    model.embedding.weights[1] = 0x1p-14F;
    model.convolutions[1].weights[0] = 0;
    Bytes payload = payloadOf(model);
    const std::size_t first = std::size_t{13} * 4 + 5 * 4;  // the first convolution's first weight
    payload[first] = std::byte(0x01);
    payload[first + 1] = std::byte(0x00);
    payload[first + 2] = std::byte(0xFF);
    payload[first + 3] = std::byte(0x83);
    model.convolutions[0].weights[0] = 0x1p-24F;
    model.convolutions[0].weights[1] = -1023 * 0x1p-24F;

    const SoundModel read = readSoundModel(fileOf(payload), "some.bin");
    EXPECT_EQ(read.convolutions[0].weights, model.convolutions[0].weights);
    EXPECT_EQ(read.convolutions[1].weights, model.convolutions[1].weights);
    EXPECT_EQ(read.embedding.weights, model.embedding.weights);
    EXPECT_EQ(payloadOf(readSoundModel(fileOf(plain), "some.bin")), plain) << "the rest of the file";
}

TEST_F(SoundModelFile, RefusesWhateverIsCutOrDamaged) {
    const Bytes whole = fileOf(model);
    const Bytes payload = payloadOf(model);
    for (std::size_t size = 0; size < whole.size(); size += size < 200 ? 1 : 37) {
        EXPECT_THAT(refusal({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}),
                    testing::Optional(HasSubstr("some.bin: ")))
            << size;
    }
    for (std::size_t size = 0; size < payload.size(); size += 11) {
        EXPECT_TRUE(
            refusal(fileOf(Bytes(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(size)))))
            << size << ": a valid file with a truncated model";
    }
    for (std::size_t at = 0; at < whole.size(); at += at < 200 ? 1 : 53) {
        Bytes damaged = whole;
        damaged[at] ^= std::byte(0x10);
        EXPECT_TRUE(refusal(damaged)) << at;
    }
    Bytes longer = whole;
    longer.push_back({});
    EXPECT_THAT(refusal(longer), testing::Optional(HasSubstr("differs from its header")));
    longer = payload;
    longer.push_back({});
    EXPECT_THAT(refusal(fileOf(longer)), testing::Optional(HasSubstr("unexpected data after")));
}

TEST_F(SoundModelFile, RefusesWhatCannotBeMeant) {
    constexpr float notFinite = std::numeric_limits<float>::infinity();
    constexpr std::uint32_t huge = 0xFFFFFFFFU;
    const std::vector<std::pair<std::string, std::function<void(SoundModel&)>>> flaws{
        {"sample rate", [](auto& m) { m.frontEnd.rate = 0; }},
        {"sample rate", [](auto& m) { m.frontEnd.rate = 16'001; }},
        {"sample rate", [](auto& m) { m.frontEnd.rate = 200'000; }},
        {"do not fit together", [](auto& m) { m.frontEnd.window = 0; }},
        {"do not fit together", [](auto& m) { m.frontEnd.window = 129; }},
        {"do not fit together", [](auto& m) { m.frontEnd.hop = 0; }},
        {"do not fit together", [](auto& m) { m.frontEnd.hop = 101; }},
        {"do not fit together", [](auto& m) { m.frontEnd.transform = 131; }},
        {"do not fit together", [](auto& m) { m.frontEnd.transform = huge; }},
        {"not a whole number of hops", [](auto& m) { m.frontEnd.hop = 70; }},
        {"bands", [](auto& m) { m.frontEnd.mels = 0; }},
        {"bands", [](auto& m) { m.frontEnd.mels = huge; }},
        {"bands", [](auto& m) { m.frontEnd.low = -1; }},
        {"bands", [](auto& m) { m.frontEnd.low = 1'900; }},
        {"bands", [](auto& m) { m.frontEnd.high = 2'001; }},
        {"not finite", [](auto& m) { m.frontEnd.high = notFinite; }},
        {"floor", [](auto& m) { m.frontEnd.floor = 0; }},
        {"not finite", [](auto& m) { m.frontEnd.floor = std::numeric_limits<float>::quiet_NaN(); }},
        {"range", [](auto& m) { m.frontEnd.range = -1; }},
        {"scale", [](auto& m) { m.frontEnd.scale = 0; }},
        {"too long", [](auto& m) { m.frontEnd.frames = huge; }},
        {"pooled frames", [](auto& m) { m.frontEnd.pool = 0; }},
        {"pooled frames", [](auto& m) { m.frontEnd.pool = 120; }},
        {"number of convolutions", [](auto& m) { m.convolutions.clear(); }},
        {"number of convolutions", [](auto& m) { m.convolutions.resize(33); }},
        {"convolution does not fit", [](auto& m) { m.convolutions[1].in = 6; }},
        {"too many channels", [](auto& m) { m.convolutions[1].out = 0; }},
        {"too many channels", [](auto& m) { m.convolutions[1].out = huge; }},
        {"stride", [](auto& m) { m.convolutions[1].strideTime = 0; }},
        {"stride", [](auto& m) { m.convolutions[1].strideFrequency = 5; }},
        {"residual layer", [](auto& m) { m.convolutions[1].residual = true; }},
        {"residual layer", [](auto& m) { m.convolutions[2].strideTime = 2; }},
        {"not finite", [](auto& m) { m.convolutions[1].weights[3] = notFinite; }},
        {"not finite", [](auto& m) { m.convolutions[1].bias[3] = notFinite; }},
        {"number of sections", [](auto& m) { m.sections = 0; }},
        {"number of sections", [](auto& m) { m.sections = huge; }},
        {"more sections", [](auto& m) { m.sections = 11; }},
        {"dense layer does not fit", [](auto& m) { m.embedding.in -= 1; }},
        {"dense layer has", [](auto& m) { m.embedding.out = huge; }},
        {"not finite", [](auto& m) { m.embedding.weights[3] = -notFinite; }},
        {"number of embeddings", [](auto& m) { m.memory = 0; }},
        {"dense layer does not fit", [](auto& m) { m.memory = 4; }},
        {"number of dense layers", [](auto& m) { m.dense.clear(); }},
        {"dense layer does not fit", [](auto& m) { m.dense[1].in = 0; }},
        {"number of labels", [](auto& m) { m.labels.clear(); }},
        {"number of labels differs", [](auto& m) { m.labels.pop_back(); }},
        {"label is empty", [](auto& m) { m.labels[0].identifier.clear(); }},
        {"not printable ASCII", [](auto& m) { m.labels[0].identifier = "caf\xC3\xA9"; }},
        {"not finite", [](auto& m) { m.labels[0].gain = notFinite; }},
    };
    for (const auto& [expected, make] : flaws) {
        SoundModel flawed = model;
        make(flawed);
        EXPECT_THAT(refusal(fileOf(flawed)), testing::Optional(HasSubstr(expected)));
    }
    Bytes payload = payloadOf(model);
    payload[std::size_t{13} * 4 + 4 * 4] = std::byte(2);
    EXPECT_THAT(refusal(fileOf(payload)), testing::Optional(HasSubstr("residual flag")));
}

// Sizes that are allowed one by one, in a file without their data: reading must not allocate memory for them.
TEST_F(SoundModelFile, RefusesWhatWouldCostTooMuch) {
    SoundModel large = model;
    large.convolutions = {{1, 1'024, 1, 1, false, {}, {}}};
    EXPECT_THAT(refusal(fileOf(large)), testing::Optional(HasSubstr("ends too early")));
    large.frontEnd.frames = 2'000;
    large.frontEnd.pool = 1;
    EXPECT_THAT(refusal(fileOf(large)), testing::Optional(HasSubstr("too much memory")));
    large.convolutions = {{1, 40, 1, 1, false, std::vector<float>(360), std::vector<float>(40)},
                          {40, 40, 1, 1, false, {}, {}}};
    EXPECT_THAT(refusal(fileOf(large)), testing::Optional(HasSubstr("too much time")));
    large = model;
    large.embedding.out = 65'536;
    EXPECT_THAT(refusal(fileOf(large)), testing::Optional(HasSubstr("ends too early")));
    large = model;
    large.frontEnd.hop = 1;
    large.frontEnd.transform = 8'192;
    EXPECT_THAT(refusal(fileOf(large)), testing::Optional(HasSubstr("too much time")));
}

TEST_F(SoundModelFile, SaysWhyAFileCannotBeRead) {
    const TemporaryFolder folder;
    const auto why = [](const fs::path& path) {
        return errorOf([&] { return loadSoundModel(path); }).value_or("");
    };
    const Bytes bytes = fileOf(model);
    writeText(folder / "good", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    EXPECT_EQ(payloadOf(loadSoundModel(folder / "good")), payloadOf(model));
    EXPECT_EQ(why(folder / "none"), (folder / "none").string() + ": No such file or directory");
    EXPECT_THAT(why(folder.path()), HasSubstr("not a regular file"));
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(why(folder / "pipe"), HasSubstr("not a regular file"));
    writeText(folder / "empty", "");
    EXPECT_THAT(why(folder / "empty"), HasSubstr("not a sound model"));
    writeText(folder / "large", "");
    fs::resize_file(folder / "large", 1ULL << 34U);
    EXPECT_THAT(why(folder / "large"), HasSubstr("too large"));
}

TEST(SoundModelLocation, IsBesideTheProgramWhereverThatIs) {
    const TemporaryFolder folder;
    const auto place = [](const fs::path& path) {
        fs::create_directories(path.parent_path());
        writeText(path, "model");
    };
    const fs::path program = folder / "usr/bin/sordin";
    place(program);
    const fs::path installed = folder / "usr/share/sordin/sound-model.bin";
    EXPECT_NE(findDataFile(program, "sound-model.bin"), installed);
    place(installed);
    EXPECT_EQ(findDataFile(program, "sound-model.bin"), installed);

    const fs::path built = folder / "usr/build/tools/replay/sordin-replay";
    place(built);
    place(folder / "usr/build/CMakeCache.txt");
    EXPECT_EQ(findDataFile(built, "sound-model.bin"), std::nullopt) << "a build uses only its own model";
    const fs::path own = folder / "usr/build/share/sordin/sound-model.bin";
    place(own);
    EXPECT_EQ(findDataFile(built, "sound-model.bin"), own);
}

}  // namespace
}  // namespace sordin

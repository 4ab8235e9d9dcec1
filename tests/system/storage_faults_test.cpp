// SPDX-License-Identifier: MIT
// The real program when its files cannot be written or read, and with unusual folders and locales.
#include "system/small_disk.h"
#include "system/sordin_fixture.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <sys/resource.h>
#include <sys/stat.h>

namespace sordin {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
namespace fs = std::filesystem;

class StorageFaultsTest : public SordinTest {
protected:
    /// The files in the user's folders with their contents, without the file that fills the disk.
    [[nodiscard]] std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::recursive_directory_iterator(home / "disk")) {
            if (entry.is_regular_file() && entry.path().filename() != "filler") {
                all[entry.path().lexically_relative(home.path())] = contentsOf(entry.path());
            }
        }
        return all;
    }
    /// After a kill the guard restores, otherwise the program itself.
    void fadeAndEnd(int signal) {
        ASSERT_NO_FATAL_FAILURE(enterAd());
        ASSERT_TRUE(endsBy(signal));
        ASSERT_TRUE(becomes(0.512F)) << signal;
        player.reset();
    }
    /// How often the program has printed a text.
    [[nodiscard]] long timesSaid(const std::string& text) const {
        std::ifstream lines(home / "log");
        long times = 0;
        for (std::string line; std::getline(lines, line);) {
            times += line.find(text) != std::string::npos ? 1 : 0;
        }
        return times;
    }
};

TEST_F(StorageFaultsTest, AFullAndAReadOnlyDiskLoseNothingAndLeaveNoVolumeDown) {
    fs::create_directories(home / "disk");
    std::optional<SmallDisk> disk;
    try {
        disk.emplace(home / "disk");
    } catch (const std::system_error& error) {
        GTEST_SKIP() << "no file system of the test's own: " << error.what();
    }
    for (const char* folder : {"config", "data"}) {  // the targets of the links
        fs::remove_all(home / folder);
        fs::create_directories(home / "disk" / folder / "Sordin");
        fs::create_directory_symlink(fs::path("disk") / folder, home / folder);
    }
    writeText(home / "config/Sordin/defaults.json", R"({"onboarded": true, "sensitivity": 1.0})");
    beginServer();
    server->setVolume(sink, {80});
    ASSERT_TRUE(becomes(0.512F));
    ASSERT_NO_FATAL_FAILURE(fadeAndEnd(SIGTERM));
    ASSERT_EQ(history().size(), 1U);
    const auto before = files();

    disk->fill();
    for (const int signal : {SIGKILL, SIGTERM}) {
        ASSERT_NO_FATAL_FAILURE(fadeAndEnd(signal));
        EXPECT_EQ(files(), before) << "a full disk must lose nothing";
    }
    disk->setReadOnly(true);
    ASSERT_NO_FATAL_FAILURE(fadeAndEnd(SIGKILL));
    EXPECT_EQ(timesSaid("settings will not be saved"), 1);
    EXPECT_EQ(timesSaid("the history will not be saved"), 1);
    EXPECT_EQ(files(), before);

    disk->setReadOnly(false);
    disk->makeRoom();
    ASSERT_NO_FATAL_FAILURE(fadeAndEnd(SIGTERM));
    EXPECT_EQ(timesSaid("will not be saved"), 0);
    EXPECT_EQ(history().size(), 2U) << history();
}

TEST_F(StorageFaultsTest, AFileSizeLimitIsAWriteThatFails) {
    beginServer();
    server->setVolume(sink, {80});
    listen();
    const rlimit none{0, 0};
    ASSERT_EQ(prlimit(program->pid(), RLIMIT_FSIZE, &none, nullptr), 0);
    play(pieces() / "ads.wav");
    ASSERT_TRUE(becomes(0));
    player.reset();
    EXPECT_TRUE(becomes(0.512F));
    EXPECT_TRUE(endsBy(SIGTERM));
}

TEST_F(StorageFaultsTest, WhateverLiesWhereItsFilesShouldBeItWorksAndKeepsIt) {
    beginServer();
    server->setVolume(sink, {80});
    const fs::path config = home / "config/Sordin";
    const fs::path data = home / "data/Sordin";
    const std::vector<std::pair<std::string, std::function<void()>>> faults{
        {"folders that are files",
         [&] {
             writeText(config, "");
             fs::create_directories(data.parent_path());
             writeText(data, "");
         }},
        {"folders that lead to themselves",
         [&] {
             fs::create_symlink("Sordin", config);
             fs::create_directories(data.parent_path());
             fs::create_symlink("Sordin", data);
         }},
        {"files that are pipes, folders, links to themselves and to nothing", [&] {
             fs::create_directories(config / "defaults.json");
             fs::create_directories(data);
             ASSERT_EQ(mkfifo((data / "history.json").c_str(), 0600), 0);
             fs::create_symlink("pending-restore.json", config / "pending-restore.json");
             fs::create_symlink("/nowhere/lock", config / "pending-restore.lock");
         }}};
    for (const auto& [what, make] : faults) {
        SCOPED_TRACE(what);
        fs::remove_all(config);
        fs::remove_all(data);
        make();
        startProgram();  // as if it were the first start
        ASSERT_TRUE(says("status: starting")) << log();
        EXPECT_TRUE(endsBy(SIGTERM));
    }
    EXPECT_TRUE(fs::is_fifo(data / "history.json")) << "stays in place until the first write";
    const auto keptAside = std::count_if(fs::directory_iterator(config), {}, [](const auto& entry) {
        return entry.path().string().find(".damaged-") != std::string::npos;
    });
    EXPECT_EQ(keptAside, 2) << "the folder and the link must be kept";
}

/// Temporary folders get a name that needs quoting everywhere.
struct OddPlace {
    OddPlace() {
        fs::create_directories(odd);
        setenv("TMPDIR", odd.c_str(), 1);
    }
    TemporaryFolder plain;
    fs::path odd = plain / "it's 100% \"ünï\" $HOME `x` \\n";
};

class OddHomeTest : private OddPlace, public SordinTest {
protected:
    OddHomeTest() { unsetenv("TMPDIR"); }
};

TEST_F(OddHomeTest, WorksInAnyFolderAndWithADecimalComma) {
    fs::create_directories(home / "locales");
    outputOf({"localedef", "-i", "de_DE", "-f", "UTF-8", (home / "locales/de_DE.UTF-8").string()},
             home / "localedef", 60s);
    ASSERT_TRUE(fs::exists(home / "locales/de_DE.UTF-8/LC_NUMERIC")) << contentsOf(home / "localedef");
    display.insert(display.end(), {"LOCPATH=" + (home / "locales").string(), "LC_ALL=de_DE.UTF-8"});
    writeText(home / "config/Sordin/defaults.json",
              R"({"onboarded": true, "sensitivity": 0.995, "duckPercent": 12.5})");
    beginServer();
    server->setVolume(sink, {80, 40});
    ASSERT_TRUE(sinkBecomes(*server, sink, {0.512F, 0.064F}, deadline));
    const auto enterPartly = [this] {
        listen();
        play(pieces() / "ads.wav");
        ASSERT_TRUE(says("an ad began")) << log();
        ASSERT_TRUE(sinkBecomes(*server, sink, {0.001F, 0.000125F}, deadline))
            << log();  // an eighth of the volume, cubed
    };
    ASSERT_NO_FATAL_FAILURE(enterPartly());
    EXPECT_THAT(contentsOf("/proc/" + std::to_string(program->pid()) + "/maps"),
                HasSubstr("de_DE.UTF-8/LC_NUMERIC"));
    const auto record = nlohmann::json::parse(contentsOf(home / "config/Sordin/pending-restore.json"));
    EXPECT_NEAR(record["pendingRestoreVolume"].get<double>(), 0.8, 1e-3);
    EXPECT_THAT(record["pendingRestoreRatios"].get<std::string>(), testing::StartsWith("1 0.125"));
    ASSERT_TRUE(endsBy(SIGKILL));
    player.reset();
    EXPECT_TRUE(sinkBecomes(*server, sink, {0.512F, 0.064F}, deadline)) << "the guard must restore";
    ASSERT_NO_FATAL_FAILURE(enterPartly());
    EXPECT_TRUE(endsBy(SIGTERM));
    EXPECT_TRUE(sinkBecomes(*server, sink, {0.512F, 0.064F}, 0s));
    const auto events = history();
    ASSERT_EQ(events.size(), 1U) << contentsOf(home / "data/Sordin/history.json");
    EXPECT_TRUE(events[0]["duration"].is_number_float()) << events;
}

class ModelFaultsTest : public SordinTest {};

TEST_F(ModelFaultsTest, WithoutModelsTheProgramSaysSoAndListens) {
    const fs::path built = fs::path(SORDIN_PROGRAM).parent_path();
    const fs::path usr = home / "usr";
    fs::create_directories(usr / "bin");
    fs::create_directories(usr / "share/sordin");
    fs::create_directories(usr / "libexec");
    fs::copy(SORDIN_PROGRAM, usr / "bin/sordin");
    fs::copy(SORDIN_HELPER_FOLDER, usr / "libexec/sordin");
    writeText(usr / "CMakeCache.txt", "");  // marks a build tree, which never uses installed models
    const std::string whole = contentsOf(SORDIN_SOUND_MODEL);
    ASSERT_GT(whole.size(), 1'000U);
    std::string flipped = whole;
    flipped[whole.size() / 2] = static_cast<char>(flipped[whole.size() / 2] ^ 1);
    std::string newer = whole;
    newer[8] = 2;
    beginServer();
    const std::vector<std::pair<std::optional<std::string>, std::string>> models{
        {std::nullopt, "no sound model found"},
        {whole.substr(0, whole.size() / 2), "differs from its header"},
        {flipped, "wrong checksum"},
        {newer, "unsupported version"}};
    for (const auto& [model, warning] : models) {
        fs::remove(usr / "share/sordin/sound-model.bin");
        if (model) {
            writeText(usr / "share/sordin/sound-model.bin", *model);
        }
        program.emplace(std::vector<std::string>{(usr / "bin/sordin").string()},
                        ChildOptions{.environment = environment(), .log = home / "log"});
        ASSERT_TRUE(says("status: listening")) << warning << log();
        EXPECT_THAT(log(), HasSubstr(warning));
        EXPECT_TRUE(endsBy(SIGTERM));
        fs::remove(home / "log");
    }
}

}  // namespace
}  // namespace sordin

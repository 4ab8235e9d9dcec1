// SPDX-License-Identifier: MIT
#include "platform/linux/storage/file_user_defaults.h"
#include "rig/temporary_folder.h"
#include "support/asio_serial_queue.h"
#include "support/manual_serial_queue.h"

#include <gmock/gmock.h>

#include <cmath>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace sordin {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using nlohmann::json;
using testing::HasSubstr;

class FileUserDefaultsTest : public testing::Test {
private:
    TemporaryFolder base_;  // declared before its users

protected:
    [[nodiscard]] json settings() const { return json::parse(contentsOf(file())); }
    [[nodiscard]] fs::path file() const { return folder() / "defaults.json"; }
    [[nodiscard]] fs::path pendingFile() const { return folder() / "pending-restore.json"; }
    [[nodiscard]] fs::path folder() const { return base_ / "Sordin"; }

    /// Simulates a new start of the program.
    void open() {
        defaults.reset();
        defaults = std::make_unique<FileUserDefaults>(folder(), queue);
    }

    void pass(std::chrono::milliseconds time) { queue->advance(time); }

    [[nodiscard]] std::vector<std::string> setAside() const {
        std::vector<std::string> texts;
        for (const auto& entry : fs::directory_iterator(folder())) {
            if (entry.path().filename().string().find(".damaged-") != std::string::npos) {
                texts.push_back(contentsOf(entry.path()));
            }
        }
        return texts;
    }

    std::shared_ptr<ManualSerialQueue> queue = std::make_shared<ManualSerialQueue>("sordin.defaults");
    std::unique_ptr<FileUserDefaults> defaults = std::make_unique<FileUserDefaults>(folder(), queue);
};

TEST_F(FileUserDefaultsTest, KeepsTypedValuesAcrossStarts) {
    EXPECT_FALSE(defaults->boolean("enabled"));
    defaults->set("enabled", false);
    defaults->set("sensitivity", 0.1);
    defaults->set("name", std::string("caf\xC3\xA9 \"x\""));
    const std::vector<std::string> list{"caf\xC3\xA9", ""};
    defaults->set("list", list);
    defaults->set("whole", 3.0);
    defaults->set("nothing", std::nan(""));
    open();
    EXPECT_EQ(defaults->boolean("enabled"), false);
    EXPECT_EQ(defaults->number("sensitivity"), 0.1);
    EXPECT_EQ(defaults->number("whole"), 3.0);
    EXPECT_EQ(defaults->text("name"), "caf\xC3\xA9 \"x\"");
    EXPECT_EQ(defaults->texts("list"), list);
    EXPECT_FALSE(defaults->text("list") || defaults->texts("name"));
    EXPECT_FALSE(defaults->number("enabled") || defaults->text("sensitivity") || defaults->boolean("name"));
    EXPECT_FALSE(settings().contains("nothing"));
    defaults->remove("name");
    open();
    EXPECT_FALSE(defaults->text("name"));
}

TEST_F(FileUserDefaultsTest, WritesSettingsALittleLaterAndAtTheEnd) {
    for (int i = 0; i < 10; ++i) {  // a moving slider is saved while it moves
        defaults->set("sensitivity", 0.1 * i);
        EXPECT_EQ(fs::exists(file()), i >= 5) << i;
        pass(20ms);
    }
    pass(200ms);
    EXPECT_DOUBLE_EQ(settings()["sensitivity"].get<double>(), 0.9);
    defaults->set("sensitivity", 0.5);
    defaults->flush();
    EXPECT_EQ(settings()["sensitivity"], 0.5);
    EXPECT_EQ(fs::status(file()).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(folder()).permissions(), fs::perms(0700));
}

TEST_F(FileUserDefaultsTest, WritesThePendingRestoreAtOnceAndApart) {
    defaults->apply(
        {{"pendingRestoreVolume", 0.8}, {"pendingRestoreDevice", std::string("usb")}, {"enabled", true}});
    EXPECT_EQ(json::parse(contentsOf(pendingFile())),
              (json{{"pendingRestoreVolume", 0.8}, {"pendingRestoreDevice", "usb"}}));
    EXPECT_FALSE(fs::exists(file()));
    EXPECT_EQ(defaults->number("pendingRestoreVolume"), 0.8);
    defaults->apply({{"pendingRestoreVolume", std::nullopt}, {"pendingRestoreDevice", std::nullopt}});
    EXPECT_FALSE(fs::exists(pendingFile()));
    pass(1s);
    EXPECT_FALSE(settings().contains("pendingRestoreVolume"));
}

TEST_F(FileUserDefaultsTest, KeepsWhatItDoesNotKnow) {
    fs::create_directories(folder());
    writeText(file(),
              R"({"future": {"a": [1, null]}, "mixed": ["a", 1], "enabled": "yes", "sensitivity": 0.25})");
    open();
    EXPECT_FALSE(defaults->boolean("enabled"));
    EXPECT_FALSE(defaults->texts("mixed"));
    EXPECT_EQ(defaults->number("sensitivity"), 0.25);
    defaults->set("duckPercent", 5.0);
    defaults->flush();
    EXPECT_EQ(
        settings(),
        json::parse(R"({"future": {"a": [1, null]}, "mixed": ["a", 1], "enabled": "yes", "sensitivity": 0.25,
                                          "duckPercent": 5.0})"));
}

TEST_F(FileUserDefaultsTest, SetsAsideWhatItCannotRead) {
    fs::create_directories(folder());
    const std::vector<std::string> bad{"",
                                       "{\"enabled\": tr",
                                       "[1, 2]",
                                       std::string(3 << 20, ' ') + "{}",
                                       std::string(100'000, '['),
                                       "{\"a\": " + std::string(400'000, '[') + std::string(400'000, ']') +
                                           "}",
                                       "{\"a\": 1} x",
                                       "{\"a\": 1,}",
                                       "{\"a\": 1e999}"};
    for (std::size_t i = 0; i < bad.size(); ++i) {
        writeText(file(), bad[i]);
        open();
        EXPECT_FALSE(defaults->boolean("enabled"));
        EXPECT_FALSE(fs::exists(file()));
        EXPECT_EQ(setAside().size(), i + 1);
        EXPECT_THAT(setAside(), testing::Contains(bad[i]));
        EXPECT_EQ(contentsOf(defaults->settingsAside()), bad[i]);
    }
    for (const fs::path& each :
         {file(), pendingFile()}) {  // opens, but reading fails, as on a defective disk
        fs::create_symlink("/proc/self/mem", each);
        open();
        EXPECT_FALSE(fs::is_symlink(each));
    }
    fs::create_directories(file());
    mkfifo(pendingFile().c_str(), 0600);
    open();  // must not hang or fail
    defaults->set("enabled", true);
    defaults->set("pendingRestoreVolume", 0.5);
    open();
    EXPECT_EQ(defaults->boolean("enabled"), true);
    EXPECT_EQ(defaults->number("pendingRestoreVolume"), 0.5);
}

TEST_F(FileUserDefaultsTest, AFailedWriteLeavesTheOldFileWhole) {
    defaults->set("sensitivity", 0.25);
    defaults->flush();
    const auto old = contentsOf(file());
    // A full disk: a folder in which even root cannot create files.
    const fs::path kept = folder().parent_path() / "kept";
    fs::rename(folder(), kept);
    for (const char* nowhere : {"/proc/self/nowhere", "Sordin"}) {  // the second is a symbolic link to itself
        fs::create_symlink(nowhere, folder());
        defaults->set("sensitivity", 0.75);
        defaults->set("pendingRestoreVolume", 0.5);
        defaults->flush();
        EXPECT_EQ(defaults->number("sensitivity"), 0.75);
        EXPECT_EQ(contentsOf(kept / "defaults.json"), old);
        EXPECT_FALSE(FileUserDefaults(folder(), queue).number("sensitivity")) << "a new start must also work";
        fs::remove(folder());
    }
    fs::rename(kept, folder());
    defaults->flush();  // retries
    EXPECT_EQ(settings()["sensitivity"], 0.75);
    EXPECT_EQ(json::parse(contentsOf(pendingFile()))["pendingRestoreVolume"], 0.5);
    for (const auto& entry : fs::directory_iterator(folder())) {
        EXPECT_THAT(entry.path().filename().string(), testing::Not(testing::StartsWith(".")))
            << "a temporary file was left behind";
    }
}

TEST_F(FileUserDefaultsTest, FollowsALinkToTheFile) {
    fs::create_directories(folder());
    writeText(folder() / "elsewhere.json", R"({"enabled": true})");
    fs::create_symlink("elsewhere.json", file());
    open();
    EXPECT_EQ(defaults->boolean("enabled"), true);
    defaults->set("enabled", false);
    defaults->flush();
    EXPECT_TRUE(fs::is_symlink(file()));
    EXPECT_THAT(contentsOf(folder() / "elsewhere.json"), HasSubstr("false"));
}

TEST_F(FileUserDefaultsTest, TakesChangesFromManyThreads) {
    defaults.reset();
    auto real =
        std::make_unique<FileUserDefaults>(folder(), std::make_shared<AsioSerialQueue>("sordin.defaults"));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&real, thread] {
            const std::string key = "key" + std::to_string(thread);
            for (int i = 0; i < 200; ++i) {
                real->apply({{key, 1.0 * i}, {"pendingRestoreVolume", 0.001 * i}});
                EXPECT_EQ(real->number(key), 1.0 * i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    real.reset();
    for (int thread = 0; thread < 4; ++thread) {
        EXPECT_EQ(settings()["key" + std::to_string(thread)], 199);
    }
}

}  // namespace
}  // namespace sordin

// SPDX-License-Identifier: MIT
// The real program with recordings made by the test.
#include "classifier/model_files.h"
#include "detection/detector_rules.h"
#include "fakes/fake_speech.h"
#include "random_seed.h"
#include "replay/replay.h"
#include "rig/temporary_folder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sndfile.h>

#include <QXmlStreamReader>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace sordin::replay {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::SizeIs;

struct Outcome {
    int status;
    std::string output;  // standard output, then standard error
};

class CommandLineTest : public testing::Test {
protected:
    /// Runs the program in the test's folder; `arguments` as in a shell.
    [[nodiscard]] Outcome run(const std::string& arguments) const {
        const std::string command =
            "cd '" + folder().string() + "' && '" SORDIN_REPLAY "' " + arguments + " >.out 2>.err </dev/null";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                contentsOf(folder_ / ".out") + contentsOf(folder_ / ".err")};
    }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ / name) << text;
    }

    void save(const std::string& name, std::span<const float> interleaved, int rate, int channels,
              int format) const {
        SF_INFO info{0, rate, channels, format, 0, 0};
        SNDFILE* const file = sf_open((folder_ / name).c_str(), SFM_WRITE, &info);
        ASSERT_TRUE(file);
        constexpr std::size_t most = 4800;  // samples; larger writes overflow the stack of some encoders
        for (; !interleaved.empty(); interleaved = interleaved.subspan(std::min(most, interleaved.size()))) {
            sf_write_float(file, interleaved.data(),
                           static_cast<sf_count_t>(std::min(most, interleaved.size())));
        }
        sf_close(file);
    }

    /// Records steady noise, equal in all channels.
    void record(const std::string& name, double seconds, int rate, int channels, int format) const {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> noise(-0.2F, 0.2F);
        std::vector<float> samples;
        for (int i = 0; i < static_cast<int>(seconds * rate); ++i) {
            samples.insert(samples.end(), static_cast<std::size_t>(channels), noise(random));
        }
        save(name, samples, rate, channels, format);
    }

    static constexpr int wav = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    void recordWav(const std::string& name, double seconds) const { record(name, seconds, 16'000, 1, wav); }

    /// Standard output as one JSON value per line.
    [[nodiscard]] std::vector<json> runJson(const std::string& arguments) const {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.output;
        std::vector<json> lines;
        std::istringstream input(outcome.output);
        for (std::string line; std::getline(input, line);) {
            lines.push_back(json::parse(line));
        }
        return lines;
    }

    /// "This program is sponsored by our friends. Order now, and get free shipping.", four times.
    void recordOffer(const std::string& name) const {
        std::vector<float> samples;
        for (int round = 0; round < 4; ++round) {
            for (AudioFile clip(SORDIN_SPEECH_CLIPS "/sponsored.flac"); clip.read(samples);) {
            }
        }
        save(name, samples, 16'000, 1, wav);
    }

    [[nodiscard]] const fs::path& folder() const { return folder_.path(); }

private:
    TemporaryFolder folder_;
};

// Speech over music from 20 s on gives Audio 0.55. The jump of the scores gives Boundary 0.35, which decays
// by 7 % per hop. The smoothed confidence of the hops that end at 20, 20.5, ... is .283 .448 .543 .597 .625
// .639. The third value at or above 0.575 is at 22.5. At 40 s the scores drop, with another jump. Values of
// .4 and less from 40.5 on end the ad at 43.
constexpr auto adCues =
    "{\"t\": 20, \"music\": 1, \"speech\": 1}\n{\"t\": 40, \"music\": 0, \"speech\": 0}\n";

TEST_F(CommandLineTest, TranscribesWhatLooksSuspicious) {
    recordOffer("offer.wav");
    write("scores", "{\"t\": 0, \"music\": 1, \"speech\": 1}\n");
    auto reports = runJson("--json --transcribe --cues scores offer.wav");
    ASSERT_THAT(reports[0]["transcripts"], testing::Not(testing::IsEmpty()));
    const json transcript = reports[0]["transcripts"][0];
    EXPECT_THAT(transcript["text"], HasSubstr("sponsored by our friends"));
    EXPECT_EQ(transcript["score"], 1);
    EXPECT_LE(transcript["start"], 2) << "the session starts as soon as the sound is suspicious";
    EXPECT_NEAR(transcript["end"].get<double>() - transcript["start"].get<double>(), 15.5, 0.5);
    EXPECT_THAT(reports[0]["ads"][0]["reasons"], testing::Contains("Keywords"));
    auto again = runJson("--json --transcribe --cues scores offer.wav");
    again[0].erase("speed");
    reports[0].erase("speed");
    EXPECT_EQ(again, reports);
    EXPECT_THAT(run("--transcribe --cues scores offer.wav").output, HasSubstr("sponsored by our friends"));

    const auto without = runJson("--json --no-transcription --cues scores offer.wav");
    EXPECT_THAT(without[0]["ads"][0]["reasons"], testing::Not(testing::Contains("Keywords")));
    EXPECT_FALSE(without[0].contains("transcripts"));
    write("words", "{\"t\": 0, \"music\": 1, \"speech\": 1, \"transcript\": \"what the cues say\"}\n");
    const auto report = runJson("--json --transcribe --cues words offer.wav");
    EXPECT_EQ(report[0]["transcripts"][0]["text"], "what the cues say") << "cues replace the transcriber";
    EXPECT_EQ(runJson("--hops --transcribe --cues words offer.wav").back()["transcripts"],
              report[0]["transcripts"]);
    EXPECT_EQ(run("--transcribe --no-transcription offer.wav").status, 2);
}

TEST_F(CommandLineTest, NoticesThatNotAllWasTranscribed) {
    recordWav("radio.wav", 5);
    write("scores", "{\"t\": 0, \"music\": 1, \"speech\": 1}\n");
    const auto recogniser = std::make_shared<FakeSpeechRecogniser>();
    for (const bool starting : {true, false}) {
        recogniser->starting = starting;
        AudioFile recording((folder() / "radio.wav").string());
        const auto result = sordin::replay::replay(
            recording, "radio.wav", {}, {CueTrack::read(folder() / "scores"), nullptr, recogniser}, {}, {});
        EXPECT_EQ(result.speechFailure.value_or(""), starting ? "" : "does not start");
    }
}

TEST_F(CommandLineTest, FindsTheAdThatTheCuesDescribe) {
    recordWav("radio.wav", 60);
    write("radio.cues", adCues);
    write("radio.txt", "20\t40\tad\n");
    const auto reports = runJson("--json --cues radio.cues --truth radio.txt --no-transcription radio.wav");
    ASSERT_THAT(reports, SizeIs(1));
    const json& report = reports[0];
    EXPECT_EQ(report["file"], "radio.wav");
    EXPECT_EQ(report["duration"], 60);
    ASSERT_THAT(report["ads"], SizeIs(1));
    const json& ad = report["ads"][0];
    EXPECT_EQ(ad["start"], 22.5);
    EXPECT_EQ(ad["end"], 43);
    EXPECT_EQ(ad["length"], 20.5);
    EXPECT_EQ(ad["reasons"], (json{"Audio", "Boundary"}));
    EXPECT_NEAR(ad["peak"].get<double>(), 0.645, 0.01);
    EXPECT_EQ(ad["cutOff"], false);
    EXPECT_EQ(report["truth"]["reaction"]["median"], 2.5);
    EXPECT_EQ(report["truth"]["lateRelease"]["median"], 3);
    EXPECT_NEAR(report["truth"]["recall"].get<double>(), 17.5 / 20, 1e-9);
    EXPECT_EQ(report["truth"]["f05"], 1);
    EXPECT_EQ(report["truth"]["singleAds"]["f05"], 1);

    const auto table = run("--cues radio.cues --truth radio.txt --no-transcription radio.wav");
    EXPECT_THAT(table.output, HasSubstr("0:22.5"));
    EXPECT_THAT(table.output, HasSubstr("0:43.0"));
    EXPECT_THAT(table.output, HasSubstr("64%  Audio, Boundary\n"));
    EXPECT_THAT(table.output, HasSubstr("1 ad, 0:20.5 in all, 34% of the recording\n"));
    EXPECT_THAT(table.output, HasSubstr("median 2.5 s"));
    EXPECT_THAT(table.output, HasSubstr("times real time\n"));

    EXPECT_THAT(runJson("--json --cues radio.cues --threshold 0.99 radio.wav")[0]["ads"], SizeIs(0));
    EXPECT_EQ(
        runJson(
            "--json --cues radio.cues --no-transcription --sensitivity 1 radio.wav")[0]["ads"][0]["start"],
        21.5);
}

TEST_F(CommandLineTest, PrintsEveryHop) {
    recordWav("radio.wav", 50.25);
    write("radio.cues", std::string(adCues) + "{\"t\": 21, \"transcript\": \"promo code\"}\n");
    const auto hops = runJson("--hops --cues radio.cues radio.wav");
    ASSERT_THAT(hops, SizeIs(100));
    const json& first = hops[0];
    EXPECT_EQ(first["t"], 0.5);
    EXPECT_EQ(first["silent"], false);
    EXPECT_NEAR(first["db"].get<double>(), 20 * std::log10(0.2 / std::sqrt(3.0)), 0.2);
    EXPECT_THAT(first["bands"], SizeIs(8));
    EXPECT_EQ(first["event"], nullptr);
    EXPECT_EQ(first["transcribing"], false);
    const json& change = hops[39];
    EXPECT_EQ(change["t"], 20);
    EXPECT_EQ(change["boundary"], 1);
    EXPECT_NEAR(change["raw"].get<double>(), 1 - 0.45 * 0.65, 0.02);
    EXPECT_EQ(change["contributions"][0], (json{"Audio", 0.55}));
    EXPECT_EQ(change["contributions"][2], (json{"Boundary", 0.35}));
    EXPECT_EQ(hops[40]["transcribing"], true);
    EXPECT_EQ(hops[40]["keyword"], 0);
    EXPECT_NEAR(hops[41]["keyword"].get<double>(), 1 / 1.2, 1e-6);
    int starts = 0;
    int ends = 0;
    for (const json& hop : hops) {
        starts += hop["event"] == "started" ? 1 : 0;
        ends += hop["event"].is_object() ? 1 : 0;
    }
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(hops.back()["inAd"], true);
    EXPECT_EQ(runJson("--hops --cues radio.cues radio.wav"), hops)
        << "a second replay must give the same digits";

    const auto both = runJson("--hops --json --cues radio.cues radio.wav");
    ASSERT_THAT(both, SizeIs(101));
    EXPECT_EQ(both.back()["ads"][0]["cutOff"], true);
    EXPECT_EQ(both.back()["ads"][0]["end"], 50.25);

    auto scored = runJson("--hops --transcribe --cues radio.cues radio.wav");
    EXPECT_TRUE(scored.back().contains("transcripts"));
    scored.pop_back();
    for (std::size_t i = 0; i < scored.size(); ++i) {
        const json score = scored[i]["transcriptScore"];
        EXPECT_EQ(score.is_number(), i > 0 && scored[i - 1]["transcribing"]) << i;
        EXPECT_EQ(score.is_number() && score > 0.8, i >= 41 && score.is_number()) << i;
        scored[i].erase("transcriptScore");
    }
    EXPECT_EQ(scored, hops);

    // Other rules change only the numbers.
    const auto tuned = runJson("--hops --json --rules tuned --cues radio.cues radio.wav");
    EXPECT_NEAR(tuned[39]["contributions"][0][1].get<double>(),
                static_cast<double>(tunedRules().weights.audio), 1e-6);
    EXPECT_EQ(tuned.back()["rules"], "tuned");
    const auto reports = runJson("--json --rules both --cues radio.cues radio.wav");
    ASSERT_THAT(reports, SizeIs(2));
    EXPECT_EQ(reports[0]["rules"], "standard");
    EXPECT_EQ(reports[0]["ads"], both.back()["ads"]);
    EXPECT_EQ(reports[1]["ads"], tuned.back()["ads"]);
    EXPECT_THAT(run("--rules tuned --no-model radio.wav").output,
                HasSubstr("radio.wav: 0:50.3 of audio, tuned rules\n"));
    EXPECT_FALSE(both.back().contains("rules")) << "the output names the rules only with --rules";
}

TEST_F(CommandLineTest, DrawsARecording) {
    recordWav("r&d <1>.wav", 660);
    write("radio.cues", std::string(adCues) + "{\"t\": 21, \"transcript\": \"promo code\"}\n");
    write("radio.txt", "20\t40\tad\n590\t630\tad\n");
    const auto reports =
        runJson("--json --picture p.svg --rules both --cues radio.cues --truth radio.txt 'r&d <1>.wav'");
    ASSERT_THAT(reports, SizeIs(2));

    // The intervals of the boxes in seconds. A row of 600 s is 1140 wide and begins at 70.
    std::map<std::string, std::vector<std::pair<double, double>>> boxes;
    std::vector<qsizetype> points;
    std::vector<QString> texts;
    double phraseAt = 0;
    QXmlStreamReader reader(QString::fromStdString(contentsOf(folder() / "p.svg")));
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const auto attributes = reader.attributes();
        const auto number = [&](const char* name) {
            return attributes.value(QLatin1String(name)).toDouble();
        };
        const QString kind = attributes.value(QLatin1String("class")).toString();
        constexpr double scale = 600.0 / 1140;
        if (reader.name() == QLatin1String("rect") &&
            number("width") != 18) {  // 18 is the width in the legend
            const double start = (number("x") - 70) * scale;
            boxes[kind.toStdString()].emplace_back(std::round(start * 2) / 2,
                                                   std::round(number("width") * scale * 2) / 2);
        } else if (reader.name() == QLatin1String("polyline")) {
            points.push_back(attributes.value(QLatin1String("points")).count(QLatin1Char(',')));
        } else if (reader.name() == QLatin1String("text")) {
            const double x = number("x");
            texts.push_back(reader.readElementText());
            phraseAt = texts.back() == QLatin1String("promo code") ? (x - 70) * scale : phraseAt;
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    EXPECT_THAT(texts,
                testing::IsSupersetOf({"r&d <1>.wav", "standard", "tuned", "labels", "0:00", "11:00"}));
    EXPECT_NEAR(phraseAt, 21, 0.1);
    EXPECT_THAT(points, testing::ElementsAre(1200, 1200, 121, 121)) << "both rules, row by row";
    EXPECT_THAT(boxes["truth"],
                testing::ElementsAre(std::pair(20.0, 20.0), std::pair(590.0, 10.0), std::pair(0.0, 30.0)));
    ASSERT_THAT(boxes["found"], SizeIs(2));
    for (std::size_t i = 0; i < 2; ++i) {
        const json ad = reports[i]["ads"][0];
        EXPECT_EQ(boxes["found"][i], std::pair(ad["start"].get<double>(), ad["length"].get<double>()));
    }
    EXPECT_THAT(boxes["session"], testing::Not(testing::IsEmpty()));
}

// Rescoring the hops must give the same result as the whole detector.
TEST_F(CommandLineTest, HopsCanBeScoredAnewByOtherRules) {
    recordWav("radio.wav", 90);
    write("radio.cues", std::string(adCues) + "{\"t\": 21, \"transcript\": \"promo code\"}\n"
                                              "{\"t\": 50, \"transcript\": \"\"}\n");
    write("radio.txt", "20\t40\tad\n");
    const auto hopsInto = [this](const std::string& name, const std::string& options) {
        ASSERT_EQ(run(options + " --hops --cues radio.cues radio.wav").status, 0);
        fs::copy_file(folder() / ".out", folder() / name);
    };
    hopsInto("radio.hops", "--transcribe");
    hopsInto("without", "");
    hopsInto("tuned", "--transcribe --rules tuned");
    const auto rescore = [this](const std::string& name, const std::string& request) {
        write("request", request);
        const std::string command = "cd '" + folder().string() + "' && '" SORDIN_RESCORE "' " + name +
                                    " radio.txt <request >.out 2>.err";
        return WEXITSTATUS(std::system(command.c_str()));
    };
    const auto answer = [&](const std::string& rules) {
        EXPECT_EQ(
            rescore("radio.hops", R"({"rules": )" + rules + R"(, "sensitivities": [0.5], "delays": true})"),
            0);
        const std::string lines = contentsOf(folder() / ".out");
        return json::parse(lines.substr(lines.find('\n'))).at(0);
    };
    const auto seconds = [this](const std::string& options) {
        double ads = 0;
        double all = 0;
        const auto reports = runJson("--json --truth radio.txt --cues radio.cues " + options + " radio.wav");
        for (const json& ad : reports[0]["ads"]) {
            all += ad["length"].get<double>();
            ads += std::max(0.0, std::min(40.0, ad["end"].get<double>()) -
                                     std::max(20.0, ad["start"].get<double>()));
        }
        json figures{ads, all - ads, reports[0]["ads"].size()};
        for (const char* delays : {"reaction", "lateRelease"}) {
            for (const char* part : {"median", "percentile90"}) {
                figures.push_back(reports[0]["truth"][delays][part]);
            }
        }
        return json::array({figures});
    };
    EXPECT_EQ(answer("{}"), json::array({seconds("--no-transcription"), seconds("")}));
    EXPECT_NE(seconds("--no-transcription"), seconds(""));
    const auto tuned = [] {
        constexpr DetectorRules rules = tunedRules();
        return json{{"audio", rules.weights.audio},
                    {"keywords", rules.weights.keywords},
                    {"boundary", rules.weights.boundary},
                    {"repetition", rules.weights.repetition},
                    {"timing", rules.weights.timing},
                    {"loudness", rules.weights.loudness},
                    {"boundaryMemory", rules.boundaryMemory},
                    {"smoothing", rules.smoothing},
                    {"keywordMemory", rules.keywordMemory},
                    {"keywordsFadeWhenHeard", rules.keywordsFadeWhenHeard},
                    {"keywordsAfterAd", rules.keywordsAfterAd},
                    {"strongMargin", rules.strongMargin},
                    {"strongRun", rules.strongRun},
                    {"weakRun", rules.weakRun},
                    {"exitMargin", rules.exitMargin},
                    {"holdSeconds", rules.holdSeconds}};
    }();
    EXPECT_EQ(answer(tuned.dump()),
              json::array({seconds("--rules tuned --no-transcription"), seconds("--rules tuned")}));

    const auto expectError = [&](const std::string& name, const std::string& request, const char* why) {
        EXPECT_EQ(rescore(name, request), 1);
        EXPECT_THAT(contentsOf(folder() / ".err"), HasSubstr(why));
    };
    expectError("tuned", "", "not what the standard rules give");
    expectError("without", "", "without:1: not a line of sordin-replay --hops --transcribe");
    expectError("radio.txt", "", "radio.txt:1: not a line");
    expectError("radio.hops", R"({"rules": {"music": 1}, "sensitivities": []})", "unknown names");
}

TEST_F(CommandLineTest, ReadsManyFormatsAlikeAndSilenceToo) {
    write("radio.cues", adCues);
    record("a.wav", 50, 16'000, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    record("b.flac", 50, 48'000, 2, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    record("c.ogg", 50, 44'100, 2, SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    record("d.au", 50, 8'000, 3, SF_FORMAT_AU | SF_FORMAT_ULAW);
    for (const std::string name : {"a.wav", "b.flac", "c.ogg", "d.au"}) {
        const json report = runJson("--json --no-transcription --cues radio.cues " + name).at(0);
        EXPECT_EQ(report["duration"], 50) << name;
        ASSERT_THAT(report["ads"], SizeIs(1)) << name;
        EXPECT_EQ(report["ads"][0]["start"], 22.5) << name;
    }
    const auto all = runJson("--json --no-model a.wav b.flac");
    ASSERT_THAT(all, SizeIs(2));
    EXPECT_EQ(all[1]["file"], "b.flac");

    save("silence.wav", std::vector<float>(16'000), 16'000, 1, wav);
    const auto hops = runJson("--hops --no-model silence.wav");
    ASSERT_THAT(hops, SizeIs(2));
    EXPECT_EQ(hops[1]["silent"], true);
    EXPECT_EQ(hops[1]["db"], nullptr);
    EXPECT_EQ(hops[1]["bands"], nullptr);
    EXPECT_THAT(hops[1]["contributions"], SizeIs(0));
}

// For every input, this model gives 1 / (1 + exp(-2)) for speech and 1 / (1 + exp(-1)) for singing.
TEST_F(CommandLineTest, HearsWithTheModelUnlessTheCuesNameScores) {
    auto random = seededRandom();
    SoundModel model = smallModel(random);
    model.labels = {{"speech", 0, 2}, {"music", 0, -2}, {"singing", 0, 1}};
    const Bytes file = fileOf(model);
    write("sound.bin", {reinterpret_cast<const char*>(file.data()), file.size()});
    recordWav("radio.wav", 10);
    write("words.cues", "{\"t\": 3, \"transcript\": \"promo code\"}\n");
    write("scores.cues", "{\"t\": 3, \"speech\": 0.5}\n");

    for (const std::string cues : {"", "--cues words.cues "}) {
        const auto hops = runJson("--hops --model sound.bin " + cues + "radio.wav");
        ASSERT_THAT(hops, SizeIs(20));
        EXPECT_EQ(hops[0]["speech"], 0) << "there is no result before one second";
        for (std::size_t i = 1; i < hops.size(); ++i) {
            EXPECT_NEAR(hops[i]["speech"].get<double>(), 1 / (1 + std::exp(-2)), 1e-6) << i;
            EXPECT_NEAR(hops[i]["music"].get<double>(), 1 / (1 + std::exp(-1)), 1e-6) << i;
            EXPECT_EQ(hops[i]["jingle"], 0) << i;
        }
    }
    const auto cued = runJson("--hops --model sound.bin --cues scores.cues radio.wav");
    EXPECT_EQ(cued[4]["speech"], 0);
    EXPECT_EQ(cued[5]["speech"], 0.5);
    EXPECT_EQ(cued[5]["music"], 0);
    EXPECT_EQ(runJson("--hops --no-model radio.wav")[5]["speech"], 0);
}

TEST_F(CommandLineTest, FindsTheCommercialsOfABroadcastAndKnowsThemAgain) {
    const std::string make = "'" SORDIN_MAKE_BROADCAST "' '" + folder().string() + "'";
    ASSERT_EQ(std::system(make.c_str()), 0);
    const std::string broadcast = "--cues broadcast.cues --truth broadcast.txt broadcast.flac";
    const json report = runJson("--json " + broadcast).at(0);
    EXPECT_GT(report["truth"]["recall"], 0.85);
    EXPECT_LT(report["truth"]["reaction"]["percentile90"], 4);
    EXPECT_THAT(report["ads"], SizeIs(2)) << "the break, and the commercial that is repeated later";

    // With the sound model, without transcription.
    const json heard = runJson("--json --no-transcription --truth broadcast.txt broadcast.flac").at(0);
    EXPECT_GT(heard["truth"]["recall"], 0.75);
    EXPECT_LT(heard["truth"]["falseSecondsPerHour"], 400);
    ASSERT_THAT(heard["ads"], SizeIs(2));
    EXPECT_THAT(heard["ads"][0]["reasons"], testing::Not(testing::Contains("Repetition")));
    EXPECT_THAT(heard["ads"][1]["reasons"], testing::Contains("Repetition"));

    const auto silenced = runJson("--hops --no-transcription " + broadcast);
    for (const json& hop : silenced) {
        ASSERT_EQ(hop.value("transcribing", false), false);
        ASSERT_EQ(hop.value("keyword", 0.0), 0);
    }
    EXPECT_EQ(silenced.back()["file"], "broadcast.flac") << "with labels, the figures are the last line";
}

TEST_F(CommandLineTest, SaysInOneLineWhatIsWrong) {
    recordWav("good.wav", 2);
    recordWav("none.wav", 0);
    write("empty.wav", "");
    write("text.wav", "this is no sound");
    write("bad.cues", "{\"t\": 1}\nnonsense\n");
    write("bad.bin", "SORDINSM");
    const auto expectError = [&](int status, const std::string& arguments, const std::string& why) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status) << arguments;
        EXPECT_EQ(outcome.output.rfind("sordin-replay: ", 0), 0U) << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr(why)) << arguments;
        EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1) << outcome.output;
    };
    expectError(1, "nowhere.wav", "nowhere.wav: No such file or directory");
    expectError(1, ".", ".: is a folder");
    expectError(1, "empty.wav", "empty.wav: the file is empty");
    expectError(1, "--no-model none.wav", "none.wav: the recording contains no audio");
    expectError(1, "text.wav", "text.wav: unsupported audio format");
    expectError(1, "--cues bad.cues good.wav", "bad.cues:2: not a JSON object");
    expectError(1, "--cues nowhere.cues good.wav", "nowhere.cues: No such file or directory");
    expectError(1, "--truth nowhere.txt good.wav", "nowhere.txt: No such file or directory");
    expectError(1, "--model bad.bin good.wav", "bad.bin: not a sound model");
    expectError(1, "--model nowhere.bin good.wav", "nowhere.bin: No such file or directory");
    expectError(2, "--model bad.bin --no-model good.wav", "exclude each other");
    expectError(2, "", "no recording given");
    expectError(2, "--nonsense good.wav", "bad option '--nonsense'");
    expectError(2, "--hops=5 good.wav", "bad option");
    expectError(2, "good.wav --cues", "--cues needs a value");
    expectError(2, "--threshold 1.5 good.wav", "--threshold takes a number from 0 to 1, not '1.5'");
    expectError(2, "--sensitivity high good.wav", "--sensitivity takes a number");
    expectError(2, "--threshold 0.5 --sensitivity 0.5 good.wav", "exclude each other");
    expectError(2, "--cues bad.cues good.wav good.wav", "one recording only");
    expectError(2, "--picture p.svg good.wav good.wav", "one recording only");
    expectError(2, "--rules new good.wav", "--rules takes standard, tuned or both, not 'new'");
    expectError(2, "--rules both --hops good.wav", "one set of rules only");
    EXPECT_THAT(run("--no-model --picture nowhere/p.svg good.wav").output,
                HasSubstr("sordin-replay: nowhere/p.svg: No such file or directory\n"));
    EXPECT_EQ(run("good.wav nowhere.wav").status, 1);
    EXPECT_THAT(run("--no-model nowhere.wav good.wav").output,
                HasSubstr("good.wav: 0:02.0 of audio\nno ads found\n"));

    const std::string full =
        "cd '" + folder().string() + "' && '" SORDIN_REPLAY "' good.wav >/dev/full 2>.err";
    EXPECT_EQ(WEXITSTATUS(std::system(full.c_str())), 1);
    EXPECT_THAT(contentsOf(folder() / ".err"), HasSubstr("cannot write the output"));
}

TEST_F(CommandLineTest, ReportsWhatItReadOfADamagedRecording) {
    recordWav("cut.wav", 10);
    fs::resize_file(folder() / "cut.wav", 44 + 32'000 * 4);
    record("cut.flac", 10, 16'000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    fs::resize_file(folder() / "cut.flac", fs::file_size(folder() / "cut.flac") / 2);
    EXPECT_THAT(run("cut.wav").output, HasSubstr("cut.wav: 0:04.0 of audio\n"))
        << "a truncated WAV file ends where its data ends";
    const auto flac = run("cut.flac");
    EXPECT_EQ(flac.status, 1);
    EXPECT_THAT(flac.output, HasSubstr(" of audio\n"));
    EXPECT_THAT(flac.output, HasSubstr("cut.flac: the recording is damaged"));
}

TEST_F(CommandLineTest, ExplainsItself) {
    const auto help = run("--help");
    EXPECT_EQ(help.status, 0);
    for (const std::string option :
         {"--json", "--hops", "--cues", "--truth", "--model", "--no-model", "--threshold", "--sensitivity",
          "--rules", "--picture", "--no-transcription", "--version"}) {
        EXPECT_THAT(help.output, HasSubstr(option));
        EXPECT_THAT(contentsOf(SORDIN_REPLAY_MANUAL), HasSubstr("Fl -" + option.substr(2)))
            << "the manual lacks this option";
    }
    EXPECT_THAT(run("--version").output, MatchesRegex("sordin-replay [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
}  // namespace sordin::replay

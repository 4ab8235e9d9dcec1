// SPDX-License-Identifier: MIT
// The real decoder in its process, with the installed models.
#include "detection/keyword_transcript_scorer.h"
#include "platform/linux/speech/decoder_process.h"
#include "platform/linux/speech/linux_speech_recogniser.h"
#include "platform/on_device_transcriber.h"
#include "replay/audio_file.h"
#include "rig/temporary_folder.h"
#include "support/manual_serial_queue.h"
#include "support/own_files.h"
#include "support/program_path.h"

#include <gmock/gmock.h>

#include <csignal>
#include <span>

namespace sordin {
namespace {

namespace fs = std::filesystem;

fs::path helper() {
    return findHelper(programPath(""), "sordin-speech-decoder").value();
}

std::vector<float> recording() {
    std::vector<float> samples;
    replay::AudioFile(SORDIN_SPEECH_CLIPS "/sponsored.flac")
        .readBuffers([&](const std::vector<float>& piece) {
            samples.insert(samples.end(), piece.begin(), piece.end());
        });
    return samples;
}

TEST(LinuxSpeechRecogniser, HearsAnAdvertisementAsItIsSpoken) {
    const std::vector<float> samples = recording();
    std::vector<std::string> texts;
    for (int round = 0; round < 2; ++round) {
        const auto recogniser =
            linuxSpeechRecogniser(std::make_shared<ManualSerialQueue>("sordin.speech"), programPath(""));
        OnDeviceTranscriber transcriber(recogniser);
        ASSERT_TRUE(transcriber.available() && transcriber.authorised());
        transcriber.begin();
        float early = 0;
        for (std::size_t at = 0; at < samples.size(); at += 320) {
            const auto buffer =
                std::span(samples).subspan(at, std::min<std::size_t>(320, samples.size() - at));
            transcriber.append(PcmBuffer({16'000, 1}, {buffer.begin(), buffer.end()}));
            recogniser->drain();
            if (at == 2U * 16'000) {
                early = KeywordTranscriptScorer().score(transcriber.text());
            }
        }
        EXPECT_GT(early, 0.8F) << "the sponsor is named at the beginning";
        EXPECT_EQ(KeywordTranscriptScorer().score(transcriber.text()), 1) << transcriber.text();
        texts.push_back(transcriber.text());
    }
    EXPECT_EQ(texts[0], texts[1]) << "decoding must be deterministic";
}

TEST(LinuxSpeechRecogniser, IsNotAvailableWithoutItsModel) {
    const TemporaryFolder elsewhere;
    writeText(elsewhere / "CMakeCache.txt", "");  // a build tree without models
    const auto recogniser =
        linuxSpeechRecogniser(std::make_shared<ManualSerialQueue>("sordin.speech"), elsewhere / "program");
    EXPECT_FALSE(recogniser->authorised() || recogniser->canRequestAuthorisation() ||
                 recogniser->available());
}

TEST(DecoderProcess, TellsWhenItDies) {
    DecoderProcess decoder(helper(), speechModelFiles(programPath("")));
    decoder.begin();
    const std::vector<std::int16_t> silence(8000);
    decoder.process(silence);
    EXPECT_TRUE(decoder.words().empty());
    kill(decoder.pid(), SIGKILL);
    EXPECT_THROW(
        {
            for (;;) {
                decoder.process(silence);
            }
        },
        SpeechDecoderError);
    EXPECT_THROW(static_cast<void>(decoder.words()), SpeechDecoderError);
    decoder.end();
}

/// Whether a decoder rejects these files with one line. If not, it must work or fail like any other decoder.
bool refused(const SpeechModelFiles& files) {
    try {
        DecoderProcess decoder(helper(), files);
        try {
            decoder.begin();
            decoder.process(std::vector<std::int16_t>(16'000, 1000));
            static_cast<void>(decoder.words());
        } catch (const SpeechDecoderError&) {
        }
        return false;
    } catch (const SpeechDecoderError& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
        return true;
    }
}

TEST(DecoderProcess, DamagedModelsHarmNobody) {
    const SpeechModelFiles whole = speechModelFiles(programPath(""));
    const TemporaryFolder folder;
    EXPECT_FALSE(refused(whole));
    EXPECT_THROW(DecoderProcess(folder / "nothing", whole), SpeechDecoderError);
    EXPECT_THROW(DecoderProcess("/bin/true", whole), SpeechDecoderError);

    const auto cut = [&](const fs::path& path, double share) {
        const std::string content = contentsOf(path);
        const auto length = static_cast<std::size_t>(share * static_cast<double>(content.size()));
        const fs::path shortened = folder / path.filename().string();
        writeText(shortened, content.substr(0, length));
        return shortened;
    };
    for (const double share : {0.0, 0.5}) {
        SpeechModelFiles files = whole;
        files.mask = cut(whole.mask, share);
        EXPECT_FALSE(refused(files)) << "the decoder works without the mask";
        files = whole;
        files.advertisingLanguage = cut(whole.advertisingLanguage, share);
        EXPECT_TRUE(refused(files)) << share;
        files = whole;
        files.generalLanguage = cut(whole.generalLanguage, share);
        EXPECT_TRUE(refused(files)) << share;
        for (const std::string part : {"means", "mdef", "sendump", "transition_matrices"}) {
            files = whole;
            files.acousticModel = folder / "acoustic";
            fs::remove_all(files.acousticModel);
            fs::copy(whole.acousticModel, files.acousticModel);
            fs::rename(cut(whole.acousticModel / part, share), files.acousticModel / part);
            // The library does not detect some damage. Results are then arbitrary.
            EXPECT_TRUE(refused(files) || (share > 0 && part != "means")) << part << " " << share;
        }
    }
}

}  // namespace
}  // namespace sordin

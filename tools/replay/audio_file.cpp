// SPDX-License-Identifier: MIT
#include "replay/audio_file.h"

#include "replay/input_file.h"

#include <sndfile.h>

#include <stdexcept>

namespace sordin::replay {

namespace {

/// Reports why a file cannot be read at all, because libsndfile's messages for that are vague.
void checkReadable(const std::string& path) {
    auto file = openInput(path);
    if (file.peek() == std::ifstream::traits_type::eof()) {
        throw InputError(path + ": the file is empty");
    }
}

}  // namespace

/// A libsndfile handle that averages channels.
class AudioFile::Decoder {
public:
    explicit Decoder(const std::string& path) : file_(sf_open(path.c_str(), SFM_READ, &info_), sf_close) {
        if (!file_) {
            throw InputError(path + ": unsupported audio format (" + message(nullptr) +
                             "). --help lists the supported formats; convert other files first, for example: "
                             "ffmpeg -i FILE -ac 1 -ar 16000 out.wav");
        }
        if (info_.channels < 1 || info_.samplerate < 1) {
            throw InputError(path + ": the recording has no channels or no sample rate");
        }
    }

    [[nodiscard]] double sampleRate() const { return info_.samplerate; }

    /// Replaces `mono` with up to a second of audio; empty at the end.
    void read(std::vector<float>& mono) {
        const auto channels = static_cast<std::size_t>(info_.channels);
        interleaved_.resize(static_cast<std::size_t>(info_.samplerate) * channels);
        const sf_count_t got = sf_readf_float(file_.get(), interleaved_.data(), info_.samplerate);
        const auto frames = static_cast<std::size_t>(got < 0 ? 0 : got);
        position_ += static_cast<double>(frames);
        mono.assign(frames, 0);
        for (std::size_t frame = 0; frame < frames; ++frame) {
            float sum = 0;
            for (std::size_t channel = 0; channel < channels; ++channel) {
                sum += interleaved_[frame * channels + channel];
            }
            mono[frame] = sum / static_cast<float>(channels);
        }
    }

    [[nodiscard]] double position() const { return position_; }

    [[nodiscard]] std::optional<double> length() const {
        if (info_.frames <= 0 || info_.frames == SF_COUNT_MAX) {
            return std::nullopt;
        }
        return static_cast<double>(info_.frames);
    }

    [[nodiscard]] std::optional<std::string> error() const {
        if (sf_error(file_.get()) == SF_ERR_NO_ERROR) {
            return std::nullopt;
        }
        return message(file_.get());
    }

private:
    static std::string message(SNDFILE* file) {
        std::string text = sf_strerror(file);
        while (!text.empty() && (text.back() == '.' || text.back() == '\n')) {
            text.pop_back();
        }
        return text;
    }

    SF_INFO info_{};
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file_;
    std::vector<float> interleaved_;
    double position_ = 0;  // frames read
};

AudioFile::AudioFile(const std::string& path) {
    checkReadable(path);
    decoder_ = std::make_unique<Decoder>(path);
    try {
        resampler_.emplace(decoder_->sampleRate(), replayRate);
    } catch (const std::invalid_argument&) {
        throw InputError(path + ": cannot replay a sample rate of " +
                         std::to_string(static_cast<long>(decoder_->sampleRate())) + " Hz");
    }
}

AudioFile::~AudioFile() = default;

bool AudioFile::read(std::vector<float>& samples) {
    if (ended_) {
        return false;
    }
    decoder_->read(mono_);
    if (mono_.empty()) {
        ended_ = true;
        resampler_->finish(samples);
        const auto length = decoder_->length();
        damage_ = decoder_->error();
        if (!damage_ && length && decoder_->position() < *length) {
            damage_ = "the file is truncated";
        }
        return !samples.empty();
    }
    resampler_->process(mono_, samples);
    return true;
}

void AudioFile::readBuffers(const std::function<void(std::vector<float>)>& take,
                            const std::function<void(std::optional<double>)>& onProgress) {
    // A hop is a whole number of buffers, so that the replay's clock stands exactly at the end of each hop.
    constexpr std::ptrdiff_t bufferFrames = 320;
    std::vector<float> waiting;
    bool more = true;
    while (more) {
        more = read(waiting);
        auto begin = waiting.begin();
        for (; waiting.end() - begin >= bufferFrames; begin += bufferFrames) {
            take({begin, begin + bufferFrames});
        }
        waiting.erase(waiting.begin(), begin);
        if (onProgress) {
            onProgress(progress());
        }
    }
    if (!waiting.empty()) {
        take(std::move(waiting));
    }
}

std::optional<double> AudioFile::progress() const {
    const auto length = decoder_->length();
    if (!length) {
        return std::nullopt;
    }
    return decoder_->position() / *length;
}

}  // namespace sordin::replay

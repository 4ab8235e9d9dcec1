// SPDX-License-Identifier: MIT
#include "platform/decoding_recogniser.h"

#include "platform/spoken_text.h"
#include "support/resampler.h"
#include "support/sample_conversion.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace sordin {

namespace {

using Nanoseconds = std::int64_t;
constexpr Nanoseconds longestLag = 2'000'000'000;

/// 0 for a rate that cannot be one.
Nanoseconds lengthOf(const PcmBuffer& buffer) {
    const double seconds = static_cast<double>(buffer.frameLength()) / buffer.format().sampleRate;
    return seconds > 0 && seconds < 3600 ? std::llround(1e9 * seconds) : 0;
}

}  // namespace

/// The decoder and the session it works for. Everything but what is atomic belongs to the queue.
class DecodingRecogniser::Worker {
public:
    struct Order {
        TextHandler onText;
        ErrorHandler onError;
        std::atomic<bool> wanted = true;  // nobody has finished it yet
        std::atomic<bool> fed = false;
    };

    explicit Worker(std::function<std::unique_ptr<SpeechDecoder>()> load) : load_(std::move(load)) {}

    std::atomic<Nanoseconds> waiting = 0;  // audio that was appended and not heard
    std::atomic<bool> broken = false;

    void begin(std::shared_ptr<Order> order) {
        resting_ = false;
        if (!order->wanted && !order->fed) {
            return;  // over before it began
        }
        if (order_ != nullptr) {
            decoder_->end();
        }
        order_ = std::move(order);
        resampler_.reset();
        text_.clear();
        heard_ = 0;
        try {
            if (decoder_ == nullptr) {
                decoder_ = loaded();
            }
            decoder_->begin();
        } catch (const SpeechDecoderError& error) {
            fail(error);
        }
    }

    void hear(const std::shared_ptr<Order>& order, double rate, std::span<const float> samples) {
        if (order != order_) {
            return;
        }
        try {
            hear(rate, samples);
        } catch (const SpeechDecoderError& error) {
            fail(error);
        }
    }

    void end(const std::shared_ptr<Order>& order) {
        if (order == order_) {
            try {
                decoder_->end();
                tell();
                order_ = nullptr;
            } catch (const SpeechDecoderError& error) {
                fail(error);
            }
        }
        if (resting_) {
            rest();
        }
    }

    void rest() {
        resting_ = true;
        if (order_ == nullptr) {
            decoder_ = nullptr;
        }
    }

    void close() {
        order_ = nullptr;
        decoder_ = nullptr;
    }

private:
    [[nodiscard]] std::unique_ptr<SpeechDecoder> loaded() {
        try {
            return load_();
        } catch (const SpeechDecoderError&) {
            broken = true;
            throw;
        }
    }

    void hear(double rate, std::span<const float> samples) {
        const unsigned wanted = decoder_->sampleRate();
        if (!resampler_ || rate != rate_) {
            resampler_ = makeResampler(rate, wanted);
            rate_ = rate;
        }
        if (!resampler_) {
            return;
        }
        resampled_.clear();
        resampler_->process(samples, resampled_);
        integers_.resize(resampled_.size());
        std::transform(resampled_.begin(), resampled_.end(), integers_.begin(), toInteger);
        // Pieces of half a second: a long buffer must not come as one text.
        const std::size_t interval = wanted / 2;
        for (std::span<const std::int16_t> rest = integers_; !rest.empty();) {
            const auto piece = rest.first(std::min(rest.size(), interval - heard_));
            decoder_->process(piece);
            heard_ += piece.size();
            if (heard_ == interval) {
                heard_ = 0;
                tell();
            }
            rest = rest.subspan(piece.size());
        }
    }

    [[nodiscard]] static std::optional<Resampler> makeResampler(double from, double to) {
        try {
            return Resampler(from, to);
        } catch (const std::invalid_argument&) {
            return std::nullopt;  // a rate that nothing can play: it has no words
        }
    }

    void tell() {
        std::string text = spokenText(decoder_->words());
        if (text != text_) {
            text_ = std::move(text);
            order_->onText(text_);
        }
    }

    void fail(const SpeechDecoderError& error) {
        decoder_ = nullptr;
        const auto order = std::exchange(order_, nullptr);
        order->onError(error.what());
    }

    const std::function<std::unique_ptr<SpeechDecoder>()> load_;
    std::unique_ptr<SpeechDecoder> decoder_;
    bool resting_ = false;
    std::shared_ptr<Order> order_;  // of the session that runs; with it there is a decoder
    double rate_ = 0;
    std::optional<Resampler> resampler_;
    std::vector<float> resampled_;
    std::vector<std::int16_t> integers_;
    std::size_t heard_ = 0;  // samples since the last text
    std::string text_;
};

class DecodingRecogniser::Session final : public SpeechSession {
public:
    Session(std::weak_ptr<SerialQueue> queue, std::shared_ptr<Worker> worker,
            std::shared_ptr<Worker::Order> order)
        : queue_(std::move(queue)), worker_(std::move(worker)), order_(std::move(order)) {}
    ~Session() override { finish(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void append(const PcmBuffer& buffer) override {
        const auto queue = queue_.lock();
        const Nanoseconds length = lengthOf(buffer);
        if (!queue || ended_ || length == 0 || worker_->waiting > longestLag) {
            return;
        }
        worker_->waiting += length;
        order_->fed = true;
        const auto channel = buffer.channel(0);
        queue->post([worker = worker_, order = order_, rate = buffer.format().sampleRate, length,
                     samples = std::vector<float>(channel.begin(), channel.end())] {
            worker->hear(order, rate, samples);
            worker->waiting -= length;
        });
    }

    void endAudio() override { ended_ = true; }

    void finish() override {
        ended_ = true;
        const auto queue = queue_.lock();
        if (queue && order_->wanted.exchange(false)) {
            queue->post([worker = worker_, order = order_] { worker->end(order); });
        }
    }

private:
    const std::weak_ptr<SerialQueue> queue_;
    const std::shared_ptr<Worker> worker_;
    const std::shared_ptr<Worker::Order> order_;
    std::atomic<bool> ended_ = false;
};

DecodingRecogniser::DecodingRecogniser(std::shared_ptr<SerialQueue> queue, Model model)
    : queue_(std::move(queue)),
      installed_(std::move(model.installed)),
      interrupt_(std::move(model.interrupt)),
      worker_(std::make_shared<Worker>(std::move(model.load))) {}

DecodingRecogniser::~DecodingRecogniser() {
    if (interrupt_) {
        interrupt_();  // else whoever ends the queue would wait for a decoder that hangs
    }
    queue_->post([worker = worker_] { worker->close(); });
}

bool DecodingRecogniser::authorised() const {
    return installed_();
}

bool DecodingRecogniser::canRequestAuthorisation() const {
    return installed_();
}

void DecodingRecogniser::requestAuthorisation(std::function<void()> done) {
    done();
}

bool DecodingRecogniser::available() const {
    return !worker_->broken && installed_();
}

std::shared_ptr<SpeechSession> DecodingRecogniser::start(TextHandler onText, ErrorHandler onError) {
    auto order = std::make_shared<Worker::Order>();
    order->onText = std::move(onText);
    order->onError = std::move(onError);
    queue_->post([worker = worker_, order] { worker->begin(order); });
    return std::make_shared<Session>(queue_, worker_, std::move(order));
}

void DecodingRecogniser::drain() {
    queue_->sync([] {});
}

void DecodingRecogniser::rest() {
    queue_->post([worker = worker_] { worker->rest(); });
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "audio/listener.h"

#include "detection/captured_audio.h"
#include "platform/audio_process_inspector.h"
#include "support/asio_serial_queue.h"
#include "volume/output_device.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace sordin::audio {

/// Measures levels. Use it on the audio queue only.
class Listener::Meter {
public:
    Meter(std::shared_ptr<AudioObjects> objects, const ProcessDirectory& directory, Printer& printer)
        : objects_(std::move(objects)), inspector_(*objects_, directory), printer_(printer) {}

    void hear(const CapturedAudio& audio) {
        const auto buffer = pcmBuffer(audio);
        if (!buffer) {
            return;
        }
        for (std::size_t frame = 0; frame < buffer->frameLength(); ++frame) {
            const auto sample = static_cast<double>(buffer->channel(0)[frame]);
            energy_ += sample * sample;
            level_.peak = std::max(level_.peak, std::fabs(sample));
            if (++level_.frames == SystemAudioCapture::sampleRate / 2) {
                report();
            }
        }
    }

private:
    void report() {
        level_.rms = std::sqrt(energy_ / static_cast<double>(level_.frames));
        if (const auto device = defaultOutputDevice(*objects_)) {
            const auto record = objects_->record(*device);
            level_.device = record ? record->name : "";
            level_.volume = outputVolume(*objects_, *device);
        }
        level_.playing = inspector_.activeOutputApps();
        level_.source = inspector_.likelySource();
        printer_.level(level_);
        level_ = {};
        energy_ = 0;
    }

    const std::shared_ptr<AudioObjects> objects_;
    const AudioProcessInspector inspector_;
    Printer& printer_;
    Level level_;
    double energy_ = 0;
};

Listener::Listener(std::unique_ptr<SystemAudioCapture> capture, std::shared_ptr<AudioObjects> objects,
                   const ProcessDirectory& directory, Printer& printer)
    : printer_(printer),
      queue_(std::make_shared<AsioSerialQueue>("sordin.audio")),
      meter_(std::make_shared<Meter>(std::move(objects), directory, printer)),
      capture_(std::move(capture)) {
    capture_->onStop([this](const auto& failure) {
        printer_.state("ended", failure ? failure->description : "");
        start();
    });
}

Listener::~Listener() = default;

void Listener::start() {
    const auto handler = [meter = meter_](const CapturedAudio& audio) { meter->hear(audio); };
    capture_->start(queue_, handler, [this](const auto& failure) {
        printer_.state(failure ? "not listening" : "listening", failure ? failure->description : "");
        const bool worthwhile = failure && (failure->error == SystemAudioCapture::Error::unreachable ||
                                            failure->error == SystemAudioCapture::Error::noOutput ||
                                            failure->error == SystemAudioCapture::Error::connectionLost);
        if (worthwhile) {
            start();
        }
    });
}

void Listener::stop() {
    capture_->stop([this] { printer_.state("stopped"); });
}

}  // namespace sordin::audio

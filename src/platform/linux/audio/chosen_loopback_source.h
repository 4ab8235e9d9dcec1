// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/server_choice.h"
#include "platform/loopback_source.h"

#include <memory>

namespace sordin {

/// Captures all applications through the audio server that plays the sound.
class ChosenLoopbackSource final : public LoopbackSource {
public:
    /// None of the arguments may be null.
    ChosenLoopbackSource(std::shared_ptr<ServerChoice> choice, std::unique_ptr<LoopbackSource> pipeWire,
                         std::unique_ptr<LoopbackSource> pulse);
    ~ChosenLoopbackSource() override;
    ChosenLoopbackSource(const ChosenLoopbackSource&) = delete;
    ChosenLoopbackSource& operator=(const ChosenLoopbackSource&) = delete;

    void onChange(std::function<void()> handler) override;
    [[nodiscard]] std::optional<Obstacle> obstacle() override;
    void open(Handlers handlers) override;
    void close() override;
    void setWanted(bool wanted) override;
    [[nodiscard]] bool outdated() const override;
    [[nodiscard]] SystemAudioCapture::Failure failure(SystemAudioCapture::Error error) const override;

private:
    [[nodiscard]] LoopbackSource& chosen() const;

    const std::shared_ptr<ServerChoice> choice_;
    const std::unique_ptr<LoopbackSource> pipeWire_;
    const std::unique_ptr<LoopbackSource> pulse_;
    LoopbackSource* open_ = nullptr;  // the open one
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "platform/linux/pulse/audio_objects.h"

#include <chrono>
#include <utility>

namespace sordin::pulse {

namespace {

/// module-device-restore stores volumes ten seconds after the first change.
constexpr auto rememberingTime = std::chrono::seconds(12);

}  // namespace

PulseAudioObjects::PulseAudioObjects(std::shared_ptr<Session> session)
    : ServerAudioObjects(
          std::move(session),
          [this](Index sink, const VolumeProps& volume) {
              if (this->session().connected()) {
                  this->session().connection().setSinkVolume(sink, volume);
              }
          },
          rememberingTime) {
    this->session().add(*this);
}

PulseAudioObjects::~PulseAudioObjects() {
    session().remove(*this);
}

void PulseAudioObjects::disconnecting() {
    tell(table().clear());
}

void PulseAudioObjects::graphChanged() {
    if (!session().ready()) {
        return;
    }
    const Catalogue& catalogue = session().catalogue();
    AudioObjectTable::State state;
    state.defaultSink = catalogue.defaultSink;
    for (const auto& [index, sink] : catalogue.sinks) {
        state.sinks.push_back({index, sink.name, sink.port, sink.volume});
    }
    for (const auto& entry : catalogue.players) {
        const Player& player = entry.second;
        const auto process = catalogue.processOf(player);
        if (process && catalogue.isAudible(player)) {
            bool& plays = state.players[*process];
            plays = plays || catalogue.plays(player);
        }
    }
    tell(table().update(state));
}

}  // namespace sordin::pulse

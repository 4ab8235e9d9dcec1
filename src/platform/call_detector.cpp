// SPDX-License-Identifier: MIT
#include "platform/call_detector.h"

#include <algorithm>

namespace sordin {

std::optional<Call> callAmong(const std::vector<ApplicationStream>& streams) {
    using Kind = ApplicationStream::Kind;
    const auto found = [&streams](auto condition) -> std::optional<Call> {
        const auto stream = std::find_if(streams.begin(), streams.end(), condition);
        return stream != streams.end() ? std::optional(Call{stream->program, stream->process, stream->name})
                                       : std::nullopt;
    };
    if (auto marked = found([](const ApplicationStream& each) { return each.kind == Kind::playsCall; })) {
        return marked;
    }
    return found([&streams](const ApplicationStream& player) {
        return player.kind == Kind::plays &&
               std::any_of(streams.begin(), streams.end(), [&player](const ApplicationStream& other) {
                   return other.kind == Kind::records && other.program == player.program;
               });
    });
}

void CallDetector::streamsChanged(const std::vector<ApplicationStream>& streams) {
    auto now = callAmong(streams);
    if (now == latest_) {
        return;
    }
    latest_ = std::move(now);
    settling_.cancel();
    if (latest_ != settled_) {
        settling_ = queue_->after(settlingTime, [this] {
            settled_ = latest_;
            changed_(settled_);
        });
    }
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include "engine/engine_fixture.h"

#include <QDateTime>

namespace sordin {

/// An ad that started this many seconds ago.
inline AdEvent adAgo(const QString& app, double ago, double duration,
                     AdEvent::Kind kind = AdEvent::Kind::muted) {
    return {
        QUuid::createUuid(), currentReferenceDate() - ago, duration, app, 0.857, {"Audio", "Keywords"}, kind};
}

/// The real engine with a history made by the test.
class UiTest : public EngineTest {
protected:
    UiTest() { create(); }

    void beginListening() {
        capture->completion(std::nullopt);
        settle();
    }
    /// Adds an event, as at the end of an ad.
    void add(const AdEvent& event) {
        AdHistory history = engine->history();
        history.insert(history.begin(), event);
        engine->setHistory(std::move(history));
    }
};

}  // namespace sordin

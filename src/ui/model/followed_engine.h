// SPDX-License-Identifier: MIT
#pragma once

#include "engine/sordin_engine.h"

#include <QObject>
#include <QPointer>

namespace sordin {

/// The engine that an object shows; initially null, and null again after the engine is destroyed.
class FollowedEngine {
public:
    /// Sets the engine and disconnects `follower` from the previous one. Returns false if the engine is the
    /// same.
    bool change(SordinEngine* engine, const QObject* follower) {
        if (engine == engine_) {
            return false;
        }
        if (engine_) {
            engine_->disconnect(follower);
        }
        engine_ = engine;
        return true;
    }

    [[nodiscard]] SordinEngine* get() const { return engine_; }
    [[nodiscard]] SordinEngine* operator->() const { return engine_; }
    [[nodiscard]] explicit operator bool() const { return !engine_.isNull(); }

private:
    QPointer<SordinEngine> engine_;
};

}  // namespace sordin

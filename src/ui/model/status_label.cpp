// SPDX-License-Identifier: MIT
#include "ui/model/status_label.h"

namespace sordin {

using Kind = EngineStatus::Kind;

void StatusLabel::setEngine(SordinEngine* engine) {
    if (!engine_.change(engine, this)) {
        return;
    }
    if (engine_) {
        connect(engine_.get(), &SordinEngine::statusChanged, this, &StatusLabel::changed);
        connect(engine_.get(), &SordinEngine::testModeChanged, this, &StatusLabel::changed);
        connect(engine_.get(), &SordinEngine::callAppChanged, this, &StatusLabel::changed);
    }
    Q_EMIT engineChanged();
    Q_EMIT changed();
}

QString StatusLabel::text() const {
    if (!engine_) {
        return {};
    }
    const EngineStatus& status = engine_->status();
    const bool test = engine_->testMode();
    switch (status.kind()) {
    case Kind::disabled:
        return tr("Paused");
    case Kind::needsPermission:
        return tr("Needs permission");
    case Kind::starting:
        return tr("Starting…");
    case Kind::listening:
        return test ? tr("Listening (test mode)") : tr("Listening");
    case Kind::mutingAd:
        return test ? tr("Ad detected (test: not muted)") : tr("Ad detected, muted");
    case Kind::failed:
        break;
    }
    return status.message();
}

QString StatusLabel::callText() const {
    return engine_ && !engine_->callApp().isEmpty() ? tr("A call is on: %1").arg(engine_->callApp())
                                                    : QString();
}

StatusLabel::Tone StatusLabel::tone() const {
    switch (engine_ ? engine_->status().kind() : Kind::disabled) {
    case Kind::disabled:
        return Tone::gray;
    case Kind::starting:
        return Tone::yellow;
    case Kind::listening:
        return Tone::green;
    case Kind::mutingAd:
        return Tone::red;
    case Kind::needsPermission:
    case Kind::failed:
        break;
    }
    return Tone::orange;
}

}  // namespace sordin

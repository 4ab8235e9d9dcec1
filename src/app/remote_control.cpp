// SPDX-License-Identifier: MIT
#include "app/remote_control.h"

namespace sordin {

namespace {

/// The values of the property Status. Scripts compare them: do not change them.
QString word(const SordinEngine& engine) {
    using Kind = EngineStatus::Kind;
    switch (engine.status().kind()) {
    case Kind::disabled:
        return QStringLiteral("off");
    case Kind::needsPermission:
        return QStringLiteral("permission");
    case Kind::starting:
        return engine.onboardingComplete() ? QStringLiteral("starting") : QStringLiteral("waiting");
    case Kind::listening:
        return QStringLiteral("listening");
    case Kind::mutingAd:
        return QStringLiteral("ad");
    case Kind::failed:
        break;
    }
    return QStringLiteral("failed");
}

}  // namespace

RemoteControl::RemoteControl(SordinEngine& engine, ApplicationService& service) : engine_(engine) {
    label_.setEngine(&engine);
    interface_.emplace(service, ControlInterface::Program{[this] { return state(); },
                                                          [&engine](bool enabled) {
                                                              // A setter acts and saves even if the value is
                                                              // the same.
                                                              if (enabled != engine.isEnabled()) {
                                                                  engine.setIsEnabled(enabled);
                                                              }
                                                          },
                                                          [&engine] { engine.restoreVolume(); },
                                                          [&engine](bool tuned) {
                                                              if (tuned != engine.tunedDetection()) {
                                                                  engine.setTunedDetection(tuned);
                                                              }
                                                          },
                                                          [&engine](const QStringList& ids) {
                                                              if (ids != engine.ignoredApplications()) {
                                                                  engine.setIgnoredApplications(ids);
                                                              }
                                                          }});
    QObject::connect(&label_, &StatusLabel::changed, &*interface_, &ControlInterface::stateChanged);
    for (const auto signal : {&SordinEngine::isEnabledChanged, &SordinEngine::onboardingCompleteChanged,
                              &SordinEngine::adActiveChanged, &SordinEngine::adFadedChanged,
                              &SordinEngine::currentAppChanged, &SordinEngine::tunedDetectionChanged,
                              &SordinEngine::callAppChanged, &SordinEngine::ignoredApplicationsChanged}) {
        QObject::connect(&engine, signal, &*interface_, &ControlInterface::stateChanged);
    }
}

ControlInterface::State RemoteControl::state() const {
    const bool ad = engine_.adActive();
    return {word(engine_),        label_.text(),
            engine_.isEnabled(),  ad,
            engine_.adFaded(),    ad ? engine_.currentApp() : QString(),
            engine_.confidence(), engine_.tunedDetection(),
            engine_.callApp(),    engine_.ignoredApplications()};
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
// Excludes calls and ignored applications from listening.
#include "engine/engine_log.h"
#include "engine/sordin_engine.h"

#include <set>
#include <utility>

namespace sordin {

namespace {

constexpr qsizetype longestId = 255;  // bytes; the maximum length of a file name
constexpr qsizetype mostIds = 256;

}  // namespace

void SordinEngine::watchStreams() {
    parts_.streams->onChange(posting([](SordinEngine& engine, const std::vector<ApplicationStream>& streams) {
        engine.calls_.streamsChanged(streams);
    }));
    pushLeftOut();
}

void SordinEngine::callChanged(const std::optional<Call>& call) {
    call_ = call;
    pushLeftOut();
}

void SordinEngine::pushLeftOut() {
    LeftOut what{pauseInCalls_ && call_, {}};
    for (const QString& id : ignoredApplications_) {
        what.applications.insert(id.toStdString());
    }
    const bool began = what.everything && !config_->inCall();
    config_->setInCall(what.everything);
    parts_.streams->leaveOut(std::move(what));
    if (began) {
        parts_.pipeline->stop();
        bringVolumeBack();
    }
    publishCall();
}

void SordinEngine::publishCall() {
    QString app;
    if (call_ && pauseInCalls_ && isEnabled_) {
        const auto known = call_->process ? parts_.inspector->appName(*call_->process) : std::nullopt;
        app = QString::fromStdString(known.value_or(call_->name));
        if (app.isEmpty()) {
            app = QStringLiteral("Unknown");
        }
    }
    if (app != callApp_) {
        qCInfo(engineLog).noquote() << (app.isEmpty() ? QStringLiteral("no longer paused for a call")
                                                      : QStringLiteral("paused for a call in %1").arg(app));
    }
    publish(callApp_, app, &SordinEngine::callAppChanged);
}

void SordinEngine::keepIgnoredApplications(const QStringList& ids) {
    ignoredApplications_.clear();
    ignoredNames_.clear();
    for (const QString& id : ids) {
        if (!id.isEmpty() && id.toUtf8().size() <= longestId && !ignoredApplications_.contains(id) &&
            ignoredApplications_.size() < mostIds) {
            ignoredApplications_.append(id);
            ignoredNames_.append(QString::fromStdString(parts_.inspector->applicationName(id.toStdString())));
        }
    }
    ignoredNames_.removeDuplicates();
}

void SordinEngine::setIgnored(const QString& name, bool ignored) {
    QStringList ids;
    for (const QString& id : std::as_const(ignoredApplications_)) {
        if (QString::fromStdString(parts_.inspector->applicationName(id.toStdString())) != name) {
            ids.append(id);
        }
    }
    if (ignored) {
        for (const std::string& id : parts_.inspector->applicationIds(name.toStdString())) {
            ids.append(QString::fromStdString(id));
        }
        if (adActive_ && currentApp_ == name) {
            bringVolumeBack();
        }
    }
    setIgnoredApplications(ids);
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "platform/linux/session/status_report.h"

#include "platform/linux/session/control_interface.h"
#include "platform/linux/session/running_program.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <utility>

namespace sordin {

namespace {

constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties";

struct State {
    explicit State(const QVariantMap& properties)
        : status(properties.value(QStringLiteral("Status"), QStringLiteral("stopped")).toString()),
          text(properties.value(QStringLiteral("StatusText"), QStringLiteral("Not running")).toString()),
          ad(properties.value(QStringLiteral("AdActive")).toBool()),
          faded(properties.value(QStringLiteral("Faded")).toBool()),
          application(properties.value(QStringLiteral("Source")).toString()),
          confidence(properties.value(QStringLiteral("Confidence")).toDouble()),
          call(properties.value(QStringLiteral("Call")).toString()) {}

    [[nodiscard]] int percentage() const { return static_cast<int>(100 * std::clamp(confidence, 0.0, 1.0)); }
    [[nodiscard]] bool listens() const {
        return status == QLatin1String("listening") || status == QLatin1String("ad");
    }
    [[nodiscard]] QString line() const {
        QString line = text;
        if (!application.isEmpty()) {
            line += QStringLiteral(": ") + application;
        }
        if (!call.isEmpty()) {
            line += QStringLiteral(". A call is on: ") + call;
        } else if (listens()) {
            line += QStringLiteral(", %1 %").arg(percentage());
        }
        return line.simplified();
    }

    QString status;
    QString text;
    bool ad;
    bool faded;
    QString application;
    double confidence;
    QString call;
};

}  // namespace

QByteArray statusReport(const QVariantMap& properties, ReportFormat format) {
    const State state(properties);
    if (format == ReportFormat::line) {
        return state.line().toUtf8();
    }
    const QString shown = state.call.isEmpty() ? state.status : QStringLiteral("call");
    return QJsonDocument(QJsonObject{{QStringLiteral("status"), state.status},
                                     {QStringLiteral("ad"), state.ad},
                                     {QStringLiteral("faded"), state.faded},
                                     {QStringLiteral("application"), state.application},
                                     {QStringLiteral("confidence"), state.confidence},
                                     {QStringLiteral("call"), state.call},
                                     {QStringLiteral("text"), state.text},
                                     {QStringLiteral("alt"), shown},
                                     {QStringLiteral("class"), shown},
                                     {QStringLiteral("tooltip"), state.line()},
                                     {QStringLiteral("percentage"), state.percentage()}})
        .toJson(QJsonDocument::Compact);
}

StatusFollower::StatusFollower(QDBusConnection bus, ReportFormat format,
                               std::function<void(const QByteArray&)> report, std::function<void()> lost)
    : bus_(std::move(bus)), format_(format), report_(std::move(report)), lost_(std::move(lost)) {
    const QString service = QLatin1String(ApplicationService::id);
    watcher_.setConnection(bus_);
    watcher_.addWatchedService(service);
    watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this, &StatusFollower::ask);
    bus_.connect(service, QLatin1String(ApplicationService::path), QLatin1String(propertiesInterface),
                 QStringLiteral("PropertiesChanged"), this, SLOT(ask()));
    bus_.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                 QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                 SLOT(disconnected()));
    ask();
}

void StatusFollower::ask() {
    auto* const pending = new QDBusPendingCallWatcher(bus_.asyncCall(statusQuestion()), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, question = ++questions_] {
        pending->deleteLater();
        if (question == questions_) {
            answered(QDBusPendingReply<QVariantMap>(*pending).value());
        }
    });
}

void StatusFollower::answered(const QVariantMap& properties) {
    QVariantMap now;
    for (const char* name : {"Status", "StatusText", "AdActive", "Faded", "Source", "Call"}) {
        now.insert(QLatin1String(name), properties.value(QLatin1String(name)));
    }
    if (!std::exchange(reported_, true) || now != last_) {
        last_ = now;
        report_(statusReport(properties, format_));
    }
}

}  // namespace sordin

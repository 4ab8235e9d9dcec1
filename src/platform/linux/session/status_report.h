// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>

namespace sordin {

/// The output format of `sordin --status`, for panels and scripts.
enum class ReportFormat {
    line,  ///< for people: "Ad detected, muted: Radio, 83 %"
    json   ///< a JSON object on one line
};

/// Formats the properties of org.sordin.Sordin1 as one line without a newline; empty properties mean that the
/// program is not running. In the JSON object, "status", "ad", "faded", "application", "confidence" and
/// "call" are the properties; "text", "alt", "class", "tooltip" and "percentage" are the fields that waybar
/// displays.
[[nodiscard]] QByteArray statusReport(const QVariantMap& properties, ReportFormat format);

/// Follows the state of the program in the user's session, whether it runs or not. Reports at once and after
/// each change, except changes of the confidence alone. Never starts the program. Main thread only.
class StatusFollower : public QObject {
    Q_OBJECT

public:
    /// `report` is called with each line. `lost` is called when the bus goes away; nothing follows.
    StatusFollower(QDBusConnection bus, ReportFormat format, std::function<void(const QByteArray&)> report,
                   std::function<void()> lost);

private:
    Q_SLOT void ask();
    Q_SLOT void disconnected() { lost_(); }
    void answered(const QVariantMap& properties);

    QDBusConnection bus_;
    QDBusServiceWatcher watcher_;
    const ReportFormat format_;
    const std::function<void(const QByteArray&)> report_;
    const std::function<void()> lost_;
    quint64 questions_ = 0;  // only the reply to the latest one counts
    bool reported_ = false;
    QVariantMap last_;  // the last reported state, without the confidence
};

}  // namespace sordin

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

/// How the state of the running program is reported to panels and scripts.
enum class ReportFormat {
    line,  ///< for people: "Ad detected, muted: Radio, 83 %"
    json   ///< an object, on one line
};

/// One line, without its end, of the properties of org.sordin.Sordin1; of a program that is not running if
/// there are none. In the object, "status", "ad", "faded", "application", "confidence" and "call" are the
/// properties; "text", "alt", "class", "tooltip" and "percentage" are what waybar shows of a module.
[[nodiscard]] QByteArray statusReport(const QVariantMap& properties, ReportFormat format);

/// Follows the program that runs in the user's session, whether it runs or not: reports the state at once
/// and again whenever it has changed. The confidence alone is no change. Starts no program. Lives on the main
/// thread.
class StatusFollower : public QObject {
    Q_OBJECT

public:
    /// `report` is called with each line, `lost` when the bus is gone, after which nothing follows.
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
    quint64 questions_ = 0;  // of which only the last one's answer counts
    bool reported_ = false;
    QVariantMap last_;  // as reported, without the confidence
};

}  // namespace sordin

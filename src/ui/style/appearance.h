// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QQmlEngine>
#include <optional>

namespace sordin {

/// How the desktop wants programs to look: asked of its settings portal, and followed while it changes; where
/// that has no preference, by the name of XFCE's theme, else by the palette. Lives on the main thread.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY changed)
    /// The user's colour for what is chosen or on; invalid where there is none.
    Q_PROPERTY(QColor accent READ accent NOTIFY changed)
    /// Nothing should move without need.
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)

public:
    // Not constructible without an argument: QML would make an instance of its own.
    explicit Appearance(QObject* parent, QDBusConnection bus = QDBusConnection::sessionBus());

    /// The one that views use; the application makes it and keeps it.
    static void use(Appearance* appearance) { used() = appearance; }
    static Appearance* create(QQmlEngine* qml, QJSEngine* engine);

    [[nodiscard]] bool dark() const;
    [[nodiscard]] QColor accent() const;
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }

    /// Overrides what the desktop says, for pictures and tests.
    void force(bool dark);

    bool eventFilter(QObject* object, QEvent* event) override;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:  // NOLINT(readability-redundant-access-specifiers): no slots any more
    void follow(const QString& whom, const QString& object, const QString& what, const char* signal);
    void ask(const QString& group, const QString& key);
    void send(const QDBusMessage& question, const QString& group, const QString& key);

    static Appearance*& used();
    QDBusConnection bus_;
    std::optional<bool> forced_;
    unsigned colourScheme_ = 0;      // of the portal: 1 prefers dark, 2 light
    std::optional<bool> darkTheme_;  // of a desktop whose portal has no preference
    QColor portalAccent_;
    bool reducedMotion_ = false;
};

}  // namespace sordin

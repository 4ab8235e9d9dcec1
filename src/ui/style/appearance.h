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

/// The desktop's appearance settings: from the settings portal, if that has no preference from the name of
/// XFCE's theme, otherwise from the palette. Follows changes. Main thread only.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY changed)
    /// The user's accent color; invalid if there is none.
    Q_PROPERTY(QColor accent READ accent NOTIFY changed)
    /// Whether to avoid animations.
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)

public:
    // Not default-constructible, because QML would otherwise create another instance.
    explicit Appearance(QObject* parent, QDBusConnection bus = QDBusConnection::sessionBus());

    /// Sets the instance that the views use; the application owns it.
    static void use(Appearance* appearance) { used() = appearance; }
    static Appearance* create(QQmlEngine* qml, QJSEngine* engine);

    [[nodiscard]] bool dark() const;
    [[nodiscard]] QColor accent() const;
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }

    /// Overrides the desktop's setting, for screenshots and tests.
    void force(bool dark);

    bool eventFilter(QObject* object, QEvent* event) override;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:  // NOLINT(readability-redundant-access-specifiers): ends the slots
    void follow(const QString& whom, const QString& object, const QString& what, const char* signal);
    void ask(const QString& group, const QString& key);
    void send(const QDBusMessage& question, const QString& group, const QString& key);

    static Appearance*& used();
    QDBusConnection bus_;
    std::optional<bool> forced_;
    unsigned colourScheme_ = 0;      // portal value: 1 prefers dark, 2 light
    std::optional<bool> darkTheme_;  // of a desktop whose portal has no preference
    QColor portalAccent_;
    bool reducedMotion_ = false;
};

}  // namespace sordin

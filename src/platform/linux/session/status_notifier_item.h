// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/session/dbus_menu.h"
#include "platform/status_item.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>

namespace sordin {

/// The icon as an org.kde.StatusNotifierItem, the protocol of Linux desktop panels. It registers with the
/// desktop's watcher whenever one appears. No call blocks.
class StatusNotifierItem final : public QObject, public StatusItem {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName NOTIFY NewIcon)
    Q_PROPERTY(QString IconThemePath READ iconThemePath CONSTANT)
    Q_PROPERTY(QString IconAccessibleDesc READ iconDescription NOTIFY NewToolTip)
    Q_PROPERTY(QList<sordin::StatusPixmap> IconPixmap READ pixmaps CONSTANT)
    Q_PROPERTY(QString OverlayIconName READ none CONSTANT)
    Q_PROPERTY(QList<sordin::StatusPixmap> OverlayIconPixmap READ pixmaps CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ none CONSTANT)
    Q_PROPERTY(QList<sordin::StatusPixmap> AttentionIconPixmap READ pixmaps CONSTANT)
    Q_PROPERTY(QString AttentionMovieName READ none CONSTANT)
    Q_PROPERTY(sordin::StatusToolTip ToolTip READ toolTip NOTIFY NewToolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    /// The path of the D-Bus object.
    static constexpr auto path = "/StatusNotifierItem";

    /// `iconThemePath` is a folder with the icons, for icons that are not installed with the system's; may be
    /// empty.
    StatusNotifierItem(QDBusConnection bus, QString iconThemePath);
    ~StatusNotifierItem() override;
    Q_DISABLE_COPY_MOVE(StatusNotifierItem)

    void setHandlers(Handlers handlers) override;
    void setSymbol(const QString& name) override;
    void setText(const QString& text) override;
    void setMenu(std::vector<StatusMenuEntry> entries) override;
    [[nodiscard]] bool isShown() const override { return registered_ && hostThere_; }

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const { return QStringLiteral("sordin"); }
    [[nodiscard]] QString title() const { return QStringLiteral("Sordin"); }
    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QString iconName() const { return icon_; }
    /// The text for screen readers.
    [[nodiscard]] QString iconDescription() const { return title() + QStringLiteral(": ") + text_; }
    [[nodiscard]] QString iconThemePath() const { return iconThemePath_; }
    [[nodiscard]] QList<StatusPixmap> pixmaps() const { return {}; }
    [[nodiscard]] QString none() const { return {}; }
    [[nodiscard]] StatusToolTip toolTip() const { return {icon_, {}, title(), text_}; }
    /// False, so that a click opens the panel. Desktops that open the menu anyway find all functions there.
    [[nodiscard]] bool itemIsMenu() const { return false; }
    [[nodiscard]] QDBusObjectPath menu() const { return QDBusObjectPath(QLatin1String(DbusMenu::path)); }

    // NOLINTBEGIN(readability-identifier-naming,readability-redundant-access-specifiers): the interface's
    // names
public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    /// Called instead of SecondaryActivate() by some panels.
    void XAyatanaSecondaryActivate(unsigned timestamp);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);
    /// The token belongs to the next click, on the icon or in the menu.
    void ProvideXdgActivationToken(const QString& token);

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewAttentionIcon();
    void NewOverlayIcon();
    void NewToolTip();
    void NewStatus(const QString& status);
    // NOLINTEND(readability-identifier-naming,readability-redundant-access-specifiers)

private Q_SLOTS:
    void askForHost();
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:  // NOLINT(readability-redundant-access-specifiers): ends the slots
    void listen(const QString& service, const QString& object, const QString& interface, const char* signal,
                const char* slot);
    void registerWithWatcher();
    void watcherGone();

    QDBusConnection bus_;
    const QString iconThemePath_;
    DbusMenu menu_;
    QDBusServiceWatcher watcher_;
    Handlers handlers_;
    QString icon_;
    QString text_;
    QString token_;
    bool registered_ = false;
    bool hostThere_ = false;
};

}  // namespace sordin

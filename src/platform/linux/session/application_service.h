// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <functional>
#include <optional>

namespace sordin {

/// The program in the user's session: it has a name on the session's bus, so that there is one at a time, and
/// is asked to the front there (org.freedesktop.Application). Lives on the main thread.
class ApplicationService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    /// Also that of the desktop entry, the icon and all else that the desktop knows it by.
    static constexpr auto id = "org.sordin.Sordin";

    enum class Name {
        ours,
        taken,  ///< the program runs already
        none    ///< there is no bus
    };

    /// Takes the name. `activated` is called on the main thread, with the token (or none) by which the
    /// desktop lets a window of ours come to the front.
    ApplicationService(QDBusConnection bus, std::function<void(const QString& token)> activated);
    ~ApplicationService() override;
    Q_DISABLE_COPY_MOVE(ApplicationService)

    [[nodiscard]] Name name() const { return name_; }

    /// Asks the one that has the name to the front, with the token that this process was started with. False
    /// if it does not answer, for which it has ten seconds.
    [[nodiscard]] bool activateOther();

    // NOLINTBEGIN(readability-identifier-naming,readability-redundant-access-specifiers): the interface's
    // names
public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    /// There are no files to open.
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& action, const QVariantList& parameter,
                        const QVariantMap& platformData);
    // NOLINTEND(readability-identifier-naming,readability-redundant-access-specifiers)

private:
    QDBusConnection bus_;
    std::function<void(const QString& token)> activated_;
    Name name_ = Name::none;
};

}  // namespace sordin

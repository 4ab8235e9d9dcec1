// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <utility>

namespace sordin {

/// What the engine is doing.
class EngineStatus {
public:
    enum class Kind {
        failed,           ///< capture could not start, or ended and is about to be started again
        disabled,         ///< switched off
        needsPermission,  ///< the system refuses to let us listen
        starting,
        listening,
        mutingAd,  ///< an ad is in progress, whether its sound is faded or only watched
    };

    // NOLINTNEXTLINE(google-explicit-constructor): a kind without a message is a status
    EngineStatus(Kind kind) : kind_(kind) {}

    /// `message` is what the user is told, one line.
    static EngineStatus failed(QString message) {
        EngineStatus status(Kind::failed);
        status.message_ = std::move(message);
        return status;
    }

    [[nodiscard]] Kind kind() const { return kind_; }

    /// Empty unless failed.
    [[nodiscard]] const QString& message() const { return message_; }

    bool operator==(const EngineStatus&) const = default;

private:
    Kind kind_;
    QString message_;
};

}  // namespace sordin

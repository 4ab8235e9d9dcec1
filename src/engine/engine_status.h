// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <utility>

namespace sordin {

/// State of the engine.
class EngineStatus {
public:
    enum class Kind {
        failed,           ///< the capture failed to start, or ended by itself and will be restarted
        disabled,         ///< disabled by the user
        needsPermission,  ///< the system does not permit audio capture
        starting,
        listening,
        mutingAd,  ///< an ad is in progress, faded or in test mode
    };

    // NOLINTNEXTLINE(google-explicit-constructor): a kind alone is a complete status
    EngineStatus(Kind kind) : kind_(kind) {}

    /// `message` is a one-line explanation for the user.
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

// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace sordin {

/// What the system lets this program do, as far as the user decides it. Speech recognition is the
/// recogniser's own affair. All operations may be called from any thread.
class Permissions {
public:
    virtual ~Permissions() = default;

    /// Whether this program may hear what the computer plays; found out anew, without asking the user.
    [[nodiscard]] virtual bool screenCapturePreflight() const = 0;

    /// Asks the user for it, where a system has a question to ask; the answer shows in
    /// screenCapturePreflight().
    virtual void requestScreenCapture() = 0;

    /// Opens the system's settings at the place named by `anchor`, "Privacy_ScreenCapture" or
    /// "Privacy_SpeechRecognition". False where there is no such place, and nothing was opened.
    virtual bool openSettings(const std::string& anchor) = 0;
};

}  // namespace sordin

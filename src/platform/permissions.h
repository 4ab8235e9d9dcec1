// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace sordin {

/// The permissions that the user grants this program, except speech recognition (see SpeechRecogniser). Any
/// thread.
class Permissions {
public:
    virtual ~Permissions() = default;

    /// Whether this program may capture the system's audio. Checks anew each time and never prompts the user.
    [[nodiscard]] virtual bool screenCapturePreflight() const = 0;

    /// Prompts the user for that permission where the platform has a prompt. screenCapturePreflight() returns
    /// the result.
    virtual void requestScreenCapture() = 0;

    /// Opens the system settings at `anchor`, "Privacy_ScreenCapture" or "Privacy_SpeechRecognition". Returns
    /// false if the platform has no such page; then nothing opens.
    virtual bool openSettings(const std::string& anchor) = 0;
};

}  // namespace sordin

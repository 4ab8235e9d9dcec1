// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace sordin {

/// What the speech decoder reads.
struct SpeechModelFiles {
    std::filesystem::path acousticModel;        ///< folder
    std::filesystem::path generalLanguage;      ///< n-grams of everyday English
    std::filesystem::path dictionary;           ///< the words it knows and how they sound
    std::filesystem::path advertisingLanguage;  ///< n-grams of advertisements
    std::filesystem::path mask;                 ///< takes music off the voice; empty where there is none

    /// Whether all that the decoder needs are there, which the mask is not; looks at the file system each
    /// time.
    [[nodiscard]] bool installed() const;
};

/// The files that go with a program, whose own path is `program`: the general ones where the decoder's
/// packages put them, ours in the data folder. They need not be there.
[[nodiscard]] SpeechModelFiles speechModelFiles(const std::filesystem::path& program);

}  // namespace sordin

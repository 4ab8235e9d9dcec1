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

    /// Whether all of them are there; looks at the file system each time.
    [[nodiscard]] bool installed() const;
};

/// The files that go with a program, whose own path is `program`: the general ones where the decoder's
/// packages put them, ours in the data folder. They need not be there.
[[nodiscard]] SpeechModelFiles speechModelFiles(const std::filesystem::path& program);

}  // namespace sordin

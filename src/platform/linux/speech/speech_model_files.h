// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace sordin {

/// The files that the speech decoder reads.
struct SpeechModelFiles {
    std::filesystem::path acousticModel;        ///< a folder
    std::filesystem::path generalLanguage;      ///< n-grams of general English
    std::filesystem::path dictionary;           ///< words with their pronunciations
    std::filesystem::path advertisingLanguage;  ///< n-grams of advertisements
    std::filesystem::path mask;                 ///< suppresses music under speech; empty if there is none

    /// Whether all required files exist; the mask is optional. Checks the file system each time.
    [[nodiscard]] bool installed() const;
};

/// Returns the paths for a program at the path `program`: the general models in the folder of the decoder's
/// packages, the project's own files in the data folder. The files need not exist.
[[nodiscard]] SpeechModelFiles speechModelFiles(const std::filesystem::path& program);

}  // namespace sordin

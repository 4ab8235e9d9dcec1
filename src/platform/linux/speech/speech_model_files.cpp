// SPDX-License-Identifier: MIT
#include "platform/linux/speech/speech_model_files.h"

#include "support/own_files.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace sordin {

namespace fs = std::filesystem;

bool SpeechModelFiles::installed() const {
    const std::array<fs::path, 4> needed{acousticModel / "mdef", generalLanguage, dictionary,
                                         advertisingLanguage};
    return std::all_of(needed.begin(), needed.end(), [](const fs::path& path) {
        std::error_code ignored;
        return fs::is_regular_file(path, ignored);
    });
}

SpeechModelFiles speechModelFiles(const fs::path& program) {
    const fs::path general = SORDIN_SPEECH_MODELS "/en-us";
    return {general / "en-us", general / "en-us.lm.bin",
            findDataFile(program, "speech/english.dict").value_or(fs::path()),
            findDataFile(program, "speech/advertising.arpa").value_or(fs::path()),
            findDataFile(program, "speech-mask.bin").value_or(fs::path())};
}

}  // namespace sordin

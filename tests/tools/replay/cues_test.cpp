// SPDX-License-Identifier: MIT
#include "replay/cues.h"
#include "replay/input_error.h"

#include <gmock/gmock.h>

#include <sstream>

namespace sordin::replay {
namespace {

CueTrack cuesIn(const std::string& text) {
    std::istringstream input(text);
    return CueTrack::read(input, "radio.cues");
}

std::string errorOf(const std::string& text) {
    try {
        static_cast<void>(cuesIn(text));
    } catch (const InputError& error) {
        return error.what();
    }
    return "no error";
}

TEST(CueTrack, KeepsWhatLaterCuesDoNotName) {
    auto cues = cuesIn("{\"t\": 30, \"speech\": 0.5, \"available\": false}\r\n"
                       "\n"
                       "{\"t\": 10.5, \"music\": 0.75, \"jingle\": 1, \"transcript\": \"caf\xC3\xA9\"}\n"
                       "{\"t\": 30, \"speech\": 0.25}");
    const CueState* state = &cues.at(10);
    EXPECT_EQ(state->classification.music, 0);
    EXPECT_TRUE(state->available);
    EXPECT_EQ(state->transcript, "");
    state = &cues.at(10.5);
    EXPECT_EQ(state->classification.music, 0.75F);
    EXPECT_EQ(state->classification.jingle, 1);
    EXPECT_EQ(state->transcript, "caf\xC3\xA9");
    state = &cues.at(100);
    EXPECT_EQ(state->classification.music, 0.75F);
    EXPECT_EQ(state->classification.speech, 0.25F) << "for equal times, the later line counts";
    EXPECT_FALSE(state->available);
    EXPECT_TRUE(CueTrack().at(1e9).available);
}

TEST(CueTrack, NamesTheLineThatIsWrong) {
    EXPECT_EQ(errorOf("{\"t\": 1}\n\n{\"t\": 2"), "radio.cues:3: not a JSON object");
    EXPECT_EQ(errorOf("[1]"), "radio.cues:1: not a JSON object");
    EXPECT_EQ(errorOf("{\"music\": 1}"), "radio.cues:1: no \"t\"");
    EXPECT_EQ(errorOf("{\"t\": \"1\"}"), "radio.cues:1: \"t\" is not a number");
    EXPECT_EQ(errorOf("{\"t\": 1, \"music\": 1.01}"), "radio.cues:1: \"music\" is not from 0 to 1");
    EXPECT_EQ(errorOf("{\"t\": 1, \"jingle\": -0.1}"), "radio.cues:1: \"jingle\" is not from 0 to 1");
    EXPECT_EQ(errorOf("{\"t\": 1, \"musik\": 1}"), "radio.cues:1: unknown field \"musik\"");
    EXPECT_EQ(errorOf("{\"t\": 1, \"transcript\": 5}"), "radio.cues:1: \"transcript\" is not a text");
    EXPECT_EQ(errorOf("{\"t\": 1, \"available\": 1}"),
              "radio.cues:1: \"available\" is neither true nor false");
}

}  // namespace
}  // namespace sordin::replay

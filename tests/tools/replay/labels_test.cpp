// SPDX-License-Identifier: MIT
#include "replay/input_error.h"
#include "replay/labels.h"

#include <gmock/gmock.h>

#include <sstream>

namespace sordin::replay {

bool operator==(const Interval& a, const Interval& b) {
    return a.start == b.start && a.end == b.end;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<Interval> labelsIn(const std::string& text) {
    std::istringstream input(text);
    return readAdLabels(input, "radio.txt");
}

TEST(Labels, TakeAdsByNameWhereAnyIsNamedSo) {
    EXPECT_THAT(labelsIn("10.5\t20\tad\n"), ElementsAre(Interval{10.5, 20}));
    EXPECT_THAT(labelsIn("0\t10\tmusic\n10\t20\tAd 1\n30\t40\tadvert\n40\t50\ttalk\n"),
                ElementsAre(Interval{10, 20}, Interval{30, 40}));
    EXPECT_THAT(labelsIn("30\t40\tspot\r\n10\t20\n"), ElementsAre(Interval{10, 20}, Interval{30, 40}));
    EXPECT_THAT(labelsIn(""), IsEmpty());
}

TEST(Labels, JoinWhatTouchesAndPassOverWhatIsNoStretch) {
    EXPECT_THAT(labelsIn("20\t30\tad\n10\t20\tad\n25\t28\tad\n40\t40\tad\n50\t51\tad\n\\\t100\t200\n"),
                ElementsAre(Interval{10, 30}, Interval{50, 51}));
}

TEST(Labels, NameTheLineThatIsWrong) {
    for (const std::string bad :
         {"10 20 ad", "10\tad", "20\t10\tad", "1,5\t2\tad", "nan\t2\tad", "1\tinf\tad"}) {
        try {
            static_cast<void>(labelsIn("1\t2\tad\n" + bad));
            ADD_FAILURE() << bad;
        } catch (const InputError& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("radio.txt:2: ")) << bad;
        }
    }
}

}  // namespace
}  // namespace sordin::replay

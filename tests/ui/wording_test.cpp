// SPDX-License-Identifier: MIT
// The texts are those of the first platform: what they say of it is replaced on this one, and nothing else.
#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <set>
#include <string>

namespace sordin {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

/// A text by where it is used and how it begins.
using Text = std::pair<std::string, std::string>;

/// All of what the views say, read from their sources in the program.
std::vector<Text> textsOfViews() {
    std::vector<Text> texts;
    QDirIterator views(":/qt/qml/Sordin", {"*.qml"}, QDir::Files, QDirIterator::Subdirectories);
    while (views.hasNext()) {
        QFile file(views.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QString source = QString::fromUtf8(file.readAll());
        static const QRegularExpression call(R"re(qsTr\("((?:[^"\\]|\\.)*)"\))re");
        for (auto matches = call.globalMatch(source); matches.hasNext();) {
            texts.emplace_back(views.fileInfo().baseName().toStdString(),
                               matches.next().captured(1).toStdString());
        }
    }
    return texts;
}

std::string said(const Text& text) {
    return QCoreApplication::translate(text.first.c_str(), text.second.c_str()).toStdString();
}

TEST(Wording, ReplacesExactlyWhatIsOfAnotherPlatform) {
    const auto texts = textsOfViews();
    ASSERT_GT(texts.size(), 60U);
    std::set<Text> replaced;
    for (const Text& text : texts) {
        if (said(text) != text.second) {
            replaced.emplace(text.first, text.second.substr(0, 30));
        }
        const QString shown = QString::fromStdString(said(text));
        static const QRegularExpression foreign(
            "\\bMac\\b|macOS|Apple|Core ML|Info\\.plist|make-app|menu bar|Privacy|Screen &",
            QRegularExpression::CaseInsensitiveOption);
        EXPECT_FALSE(foreign.match(shown).hasMatch()) << text.first << ": " << said(text);
    }
    EXPECT_THAT(replaced, UnorderedElementsAreArray(std::vector<Text>{
                              {"AppsPage", "The source app is the process "},
                              {"LivePage", "Screen & System Audio Recordin"},
                              {"OnboardingSheet", "After enabling Sordin in Priva"},
                              {"OnboardingSheet", "All analysis runs on this Mac "},
                              {"OnboardingSheet", "Sordin listens to whatever you"},
                              {"OnboardingSheet", "This build isn't packaged with"},
                              {"OnboardingSheet", "Use the menu bar icon to pause"},
                              {"OnboardingSheet", "When a segment looks suspiciou"},
                              {"OnboardingSheet", "macOS protects system audio ca"},
                              {"SettingsPage", "Screen & System Audio Recordin"},
                              {"SettingsPage", "Uses Apple's on-device speech "},
                          }));
}

TEST(Wording, HasNoReplacementForATextThatIsGone) {
    const auto texts = textsOfViews();
    const std::set<Text> there(texts.begin(), texts.end());
    QFile catalogue(SORDIN_WORDING);
    ASSERT_TRUE(catalogue.open(QIODevice::ReadOnly));
    const QString source = QString::fromUtf8(catalogue.readAll());
    static const QRegularExpression entry("<name>(.*?)</name>|<source>(.*?)</source>");
    std::string context;
    std::vector<Text> gone;
    int count = 0;
    for (auto matches = entry.globalMatch(source); matches.hasNext();) {
        const auto match = matches.next();
        if (match.capturedStart(1) >= 0) {
            context = match.captured(1).toStdString();
            continue;
        }
        ++count;
        const Text text(context, match.captured(2).replace("&amp;", "&").toStdString());
        if (there.count(text) == 0) {
            gone.push_back(text);
        }
    }
    EXPECT_EQ(count, 11);
    EXPECT_THAT(gone, IsEmpty());
}

}  // namespace
}  // namespace sordin

// SPDX-License-Identifier: MIT
// The source texts describe the first platform. The Linux wording must replace all texts about that platform,
// and no others.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <string>

namespace sordin {
namespace {

/// A text, by its context and its beginning.
using Text = std::pair<std::string, std::string>;

/// All texts of the views, read from their sources.
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

TEST(Wording, SaysNothingOfAnotherPlatformAndUsesEveryReplacement) {
    const auto texts = textsOfViews();
    ASSERT_GT(texts.size(), 60U);
    static const QRegularExpression foreign(
        "\\bMac\\b|macOS|Apple|Core ML|Info\\.plist|make-app|menu bar|Privacy|Screen &",
        QRegularExpression::CaseInsensitiveOption);
    for (const Text& text : texts) {
        EXPECT_FALSE(foreign.match(QString::fromStdString(said(text))).hasMatch())
            << text.first << ": " << said(text);
    }

    QFile catalogue(SORDIN_WORDING);
    ASSERT_TRUE(catalogue.open(QIODevice::ReadOnly));
    const QString source = QString::fromUtf8(catalogue.readAll());
    static const QRegularExpression entry("<name>(.*?)</name>|<source>(.*?)</source>");
    std::string context;
    for (auto matches = entry.globalMatch(source); matches.hasNext();) {
        const auto match = matches.next();
        if (match.capturedStart(1) >= 0) {
            context = match.captured(1).toStdString();
            continue;
        }
        const Text text(context, match.captured(2).replace("&amp;", "&").toStdString());
        EXPECT_GT(std::count(texts.begin(), texts.end(), text), 0) << "no view contains: " << text.second;
        EXPECT_NE(said(text), text.second) << context;
    }
    EXPECT_FALSE(context.empty());
}

}  // namespace
}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "engine/ad_history_file.h"

#include "support/atomic_file.h"
#include "support/set_aside.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace sordin {

namespace {

namespace fs = std::filesystem;

/// Limits far above anything that the program writes.
constexpr std::size_t largestFile = 16 << 20;
constexpr double longestDuration = 1e9;  // seconds, absolute value; limits the sums over all ads

struct KindName {
    AdEvent::Kind kind;
    QLatin1String name;
};
constexpr std::array kindNames{KindName{AdEvent::Kind::muted, QLatin1String("muted")},
                               KindName{AdEvent::Kind::testOnly, QLatin1String("testOnly")},
                               KindName{AdEvent::Kind::simulated, QLatin1String("simulated")}};

QJsonObject toJson(const AdEvent& event) {
    const auto kind = std::find_if(kindNames.begin(), kindNames.end(),
                                   [&event](const KindName& each) { return each.kind == event.kind; });
    return {{QStringLiteral("id"), event.id.toString(QUuid::WithoutBraces).toUpper()},
            {QStringLiteral("start"), event.start},
            {QStringLiteral("duration"), event.duration},
            {QStringLiteral("app"), event.app},
            {QStringLiteral("peakConfidence"), event.peakConfidence},
            {QStringLiteral("reasons"), QJsonArray::fromStringList(event.reasons)},
            {QStringLiteral("kind"), kind->name}};
}

/// Returns nothing if `value` is not a list of texts.
std::optional<QStringList> toTexts(const QJsonValue& value) {
    const QJsonArray array = value.toArray();
    QStringList texts;
    for (const auto& each : array) {
        if (!each.isString()) {
            return std::nullopt;
        }
        texts.append(each.toString());
    }
    return value.isArray() ? std::optional(texts) : std::nullopt;
}

/// Returns nothing if a field is missing, has another type or is out of range.
std::optional<AdEvent> toEvent(const QJsonObject& object) {
    const QJsonValue start = object.value(u"start");
    const QJsonValue duration = object.value(u"duration");
    const QJsonValue app = object.value(u"app");
    const QJsonValue peak = object.value(u"peakConfidence");
    const QString idText = object.value(u"id").toString();
    const QUuid id(idText);
    const auto reasons = toTexts(object.value(u"reasons"));
    const QString kindName = object.value(u"kind").toString();
    const auto kind = std::find_if(kindNames.begin(), kindNames.end(),
                                   [&kindName](const KindName& each) { return each.name == kindName; });
    // QUuid is null for an invalid text, and also for the valid text of the null UUID.
    const bool isId = !id.isNull() || idText == QUuid().toString(QUuid::WithoutBraces);
    if (!isId || !start.isDouble() || !duration.isDouble() || !app.isString() || !peak.isDouble() ||
        !reasons || kind == kindNames.end() || !std::isfinite(start.toDouble()) ||
        !std::isfinite(peak.toDouble()) || !(std::abs(duration.toDouble()) <= longestDuration)) {
        return std::nullopt;
    }
    return AdEvent{id,       start.toDouble(), duration.toDouble(), app.toString(), peak.toDouble(),
                   *reasons, kind->kind};
}

std::optional<AdHistory> readHistory(const fs::path& path) {
    const auto text = readWholeFile(path, largestFile);
    const auto document = text ? QJsonDocument::fromJson(QByteArray::fromStdString(*text)) : QJsonDocument();
    if (!document.isArray()) {
        return std::nullopt;
    }
    AdHistory history;
    const QJsonArray array = document.array();
    for (const auto& each : array) {
        auto event = toEvent(each.toObject());
        if (!event) {
            return std::nullopt;
        }
        history.push_back(std::move(*event));
    }
    return history;
}

}  // namespace

class AdHistoryFile::Writer {
public:
    explicit Writer(fs::path path) : path_(std::move(path)) {}

    [[nodiscard]] AdHistory load() {
        std::error_code error;
        if (fs::symlink_status(path_, error).type() == fs::file_type::not_found) {
            return {};
        }
        auto history = readHistory(path_);
        unreadable_ = !history;
        return history ? std::move(*history) : AdHistory();
    }

    void save(const AdHistory& history) {
        if (unreadable_ && setAside(path_)) {
            return;  // the old file must not be lost
        }
        unreadable_ = false;
        QJsonArray array;
        for (const AdEvent& event : history) {
            array.append(toJson(event));
        }
        const QByteArray text = QJsonDocument(array).toJson(QJsonDocument::Compact);
        static_cast<void>(createFolders(path_.parent_path()));
        static_cast<void>(replaceFile(path_, {text.constData(), static_cast<std::size_t>(text.size())},
                                      Durability::lossOfPower));
    }

private:
    const fs::path path_;
    bool unreadable_ = false;  // the file at path_ must be set aside before a save
};

AdHistoryFile::AdHistoryFile(fs::path path, std::shared_ptr<SerialQueue> queue)
    : queue_(std::move(queue)), writer_(std::make_shared<Writer>(std::move(path))) {}

AdHistory AdHistoryFile::load() {
    AdHistory history;
    queue_->sync([this, &history] { history = writer_->load(); });
    return history;
}

void AdHistoryFile::save(AdHistory history) {
    queue_->post([writer = writer_, history = std::move(history)] { writer->save(history); });
}

}  // namespace sordin

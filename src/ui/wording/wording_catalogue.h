// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>
#include <QTranslator>
#include <utility>

namespace sordin {

/// Replaces texts of the views with those of a catalog in Qt's translation source format (.ts). The program
/// parses this file at start, because a dozen entries need no compiled catalog, so that the build does not
/// need Qt's translation tools.
class WordingCatalogue : public QTranslator {
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    /// Reads the catalog's messages, finished and unfinished, without plural forms. On failure, returns false
    /// and leaves the catalog empty.
    [[nodiscard]] bool read(const QString& file);

    [[nodiscard]] bool isEmpty() const override;

    /// Returns a null string for unknown texts. Ignores disambiguations and numbers.
    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                    int n) const override;

private:
    QHash<std::pair<QString, QString>, QString> texts_;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>
#include <QTranslator>
#include <utility>

namespace sordin {

/// Replaces texts of the views by those of a catalogue in Qt's translation source format (.ts). The catalogue
/// has a dozen entries, so it is read as it stands when the program starts, and no build needs Qt's
/// translation tools.
class WordingCatalogue : public QTranslator {
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    /// Reads the catalogue's finished and unfinished messages without plural forms. False, and no message, if
    /// the file cannot be opened or is no well-formed catalogue.
    [[nodiscard]] bool read(const QString& file);

    [[nodiscard]] bool isEmpty() const override;

    /// A null string where the catalogue has no such text. Disambiguations and numbers are ignored.
    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                    int n) const override;

private:
    QHash<std::pair<QString, QString>, QString> texts_;
};

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "ui/wording/wording_catalogue.h"

#include <QFile>
#include <QXmlStreamReader>

namespace sordin {

bool WordingCatalogue::read(const QString& file) {
    texts_.clear();
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) {
        return false;
    }
    QXmlStreamReader xml(&source);
    QString context;
    QString text;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("source")) {
            text = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            texts_.insert({context, text}, xml.readElementText());
        }
    }
    if (xml.hasError()) {
        texts_.clear();
    }
    return !texts_.isEmpty();
}

bool WordingCatalogue::isEmpty() const {
    return texts_.isEmpty();
}

QString WordingCatalogue::translate(const char* context, const char* sourceText,
                                    const char* /*disambiguation*/, int /*n*/) const {
    return texts_.value({QString::fromUtf8(context), QString::fromUtf8(sourceText)});
}

}  // namespace sordin

// SPDX-License-Identifier: MIT
#include "ui/style/symbol_provider.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace sordin {

QImage SymbolProvider::picture(const QString& name, const QColor& colour, const QSize& pixels) {
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QString path = QStringLiteral(":/sordin/symbols/%1.svg").arg(name);
    if (!QFile::exists(path)) {
        return image;
    }
    QSvgRenderer drawing(path);
    drawing.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), colour);
    return image;
}

QImage SymbolProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
    constexpr QSize usual(24, 24);
    const QSize pixels = requestedSize.isEmpty() ? usual : requestedSize;
    if (size != nullptr) {
        *size = pixels;
    }
    return picture(id.section(QLatin1Char('/'), 0, 0),
                   QColor(QLatin1Char('#') + id.section(QLatin1Char('/'), 1, 1)), pixels);
}

}  // namespace sordin

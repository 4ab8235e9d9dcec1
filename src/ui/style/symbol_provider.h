// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QQuickImageProvider>

namespace sordin {

/// Renders symbols in one color: "image://symbol/NAME/AARRGGBB". An unknown name yields a transparent image.
/// Any thread.
class SymbolProvider : public QQuickImageProvider {
public:
    SymbolProvider() : QQuickImageProvider(Image) {}

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

    [[nodiscard]] static QImage picture(const QString& name, const QColor& colour, const QSize& pixels);
};

}  // namespace sordin

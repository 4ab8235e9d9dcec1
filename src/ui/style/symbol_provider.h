// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QQuickImageProvider>

namespace sordin {

/// Symbols as pictures of one colour: "image://symbol/NAME/AARRGGBB". A name that is not known is an empty
/// picture. Any thread.
class SymbolProvider : public QQuickImageProvider {
public:
    SymbolProvider() : QQuickImageProvider(Image) {}

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

    [[nodiscard]] static QImage picture(const QString& name, const QColor& colour, const QSize& pixels);
};

}  // namespace sordin

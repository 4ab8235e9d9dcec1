// SPDX-License-Identifier: MIT
// sordin-render-icon DRAWING SIZE PICTURE: renders an SVG file to a PNG file of SIZE by SIZE pixels.
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

int main(int argc, char** argv) {
    constexpr int largest = 4096;
    const int size = argc == 4 ? QByteArray(argv[2]).toInt() : 0;
    if (size < 1 || size > largest) {
        std::fprintf(stderr, "usage: sordin-render-icon DRAWING SIZE PICTURE\n");
        return 2;
    }
    QSvgRenderer drawing(QFile::decodeName(argv[1]));
    if (!drawing.isValid()) {
        std::fprintf(stderr, "sordin-render-icon: %s is not a valid SVG drawing\n", argv[1]);
        return 1;
    }
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    drawing.render(&painter, QRectF(0, 0, size, size));
    painter.end();
    if (!picture.save(QFile::decodeName(argv[3]), "PNG")) {
        std::fprintf(stderr, "sordin-render-icon: cannot write %s\n", argv[3]);
        return 1;
    }
    return 0;
}

#include "picturefile.h"

#include <QHash>
#include <QImageWriter>
#include <QPainter>

#include <algorithm>
#include <climits>

namespace {

constexpr int kColors = 256;

int distance(QRgb one, QRgb other)
{
    const int red = qRed(one) - qRed(other);
    const int green = qGreen(one) - qGreen(other);
    const int blue = qBlue(one) - qBlue(other);
    return red * red + green * green + blue * blue;
}

QImage withoutClocks(const QImage &picture, const QList<QRect> &clocks)
{
    QImage result = picture.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&result);
    for (const QRect &clock : clocks)
        painter.fillRect(clock, Qt::black);
    return result;
}

/// How many pixels have which colour.
QHash<QRgb, int> colorsOf(const QImage &picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    return counts;
}

/// With the colours that are most often outside the clocks; any other becomes the nearest of them.
/// Windows have few colours, and the rest are edges of letters.
QImage withFewColors(const Picture &picture)
{
    const QImage source = picture.image.convertToFormat(QImage::Format_RGB32);
    const QHash<QRgb, int> counts = colorsOf(withoutClocks(source, picture.clocks));
    QList<QRgb> colors = counts.keys();
    std::sort(colors.begin(), colors.end(), [&](QRgb one, QRgb other) {
        return std::pair(-counts[one], one) < std::pair(-counts[other], other);
    });
    const QList<QRgb> table = colors.first(qMin<qsizetype>(colors.size(), kColors));
    QHash<QRgb, int> indices;
    for (const QRgb color : colorsOf(source).keys()) {
        const auto nearest =
            std::min_element(table.begin(), table.end(), [&](QRgb one, QRgb other) {
                return distance(one, color) < distance(other, color);
            });
        indices[color] = int(nearest - table.begin());
    }
    QImage result(source.size(), QImage::Format_Indexed8);
    result.setColorTable(table);
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x)
            result.setPixel(x, y, uint(indices[source.pixel(x, y)]));
    }
    return result;
}

} // namespace

bool writePicture(const Picture &picture, const QString &path)
{
    const QImage image = withFewColors(picture);
    const QImage old(path);
    if (!old.isNull() && withoutClocks(old, picture.clocks) == withoutClocks(image, picture.clocks))
        return true;
    QImageWriter writer(path, "png");
    writer.setCompression(100);
    return writer.write(image);
}

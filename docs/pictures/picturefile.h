#pragma once

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

/// A picture for the documents.
struct Picture
{
    QImage image;
    QList<QRect> clocks = {}; ///< places that tell the time of day, and differ each time
};

/// Writes \a picture as a PNG file of at most 256 colours, unless the file shows the same already
/// but for the clocks. False if it can't be written.
[[nodiscard]] bool writePicture(const Picture &picture, const QString &path);

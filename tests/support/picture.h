#pragma once

#include <QChar>
#include <QImage>
#include <QPixmap>
#include <QString>
#include <QWidget>

namespace support {

/// A picture of the widget with its children.
inline QImage pictureOf(QWidget* widget)
{
    return widget->grab().toImage();
}

/// The colour in the middle of the left side, this many pixels from the edge, as #rrggbb.
inline QString colourInside(const QImage& picture, int inset)
{
    return picture.pixelColor(inset, picture.height() / 2).name();
}

/// Whether any pixel has this colour.
inline bool hasColour(const QImage& picture, const QString& colour)
{
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y).name() == colour) {
                return true;
            }
        }
    }
    return false;
}

/// Characters that fill their cell, so that a picture of them contains the exact text colour.
inline QString solidText()
{
    return QString(4, QChar(0x2588));
}

} // namespace support

#pragma once

#include <QByteArray>
#include <QImage>

/// The image as a PNG file of that width and height; empty when that is impossible.
QByteArray pngFile(const QImage& image, int size);

/// The image as an Apple icon file, from 16 to 512 points.
QByteArray icnsFile(const QImage& image);

#include "icns_file.h"

#include <QBuffer>
#include <QColor>
#include <QtEndian>

#include <array>

namespace {

/// A size that is kept as a PNG file within the icon file.
struct PngElement
{
    const char* type;
    int pixels;
};

QImage scaledTo(const QImage& image, int size)
{
    return image.convertToFormat(QImage::Format_ARGB32)
        .scaled(size, size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_ARGB32);
}

QByteArray bigEndian(qsizetype number)
{
    std::array<char, 4> bytes{};
    qToBigEndian(static_cast<quint32>(number), bytes.data());
    return {bytes.data(), bytes.size()};
}

/// One element: its type, its length with this head, its content.
QByteArray element(const char* type, const QByteArray& content)
{
    return QByteArray(type, 4) + bigEndian(8 + content.size()) + content;
}

QByteArray channelBytes(const QImage& image, int (*channel)(QRgb))
{
    QByteArray bytes;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            bytes.append(static_cast<char>(channel(image.pixel(x, y))));
        }
    }
    return bytes;
}

/// The format's run-length code, without any run: a count, less one, and that many bytes as they are.
QByteArray packed(const QByteArray& bytes)
{
    constexpr qsizetype longest = 128;
    QByteArray result;
    for (qsizetype start = 0; start < bytes.size(); start += longest) {
        const QByteArray piece = bytes.mid(start, longest);
        result.append(static_cast<char>(piece.size() - 1)).append(piece);
    }
    return result;
}

/// The two smallest sizes are colours and a mask: inside a bundle, systems misread a PNG at these.
QByteArray smallElements(const char* colours, const char* mask, const QImage& image)
{
    QByteArray channels = packed(channelBytes(image, qRed));
    channels += packed(channelBytes(image, qGreen));
    channels += packed(channelBytes(image, qBlue));
    return element(colours, channels) + element(mask, channelBytes(image, qAlpha));
}

} // namespace

QByteArray pngFile(const QImage& image, int size)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (size <= 0 || !buffer.open(QIODevice::WriteOnly) || !scaledTo(image, size).save(&buffer, "PNG", 0)) {
        return {};
    }
    return bytes;
}

QByteArray icnsFile(const QImage& image)
{
    constexpr std::array pngElements = {
        PngElement{"ic11", 32},                           // 16 points on a dense screen
        PngElement{"ic12", 64},                           // 32 points on a dense screen
        PngElement{"ic07", 128}, PngElement{"ic13", 256}, // 128 points on a dense screen
        PngElement{"ic08", 256}, PngElement{"ic14", 512}, // 256 points on a dense screen
        PngElement{"ic09", 512},
    };

    QByteArray content = smallElements("is32", "s8mk", scaledTo(image, 16));
    content += smallElements("il32", "l8mk", scaledTo(image, 32));
    for (const PngElement& each : pngElements) {
        const QByteArray png = pngFile(image, each.pixels);
        if (png.isEmpty()) {
            return {};
        }
        content += element(each.type, png);
    }
    return element("icns", content);
}

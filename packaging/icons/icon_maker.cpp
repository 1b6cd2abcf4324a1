// Makes the icons of every system from an image of the emblem. It needs nothing that the client does not need
// already, and the same image always gives the same bytes.

#include "icns_file.h"

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QString>

#include <iostream>
#include <span>
#include <string_view>

namespace {

bool saveBytes(const char* name, const QByteArray& bytes)
{
    QFile file(QFile::decodeName(name));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

int main(int argc, char* argv[])
{
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    const bool wantsPng = argc == 5 && std::string_view(arguments[2]) == "png";
    const bool wantsIcns = argc == 4 && std::string_view(arguments[2]) == "icns";
    if (!wantsPng && !wantsIcns) {
        std::cerr << "Usage: icon_maker IMAGE png SIZE FILE | icon_maker IMAGE icns FILE\n";
        return 1;
    }

    const QImage image(QFile::decodeName(arguments[1]));
    if (image.isNull() || image.width() != image.height()) {
        std::cerr << arguments[1] << " is not a square image\n";
        return 1;
    }

    const QByteArray bytes = wantsIcns ? icnsFile(image) : pngFile(image, QByteArray(arguments[3]).toInt());
    if (bytes.isEmpty() || !saveBytes(arguments.back(), bytes)) {
        std::cerr << arguments.back() << " could not be written\n";
        return 1;
    }
    return 0;
}

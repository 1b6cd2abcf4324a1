// Makes the icons of every system from the logo's image. It needs nothing that the client does not need
// already, and the same image always gives the same bytes.

#include "icns_file.h"

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QString>
#include <QStringList>

#include <cstdio>

using Qt::StringLiterals::operator""_s;

namespace {

int failWith(const QString& sentence)
{
    std::fputs(qPrintable(sentence + u'\n'), stderr);
    return 1;
}

bool saveBytes(const QString& name, const QByteArray& bytes)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

int main(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QFile::decodeName(argv[i]));
    }
    const bool wantsPng = arguments.size() == 4 && arguments.at(1) == u"png";
    const bool wantsIcns = arguments.size() == 3 && arguments.at(1) == u"icns";
    if (!wantsPng && !wantsIcns) {
        return failWith(u"Usage: icon_maker IMAGE png SIZE FILE | icon_maker IMAGE icns FILE"_s);
    }

    const QImage image(arguments.first());
    if (image.isNull() || image.width() != image.height()) {
        return failWith(u"%1 is not a square image"_s.arg(arguments.first()));
    }

    const QByteArray bytes = wantsIcns ? icnsFile(image) : pngFile(image, arguments.at(2).toInt());
    if (bytes.isEmpty() || !saveBytes(arguments.last(), bytes)) {
        return failWith(u"%1 could not be written"_s.arg(arguments.last()));
    }
    return 0;
}

#include "app/tarnwick_client_window.h"

#include <QCoreApplication>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QSize>
#include <QtMath>

#include <array>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

std::filesystem::path logoWorkingDirectory()
{
    std::error_code error;
    return std::filesystem::current_path(error); // empty on an error
}

std::filesystem::path logoExecutablePath()
{
    const std::string path = QCoreApplication::applicationFilePath().toStdString();
    // From UTF-8, which is not the narrow encoding of every system.
    return path.empty() ? logoWorkingDirectory() / "TarnwickClient"
                        : std::filesystem::path(std::u8string(path.cbegin(), path.cend()));
}

bool logoExistsAt(const std::filesystem::path& candidate)
{
    std::error_code error;
    return !candidate.empty() && std::filesystem::exists(candidate, error);
}

} // namespace

/// The first candidate that exists, as a file or as anything else; empty when there is none.
std::filesystem::path TarnwickClientWindow::findLogoFile()
{
    const std::filesystem::path fileName = "tarnwick-logo.png";
    const std::filesystem::path executable = logoExecutablePath();
    const std::filesystem::path folder = logoWorkingDirectory();

    const std::array candidates = {
        // An installed bundle
        executable.parent_path().parent_path() / "Resources" / fileName,
        // A bare executable with the logo beside it
        executable.parent_path() / fileName,
        // A start from the folder that holds the project tree
        folder / "tarnwick" / "static" / fileName,
        // A start from the folder that holds the client's build tree
        folder / "client" / "build" / "Tarnwick.app" / "Contents" / "Resources" / fileName,
    };
    for (const std::filesystem::path& candidate : candidates) {
        if (logoExistsAt(candidate)) {
            return candidate;
        }
    }
    return {};
}

/// Shows the logo in the header and as the window icon. If there is none, the header keeps its text.
void TarnwickClientWindow::loadLogo()
{
    const std::filesystem::path file = findLogoFile();
    if (file.empty()) {
        return;
    }
    const std::u8string utf8 = file.u8string();
    const QString path = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    const QPixmap logo(path);
    if (logo.isNull()) {
        return;
    }
    // Scaled to device pixels, otherwise it would be blurred on high-DPI screens; rounded down, otherwise it could be
    // larger than the label.
    const qreal ratio = logoLabel->devicePixelRatioF();
    const QSize available(qFloor(logoLabel->width() * ratio), qFloor(logoLabel->height() * ratio));
    QPixmap fitted = logo.scaled(available, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    fitted.setDevicePixelRatio(ratio);
    logoLabel->setPixmap(fitted);
    setWindowIcon(QIcon(path));
}

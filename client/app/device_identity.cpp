#include "app/tarnwick_client_window.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <sstream>

/// A new identifier for this installation: a fixed prefix and the monotonic clock's ticks in lower-case hexadecimal.
QString TarnwickClientWindow::generateDeviceId()
{
    std::ostringstream text;
    text << "twqt-" << std::hex;
    text << std::int64_t{std::chrono::steady_clock::now().time_since_epoch().count()};
    return QString::fromStdString(text.str());
}

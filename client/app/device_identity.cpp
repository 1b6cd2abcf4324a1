#include "app/tarnwick_client_window.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <sstream>

/**
 * A new identifier for this installation: a fixed prefix and the monotonic clock's ticks in lower-case hexadecimal.
 *
 * On the usual platforms a tick is a nanosecond since the system's start. The reading alone makes it unique.
 */
QString TarnwickClientWindow::generateDeviceId()
{
    std::ostringstream text;
    text << "twqt-" << std::hex;
    text << std::int64_t{std::chrono::steady_clock::now().time_since_epoch().count()};
    return QString::fromStdString(text.str());
}

#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace support {

/// Runs the event loop until the condition is true; false on a timeout. Checks after every event, while QTest checks
/// every ten milliseconds: for hundreds of data rows, that makes a difference of minutes.
template <typename Condition>
bool waitFor(const Condition& holds, int timeoutMs = 30000)
{
    const QDeadlineTimer deadline(timeoutMs);
    QTimer heartbeat; // to check the deadline even if there are no events
    heartbeat.start(50);
    while (!holds()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace support

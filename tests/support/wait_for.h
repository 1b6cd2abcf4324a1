#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace support {

/// Runs the event loop until the condition holds; false when it does not in time. Looks after every event, where
/// QTest's own way looks every ten milliseconds: that makes a difference of minutes to a table of hundreds of rows.
template <typename Condition>
bool waitFor(const Condition& holds, int timeoutMs = 30000)
{
    const QDeadlineTimer deadline(timeoutMs);
    QTimer heartbeat; // without events, the deadline is looked at all the same
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

#pragma once

#include "reply.h"

#include <QObject>
#include <QTimer>

class QTcpSocket;

namespace support {

/// Sends one script with its timing. Waits while the client does not read, so that a huge reply needs little memory.
class ReplyPlayer : public QObject
{
    Q_OBJECT

public:
    ReplyPlayer(ReplyScript script, QTcpSocket* socket, QObject* parent);

    void start();
    /// Sends the held part of the script.
    void release();
    bool isHolding() const
    {
        return m_script.holdAt >= 0 && m_position == m_script.holdAt && m_position < m_script.size();
    }

Q_SIGNALS:
    /// The last byte has been passed to the system.
    void finished();

private:
    void sendMore();
    qint64 nextStop() const;
    qint64 unsentBytes() const;

    ReplyScript m_script;
    QTcpSocket* m_socket = nullptr;
    qint64 m_position = 0;
    QTimer m_pause;
    bool m_isFinished = false;
};

} // namespace support

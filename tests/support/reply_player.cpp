#include "reply_player.h"

#include <QSslSocket>

#include <utility>

namespace support {

namespace {

constexpr qint64 playerBlockSize = 64LL * 1024;
constexpr qint64 playerMostUnsent = 4 * playerBlockSize;

} // namespace

ReplyPlayer::ReplyPlayer(ReplyScript script, QTcpSocket* socket, QObject* parent)
    : QObject(parent),
      m_script(std::move(script)),
      m_socket(socket)
{
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    connect(&m_pause, &QTimer::timeout, this, &ReplyPlayer::sendMore);
}

void ReplyPlayer::start()
{
    // Queued, since a socket may emit the signal from within write().
    connect(m_socket, &QTcpSocket::bytesWritten, this, &ReplyPlayer::sendMore, Qt::QueuedConnection);
    if (auto* encrypted = qobject_cast<QSslSocket*>(m_socket)) {
        connect(encrypted, &QSslSocket::encryptedBytesWritten, this, &ReplyPlayer::sendMore, Qt::QueuedConnection);
    }
    m_pause.start(m_script.delayMs);
}

void ReplyPlayer::release()
{
    m_script.holdAt = -1;
    sendMore();
}

void ReplyPlayer::sendMore()
{
    // Stops when the client is gone: writing to a closed socket would only print a warning.
    while (!m_isFinished && !m_pause.isActive() && m_socket->state() == QAbstractSocket::ConnectedState) {
        if (m_position == m_script.size() && unsentBytes() == 0) {
            m_isFinished = true;
            Q_EMIT finished();
            return;
        }
        const QByteArray block = m_script.slice(m_position, nextStop() - m_position);
        if (block.isEmpty() || unsentBytes() >= playerMostUnsent || m_socket->write(block) != block.size()) {
            return;
        }
        const bool drips = m_script.drip.bytes > 0 && m_position >= m_script.drip.from && m_position < m_script.drip.to;
        m_position += block.size();
        if (drips) {
            m_socket->flush();
            m_pause.start(m_script.drip.everyMs);
        }
    }
}

/// The latest end of the next block.
qint64 ReplyPlayer::nextStop() const
{
    const DripPace& drip = m_script.drip;
    qint64 stop = qMin(m_script.size(), m_position + playerBlockSize);
    if (m_script.holdAt >= m_position) {
        stop = qMin(stop, m_script.holdAt);
    }
    if (drip.bytes > 0 && m_position < drip.from) {
        stop = qMin(stop, drip.from);
    } else if (drip.bytes > 0 && m_position < drip.to) {
        stop = qMin(stop, qMin(drip.to, m_position + drip.bytes));
    }
    return stop;
}

qint64 ReplyPlayer::unsentBytes() const
{
    // A TLS socket empties its own buffer into that of the plain socket, which has no limit.
    const auto* encrypted = qobject_cast<const QSslSocket*>(m_socket);
    return m_socket->bytesToWrite() + (encrypted ? encrypted->encryptedBytesToWrite() : 0);
}

} // namespace support

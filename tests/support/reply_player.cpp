#include "reply_player.h"

#include <QSslSocket>
#include <QTcpSocket>

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
    // Queued, since a socket may report written bytes from within write().
    connect(m_socket, &QTcpSocket::bytesWritten, this, &ReplyPlayer::sendMore, Qt::QueuedConnection);
    if (auto* encrypted = qobject_cast<QSslSocket*>(m_socket)) {
        connect(encrypted, &QSslSocket::encryptedBytesWritten, this, &ReplyPlayer::sendMore, Qt::QueuedConnection);
    }
    m_pause.start(m_script.delayMs);
}

void ReplyPlayer::release()
{
    m_isReleased = true;
    sendMore();
}

bool ReplyPlayer::isHolding() const
{
    return m_position < m_script.size() && m_position == sendableSize();
}

void ReplyPlayer::sendMore()
{
    if (m_isFinished || m_pause.isActive()) {
        return;
    }
    // A vanished client ends the play: writing to a closed socket would only print a warning.
    if (m_socket->state() != QAbstractSocket::ConnectedState) {
        return;
    }
    while (m_position < sendableSize() && unsentBytes() < playerMostUnsent) {
        const bool drips = isDripping();
        const QByteArray block = m_script.slice(m_position, nextBlockSize());
        if (m_socket->write(block) != block.size()) {
            return;
        }
        m_position += block.size();
        if (drips) {
            m_socket->flush();
            m_pause.start(m_script.drip.everyMs);
            return;
        }
    }
    if (m_position >= m_script.size() && unsentBytes() == 0) {
        m_isFinished = true;
        Q_EMIT finished();
    }
}

qint64 ReplyPlayer::nextBlockSize() const
{
    const DripPace& drip = m_script.drip;
    const qint64 left = sendableSize() - m_position;
    if (isDripping()) {
        return qMin(left, qMin(drip.bytes, drip.to - m_position));
    }
    const bool dripAhead = drip.bytes > 0 && m_position < drip.from;
    return qMin(playerBlockSize, dripAhead ? qMin(left, drip.from - m_position) : left);
}

qint64 ReplyPlayer::sendableSize() const
{
    const bool holds = m_script.holdAt >= 0 && !m_isReleased;
    return holds ? qMin(m_script.holdAt, m_script.size()) : m_script.size();
}

qint64 ReplyPlayer::unsentBytes() const
{
    // An encrypting socket empties its own buffer into that of the socket beneath, which has no limit.
    const auto* encrypted = qobject_cast<const QSslSocket*>(m_socket);
    return m_socket->bytesToWrite() + (encrypted ? encrypted->encryptedBytesToWrite() : 0);
}

bool ReplyPlayer::isDripping() const
{
    const DripPace& drip = m_script.drip;
    return drip.bytes > 0 && m_position >= drip.from && m_position < drip.to;
}

} // namespace support

#include "scripted_connection.h"

#include "reply_player.h"

#include <QTcpSocket>
#include <QTimer>

#if defined(Q_OS_WIN)
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

namespace support {

namespace {

/// Closes with a TCP reset. Unsent bytes are lost.
void resetConnection(QAbstractSocket* socket)
{
    // abort() alone still closes normally when everything has been read and sent. A linger time of zero turns this into
    // a reset.
    linger lingering = {};
    lingering.l_onoff = 1;
    lingering.l_linger = 0;
#if defined(Q_OS_WIN)
    ::setsockopt(static_cast<SOCKET>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER,
                 reinterpret_cast<const char*>(&lingering), sizeof lingering);
#else
    ::setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &lingering, sizeof lingering);
#endif
    socket->abort();
}

} // namespace

ScriptedConnection::ScriptedConnection(int number, QTcpSocket* socket, QObject* parent)
    : QObject(parent),
      m_number(number),
      m_socket(socket)
{
    m_socket->setParent(this);
    // The bytes of a drip have to be sent at once; otherwise the system collects them until it gets an acknowledgement.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket, &QTcpSocket::readyRead, this, &ScriptedConnection::readMore);
    connect(m_socket, &QTcpSocket::disconnected, this, [this] {
        m_stage = Stage::Silent;
        Q_EMIT gone();
    });
}

void ScriptedConnection::begin()
{
    // Data, or even the end, may have arrived before the signals were connected.
    readMore();
    if (m_socket->state() == QAbstractSocket::UnconnectedState) {
        Q_EMIT gone();
    }
}

void ScriptedConnection::answer(const ReplyScript& script)
{
    if (m_stage != Stage::WaitingForAnswer) {
        return;
    }
    m_stage = Stage::Answering;
    m_player = new ReplyPlayer(script, m_socket, this);
    connect(m_player, &ReplyPlayer::finished, this, [this, ending = script.ending, idleMs = script.idleMs] {
        m_player->deleteLater();
        endAnswer(ending, idleMs);
    });
    m_player->start();
}

void ScriptedConnection::releaseAnswer()
{
    if (m_player) {
        m_player->release();
    }
}

bool ScriptedConnection::holdsAnswer() const
{
    return m_player && m_player->isHolding();
}

void ScriptedConnection::close()
{
    m_stage = Stage::Silent;
    m_socket->disconnectFromHost();
}

void ScriptedConnection::readMore()
{
    const QByteArray bytes = m_socket->readAll();
    if (bytes.isEmpty()) {
        return;
    }
    Q_EMIT bytesReceived(bytes.size());
    m_stream += bytes;
    while (auto request = takeRequest(m_stream)) {
        request->connection = m_number;
        m_waiting.append(*request);
        Q_EMIT requestArrived(*request);
    }
    takeNextRequest();
}

void ScriptedConnection::takeNextRequest()
{
    if (m_stage == Stage::WaitingForRequest && !m_waiting.isEmpty()) {
        m_stage = Stage::WaitingForAnswer;
        Q_EMIT requestDue(m_waiting.takeFirst());
    }
}

void ScriptedConnection::endAnswer(Ending ending, int idleMs)
{
    switch (ending) {
    case Ending::Close:
        close();
        break;
    case Ending::Reset:
        m_stage = Stage::Silent;
        resetConnection(m_socket);
        break;
    case Ending::Silence:
        m_stage = Stage::Silent;
        break;
    case Ending::CloseWhenIdle:
        QTimer::singleShot(idleMs, this, [this] {
            if (isIdle()) {
                close();
            }
        });
        [[fallthrough]];
    case Ending::NextRequest:
        m_stage = Stage::WaitingForRequest;
        takeNextRequest();
        break;
    }
}

} // namespace support

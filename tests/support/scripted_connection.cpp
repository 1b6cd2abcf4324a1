#include "scripted_connection.h"

#include "reply_player.h"
#include "socket_reset.h"

#include <QTcpSocket>

namespace support {

namespace {

bool wantsKeepAlive(const RecordedRequest& request)
{
    const QByteArray wish = request.header("Connection").toLower();
    return request.version == "HTTP/1.0" ? wish == "keep-alive" : wish != "close";
}

} // namespace

ScriptedConnection::ScriptedConnection(int number, QTcpSocket* socket, QObject* parent)
    : QObject(parent),
      m_number(number),
      m_socket(socket)
{
    m_socket->setParent(this);
    // A drip has to leave at once; otherwise the system collects small pieces until the last one is
    // acknowledged.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_idle.setSingleShot(true);
    connect(&m_idle, &QTimer::timeout, this, [this] {
        if (isIdle()) {
            close();
        }
    });
    connect(m_socket, &QTcpSocket::readyRead, this, &ScriptedConnection::readMore);
    connect(m_socket, &QTcpSocket::disconnected, this, [this] {
        m_stage = Stage::Silent;
        Q_EMIT gone();
    });
}

void ScriptedConnection::begin()
{
    // Bytes, or even the end, may have come before anyone listened.
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
    auto* player = new ReplyPlayer(script, m_socket, this);
    m_player = player;
    const Ending ending = script.ending;
    const int idleMs = script.idleMs;
    connect(player, &ReplyPlayer::finished, this, [this, player, ending, idleMs] {
        player->deleteLater();
        endAnswer(ending, idleMs);
    });
    player->start();
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

bool ScriptedConnection::isIdle() const
{
    return m_stage == Stage::WaitingForRequest && !m_reader.isMidway();
}

void ScriptedConnection::close()
{
    m_stage = Stage::Silent;
    m_socket->disconnectFromHost();
}

void ScriptedConnection::reset()
{
    m_stage = Stage::Silent;
    resetConnection(m_socket);
}

void ScriptedConnection::readMore()
{
    const QByteArray bytes = m_socket->readAll();
    if (bytes.isEmpty()) {
        return;
    }
    Q_EMIT bytesReceived(bytes.size());
    m_reader.feed(bytes);
    while (auto request = m_reader.next()) {
        request->connection = m_number;
        m_waiting.append(*request);
        Q_EMIT requestArrived(*request);
    }
    takeNextRequest();
}

void ScriptedConnection::takeNextRequest()
{
    if (m_stage != Stage::WaitingForRequest || m_waiting.isEmpty()) {
        return;
    }
    m_idle.stop();
    const RecordedRequest request = m_waiting.takeFirst();
    m_stage = Stage::WaitingForAnswer;
    m_clientKeepsAlive = wantsKeepAlive(request);
    Q_EMIT requestDue(request);
}

void ScriptedConnection::endAnswer(Ending ending, int idleMs)
{
    const bool mayStayOpen = ending == Ending::NextRequest || ending == Ending::CloseWhenIdle;
    if (ending == Ending::Close || (mayStayOpen && !m_clientKeepsAlive)) {
        close();
    } else if (ending == Ending::Reset) {
        reset();
    } else if (ending == Ending::Silence) {
        m_stage = Stage::Silent;
    } else {
        m_stage = Stage::WaitingForRequest;
        if (ending == Ending::CloseWhenIdle) {
            m_idle.start(idleMs);
        }
        takeNextRequest();
    }
}

} // namespace support

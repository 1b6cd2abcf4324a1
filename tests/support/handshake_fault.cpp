#include "handshake_fault.h"

#include <QTcpSocket>

namespace support {

namespace {

constexpr char handshakeRecord = 0x16;

/// A server's first message that picks TLS 1.0 and the cipher AES128-SHA.
QByteArray oldServerHello()
{
    const QByteArray random(32, '\x5a');
    const QByteArray body = QByteArray::fromHex("0301") + random + QByteArray::fromHex("00002f00");
    const QByteArray message = QByteArray::fromHex("020000") + static_cast<char>(body.size()) + body;
    return QByteArray::fromHex("16030100") + static_cast<char>(message.size()) + message;
}

} // namespace

FaultyHandshake::FaultyHandshake(HandshakeFault fault, QTcpSocket* socket, QObject* parent)
    : QObject(parent),
      m_fault(fault),
      m_socket(socket)
{
    m_socket->setParent(this);
    connect(m_socket, &QTcpSocket::readyRead, this, &FaultyHandshake::readMore);
    connect(m_socket, &QTcpSocket::disconnected, this, &FaultyHandshake::gone);
}

void FaultyHandshake::begin()
{
    readMore();
    if (m_socket->state() == QAbstractSocket::UnconnectedState) {
        Q_EMIT gone();
    }
}

void FaultyHandshake::readMore()
{
    const QByteArray bytes = m_socket->readAll();
    if (bytes.isEmpty()) {
        return;
    }
    if (!m_hasSeenHello && !bytes.startsWith(handshakeRecord)) {
        Q_EMIT bytesInTheClear(bytes.size());
        return;
    }
    if (!m_hasSeenHello && m_fault == HandshakeFault::OldVersion) {
        m_socket->write(oldServerHello());
    }
    m_hasSeenHello = true;
}

} // namespace support

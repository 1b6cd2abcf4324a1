#pragma once

#include <QObject>

class QTcpSocket;

namespace support {

/// How a server can fail a client that wants to speak TLS.
enum class HandshakeFault {
    Silence,    ///< accepts the connection and never says a word
    OldVersion, ///< agrees to TLS 1.0 only
};

/// One connection that never gets past the handshake. The old version is spoken by hand, because a system's
/// TLS library may refuse to serve it at all.
class FaultyHandshake : public QObject
{
    Q_OBJECT

public:
    /// Takes the socket over. Call begin() once the signals are connected.
    FaultyHandshake(HandshakeFault fault, QTcpSocket* socket, QObject* parent);

    void begin();

Q_SIGNALS:
    /// The client sent something that is not TLS.
    void bytesInTheClear(qint64 count);
    void gone();

private:
    void readMore();

    HandshakeFault m_fault;
    QTcpSocket* m_socket = nullptr;
    bool m_hasSeenHello = false;
};

} // namespace support

#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace support {

/// A client on the bare system call interface. Qt's sockets report a reset and an orderly close alike; this
/// one tells them apart.
class SystemSocket
{
public:
    enum class State { Open, Closed, Reset };

    static bool isSupported();

    /// Connects to the port on 127.0.0.1.
    explicit SystemSocket(quint16 port);
    ~SystemSocket();
    Q_DISABLE_COPY_MOVE(SystemSocket)

    void send(const QByteArray& bytes) const;
    /// Takes in what has arrived, without waiting.
    State readMore();
    QByteArray received() const;

private:
    int m_handle = -1;
    State m_state = State::Open;
    QByteArray m_received;
};

} // namespace support

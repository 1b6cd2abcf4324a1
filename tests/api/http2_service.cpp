#include "http2_service.h"

#include <QSslConfiguration>
#include <QTcpSocket>
#include <QtEndian>

using Qt::StringLiterals::operator""_s;

namespace {

enum FrameType : char {
    DataFrame = 0,
    HeadersFrame = 1,
    ResetFrame = 3,
    SettingsFrame = 4,
    GoAwayFrame = 7,
    WindowUpdateFrame = 8,
};

constexpr char endStreamFlag = 1;
constexpr char acknowledgeFlag = 1;
constexpr char endHeadersFlag = 4;
constexpr quint16 initialWindowSetting = 4;
constexpr quint32 refusedStreamError = 7;
constexpr qsizetype frameHeadSize = 9;
constexpr qsizetype frameMaxPayload = 16384;
constexpr qint64 frameMostUnsent = 256LL * 1024;
constexpr QByteArrayView connectionPreface("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n");

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, 0);
    qToBigEndian(number, bytes.data());
    return bytes;
}

quint32 numberAt(const QByteArray& bytes, qsizetype offset)
{
    return qFromBigEndian<quint32>(bytes.constData() + offset);
}

/// The only header of a reply: entry 8 of HPACK's static table (":status") with a literal value of three bytes.
QByteArray statusHeader(int status)
{
    return "\x08\x03" + QByteArray::number(status);
}

} // namespace

Http2Service::Http2Service(const support::TlsIdentity& identity)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(identity.chain);
    configuration.setPrivateKey(identity.key);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    configuration.setAllowedNextProtocols({QSslConfiguration::ALPNProtocolHTTP2});
    setSslConfiguration(configuration);
    connect(this, &QTcpServer::pendingConnectionAvailable, this, &Http2Service::accept);
    if (!listen(QHostAddress::LocalHost)) {
        qFatal("The service cannot listen: %s", qPrintable(errorString()));
    }
}

QString Http2Service::origin() const
{
    return u"https://127.0.0.1:%1"_s.arg(serverPort());
}

void Http2Service::answerWith(const QByteArray& text, qint64 size, int status)
{
    pattern = text;
    bodySize = size;
    bodyStatus = status;
}

void Http2Service::accept()
{
    while (QTcpSocket* socket = nextPendingConnection()) {
        connections.insert(socket, {});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readMore(socket); });
        // Queued, since a socket may emit the signal from within write().
        connect(
            qobject_cast<QSslSocket*>(socket), &QSslSocket::encryptedBytesWritten, this,
            [this, socket] { sendMore(socket); }, Qt::QueuedConnection);
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            connections.remove(socket);
            socket->deleteLater();
        });
        sendFrame(socket, SettingsFrame, 0, 0, {});
        readMore(socket);
    }
}

void Http2Service::readMore(QTcpSocket* socket)
{
    connections[socket].received += socket->readAll();
    if (!connections[socket].hasPreface && connections[socket].received.size() >= connectionPreface.size()) {
        Q_ASSERT(connections[socket].received.startsWith(connectionPreface));
        connections[socket].received.remove(0, connectionPreface.size());
        connections[socket].hasPreface = true;
    }
    // A frame may close the connection, which removes it from the list.
    while (connections.contains(socket) && connections[socket].hasPreface) {
        QByteArray& received = connections[socket].received;
        if (received.size() < frameHeadSize) {
            return;
        }
        const auto size = qsizetype(numberAt(received, 0) >> 8U);
        if (received.size() < frameHeadSize + size) {
            return;
        }
        const char type = received.at(3);
        const char flags = received.at(4);
        const quint32 stream = numberAt(received, 5);
        const QByteArray payload = received.mid(frameHeadSize, size);
        received.remove(0, frameHeadSize + size);
        handleFrame(socket, type, flags, stream, payload);
    }
}

void Http2Service::handleFrame(QTcpSocket* socket, char type, char flags, quint32 stream, const QByteArray& payload)
{
    Connection& connection = connections[socket];
    if (type == SettingsFrame && flags != acknowledgeFlag) {
        readSettings(connection, payload);
        sendFrame(socket, SettingsFrame, acknowledgeFlag, 0, {});
    } else if (type == WindowUpdateFrame) {
        (stream == 0 ? connection.window : connection.streamWindows[stream]) += numberAt(payload, 0);
        sendMore(socket);
    } else if (type == ResetFrame) {
        aborted += connection.sent.remove(stream) ? 1 : 0;
    } else if (type == HeadersFrame) {
        ++requests;
        connection.streamWindows.insert(stream, connection.streamWindow);
        answerRequest(socket, stream);
    }
}

void Http2Service::readSettings(Connection& connection, const QByteArray& payload)
{
    for (qsizetype offset = 0; offset + 6 <= payload.size(); offset += 6) {
        if (qFromBigEndian<quint16>(payload.constData() + offset) == initialWindowSetting) {
            connection.streamWindow = numberAt(payload, offset + 2);
        }
    }
}

void Http2Service::answerRequest(QTcpSocket* socket, quint32 stream)
{
    switch (behaviour) {
    case Behaviour::Answer:
        sendFrame(socket, HeadersFrame, endHeadersFlag, stream, statusHeader(bodyStatus));
        connections[socket].sent.insert(stream, 0);
        sendMore(socket);
        break;
    case Behaviour::Close:
        socket->disconnectFromHost();
        break;
    case Behaviour::GoAway:
        sendFrame(socket, GoAwayFrame, 0, 0, bigEndian(0) + bigEndian(0));
        socket->disconnectFromHost();
        break;
    case Behaviour::RefuseStream:
        sendFrame(socket, ResetFrame, 0, stream, bigEndian(refusedStreamError));
        break;
    }
}

void Http2Service::sendMore(QTcpSocket* socket)
{
    const auto found = connections.find(socket);
    if (found == connections.end()) {
        return;
    }
    const QList<quint32> streams = found->sent.keys();
    for (const quint32 stream : streams) {
        qint64& sent = found->sent[stream];
        qint64& window = found->streamWindows[stream];
        const auto* encrypted = qobject_cast<const QSslSocket*>(socket);
        while (socket->bytesToWrite() + encrypted->encryptedBytesToWrite() < frameMostUnsent) {
            const qint64 size = qMin(qMin(bodySize - sent, qint64(frameMaxPayload)), qMin(window, found->window));
            const bool isLast = sent + size == bodySize;
            if (size <= 0 && !isLast) {
                break;
            }
            const QByteArray text = bodyPart(sent, size);
            sendFrame(socket, DataFrame, isLast ? endStreamFlag : char(0), stream, text);
            sent += size;
            window -= size;
            found->window -= size;
            if (isLast) {
                found->sent.remove(stream);
                break;
            }
        }
    }
}

QByteArray Http2Service::bodyPart(qint64 offset, qint64 size) const
{
    QByteArray part;
    while (part.size() < size) {
        part += pattern.mid((offset + part.size()) % pattern.size(), size - part.size());
    }
    return part;
}

void Http2Service::sendFrame(QTcpSocket* socket, char type, char flags, quint32 stream, const QByteArray& payload)
{
    const QByteArray size = bigEndian(static_cast<quint32>(payload.size())).mid(1);
    socket->write(size + type + flags + bigEndian(stream) + payload);
}

#pragma once

#include "scripted_server.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpSocket>
#include <QTest>

namespace support {

constexpr int selfTestPatienceMs = 20000;

/// The result of one request.
struct Fetched
{
    int status = 0;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QByteArray body;
};

/// Waits until a reply has finished, reads it and deletes it.
inline Fetched finish(QNetworkReply* reply)
{
    Fetched fetched{.status = 0, .error = QNetworkReply::UnknownNetworkError, .body = {}};
    if (QTest::qWaitFor([reply] { return reply->isFinished(); }, selfTestPatienceMs)) {
        fetched = {.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                   .error = reply->error(),
                   .body = reply->isOpen() ? reply->readAll() : QByteArray()};
    }
    reply->deleteLater();
    return fetched;
}

/// Sends a GET and waits for its end. With a timeout, the transfer may stall for that time.
inline Fetched fetch(QNetworkAccessManager& network, const QString& url, int timeoutMs = 0)
{
    QNetworkRequest request{QUrl(url)};
    request.setTransferTimeout(timeoutMs);
    return finish(network.get(request));
}

/// A client that sends raw HTTP and keeps what it receives.
class RawClient : public QObject
{
public:
    explicit RawClient(const ScriptedServer& server)
    {
        connect(&m_socket, &QTcpSocket::readyRead, this, [this] {
            m_received += m_socket.readAll();
            ++m_pieces;
        });
        m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), server.port());
        if (!QTest::qWaitFor([this] { return isConnected(); }, selfTestPatienceMs)) {
            qFatal("No connection to the scripted server: %s", qPrintable(m_socket.errorString()));
        }
    }

    void send(const QByteArray& bytes) { m_socket.write(bytes); }
    void sendGet(const QByteArray& target) { send("GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n"); }
    /// Everything received so far.
    QByteArray received() const { return m_received; }
    /// At least this many pieces were received.
    int receivedPieces() const { return m_pieces; }
    bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }
    /// Disconnects like a killed program.
    void vanish() { m_socket.abort(); }

private:
    QTcpSocket m_socket;
    QByteArray m_received;
    int m_pieces = 0;
};

} // namespace support

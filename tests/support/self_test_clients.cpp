#include "self_test_clients.h"

#include "scripted_server.h"

#include <QTest>

namespace support {

namespace {

constexpr int patienceMs = 20000;

} // namespace

Fetched fetch(QNetworkAccessManager& network, const QString& url, int timeoutMs)
{
    QNetworkRequest request{QUrl(url)};
    request.setTransferTimeout(timeoutMs);
    return finish(network.get(request));
}

Fetched post(QNetworkAccessManager& network, const QString& url, const QByteArray& body)
{
    QNetworkRequest request{QUrl(url)};
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/x-www-form-urlencoded"));
    return finish(network.post(request, body));
}

Fetched finish(QNetworkReply* reply)
{
    Fetched fetched;
    if (QTest::qWaitFor([reply] { return reply->isFinished(); }, patienceMs)) {
        fetched.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        fetched.error = reply->error();
        fetched.body = reply->isOpen() ? reply->readAll() : QByteArray();
    } else {
        fetched.error = QNetworkReply::UnknownNetworkError;
    }
    reply->deleteLater();
    return fetched;
}

RawClient::RawClient(const ScriptedServer& server)
{
    connect(&m_socket, &QTcpSocket::readyRead, this, [this] {
        const QByteArray bytes = m_socket.readAll();
        m_receivedSize += bytes.size();
        m_received += bytes.left(m_mostKept - m_received.size());
        ++m_pieces;
    });
    m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), server.port());
    if (!QTest::qWaitFor([this] { return isConnected(); }, patienceMs)) {
        qFatal("No connection to the scripted server: %s", qPrintable(m_socket.errorString()));
    }
}

void RawClient::send(const QByteArray& bytes)
{
    m_socket.write(bytes);
}

void RawClient::sendGet(const QByteArray& target)
{
    send("GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
}

QByteArray RawClient::received() const
{
    return m_received;
}

bool RawClient::isConnected() const
{
    return m_socket.state() == QAbstractSocket::ConnectedState;
}

qint64 RawClient::receivedSize() const
{
    return m_receivedSize;
}

void RawClient::discardAllBut(qsizetype most)
{
    m_mostKept = most;
}

int RawClient::receivedPieces() const
{
    return m_pieces;
}

void RawClient::vanish()
{
    m_socket.abort();
}

} // namespace support

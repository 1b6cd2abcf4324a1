#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QString>
#include <QTcpSocket>

#include <limits>

namespace support {

class ScriptedServer;

/// What came of one request.
struct Fetched
{
    int status = 0;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    QByteArray body;
};

/// Sends a GET and waits for its end. With a timeout the transfer may stand still for that long.
Fetched fetch(QNetworkAccessManager& network, const QString& url, int timeoutMs = 0);
Fetched post(QNetworkAccessManager& network, const QString& url, const QByteArray& body);
/// Waits for a reply to end, reads it and deletes it.
Fetched finish(QNetworkReply* reply);

/// A client that speaks HTTP by hand and keeps what comes back.
class RawClient : public QObject
{
    Q_OBJECT

public:
    explicit RawClient(const ScriptedServer& server);

    void send(const QByteArray& bytes);
    void sendGet(const QByteArray& target);
    /// Everything received so far, unless some is discarded.
    QByteArray received() const;
    qint64 receivedSize() const;
    /// Keeps only so many of the first bytes.
    void discardAllBut(qsizetype most);
    /// In how many pieces it came, at least.
    int receivedPieces() const;
    bool isConnected() const;
    /// Goes without a word, as a killed program would.
    void vanish();

private:
    QTcpSocket m_socket;
    QByteArray m_received;
    qint64 m_receivedSize = 0;
    qsizetype m_mostKept = std::numeric_limits<qsizetype>::max();
    int m_pieces = 0;
};

} // namespace support

#pragma once

#include "support/tls_material.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QSslServer>
#include <QString>

class QTcpSocket;

/// Just enough of HTTP/2 over TLS to answer every request in the same way: with any status and a JSON body of any size,
/// or by closing without an answer. It does not read headers, so all paths are the same to it.
class Http2Service : public QSslServer
{
    Q_OBJECT

public:
    enum class Behaviour {
        Answer,       ///< the status and the body
        Close,        ///< ends the connection
        GoAway,       ///< reports that no request was processed, and ends the connection
        RefuseStream, ///< reports that this request was not processed
    };

    explicit Http2Service(const support::TlsIdentity& identity);

    QString origin() const;
    /// Repeats the text and cuts it to the size.
    void answerWith(const QByteArray& text, qint64 size, int status = 200);
    /// Sends the text as it is.
    void answerWith(const QByteArray& text) { answerWith(text, text.size()); }
    void behave(Behaviour wanted) { behaviour = wanted; }
    int requestCount() const { return requests; }
    /// How many answers the client has aborted.
    int abortedCount() const { return aborted; }

private:
    struct Connection
    {
        QByteArray received;
        bool hasPreface = false;
        qint64 window = 65535;
        qint64 streamWindow = 65535;
        QHash<quint32, qint64> streamWindows;
        QHash<quint32, qint64> sent;
    };

    void accept();
    void readMore(QTcpSocket* socket);
    void handleFrame(QTcpSocket* socket, char type, char flags, quint32 stream, const QByteArray& payload);
    void readSettings(Connection& connection, const QByteArray& payload);
    void answerRequest(QTcpSocket* socket, quint32 stream);
    void sendMore(QTcpSocket* socket);
    QByteArray bodyPart(qint64 offset, qint64 size) const;
    static void sendFrame(QTcpSocket* socket, char type, char flags, quint32 stream, const QByteArray& payload);

    QHash<QTcpSocket*, Connection> connections;
    Behaviour behaviour = Behaviour::Answer;
    QByteArray pattern;
    qint64 bodySize = 0;
    int bodyStatus = 200;
    int requests = 0;
    int aborted = 0;
};

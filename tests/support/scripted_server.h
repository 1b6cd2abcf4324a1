#pragma once

#include "recorded_request.h"
#include "reply.h"
#include "tls_material.h"

#include <QHash>
#include <QList>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

class QTcpServer;
class QTcpSocket;

namespace support {

class ScriptedConnection;

/// How a server can fail a client that wants to speak TLS.
enum class HandshakeFault {
    Silence,    ///< accepts the connection and never says a word
    OldVersion, ///< agrees to TLS 1.0 only
};

/// An HTTP server on a loopback port of its own, for tests that look at the client from the wire. It answers
/// what the test tells it to, records every byte of every request, and can misbehave in most of the ways in
/// which servers and networks do. It lives in the test's thread: it moves only while that thread runs an
/// event loop, so wait with QTRY_*.
///
/// A request is answered by the route of its path, else by the handler, else with a 404. A client may vanish
/// at any moment, also while its answer is held, delayed or dripping.
class ScriptedServer
{
public:
    using Handler = std::function<Reply(const RecordedRequest&)>;

    /// Speaks plain HTTP.
    ScriptedServer();
    /// Speaks HTTPS.
    explicit ScriptedServer(const TlsIdentity& identity);
    /// Wants to speak HTTPS, and fails every client before a request can be sent.
    explicit ScriptedServer(HandshakeFault fault);
    ~ScriptedServer();
    Q_DISABLE_COPY_MOVE(ScriptedServer)

    /// Scheme, host and port, without a trailing slash.
    QString origin(const QString& host = QStringLiteral("127.0.0.1")) const;
    quint16 port() const { return m_port; }

    // What is answered. Paths are given without the query; all of it may change at any time.
    void onRequest(Handler handler) { m_handler = std::move(handler); }
    void onRequest(const QByteArray& path, Handler handler) { m_routes.insert(path, Route{std::move(handler), {}, 0}); }
    void reply(const QByteArray& path, const Reply& reply) { replies(path, {reply}); }
    /// One after the other; the last one repeats.
    void replies(const QByteArray& path, const QList<Reply>& replies) { m_routes.insert(path, Route{{}, replies, 0}); }

    // When it is answered. Requests to a held path are recorded and wait; the route counts as it is on release.
    void hold(const QByteArray& path) { m_heldPaths.append(path); }
    /// Answers what waits, and whatever comes later.
    void release(const QByteArray& path);
    /// How many requests to the path wait with their client still there.
    qsizetype heldCount(const QByteArray& path) const;
    /// Sends the bodies of the answers that wait after their heads.
    void releaseBodies();
    /// How many answers wait like that.
    qsizetype heldBodyCount() const;

    // What has come in.
    QList<RecordedRequest> requests() const { return m_requests; }
    QList<RecordedRequest> requests(const QByteArray& path) const;
    qsizetype count() const { return m_requests.size(); }
    qsizetype count(const QByteArray& path) const { return requests(path).size(); }
    void forgetRequests() { m_requests.clear(); }
    /// Every byte of HTTP that has arrived, of unfinished requests too; over TLS those after decryption.
    qint64 httpBytesReceived() const { return m_httpBytesReceived; }
    /// TCP connections accepted so far, with those that never got through a TLS handshake.
    int connectionCount() const { return m_connectionCount; }
    /// Connections now open on which requests can come.
    qsizetype openConnectionCount() const { return m_connections.size(); }

    // The life of the server.
    void closeIdleConnections();
    /// Closes everything: from now on connections are refused.
    void stop();
    /// Listens again on the former port.
    void restart() { listen(); }

private:
    struct Route
    {
        Handler handler;
        QList<Reply> replies;
        qsizetype next = 0;
    };
    struct HeldRequest
    {
        QPointer<ScriptedConnection> connection;
        RecordedRequest request;
    };

    void begin();
    void listen();
    void serveHttp(QTcpSocket* socket);
    void failHandshake(QTcpSocket* socket);
    Reply replyTo(const RecordedRequest& request);

    bool m_isEncrypted = false;
    std::optional<HandshakeFault> m_fault;
    quint16 m_port = 0;
    int m_connectionCount = 0;
    int m_lastConnectionNumber = 0;
    qint64 m_httpBytesReceived = 0;
    Handler m_handler;
    QHash<QByteArray, Route> m_routes;
    QList<QByteArray> m_heldPaths;
    QList<HeldRequest> m_held;
    QList<RecordedRequest> m_requests;
    QList<ScriptedConnection*> m_connections;
    // Owns the connections, so it goes first.
    std::unique_ptr<QTcpServer> m_listener;
};

} // namespace support

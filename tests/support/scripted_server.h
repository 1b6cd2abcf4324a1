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

/// How a server can fail a TLS handshake.
enum class HandshakeFault {
    Silence,    ///< accepts the connection and sends nothing
    OldVersion, ///< chooses TLS 1.0
};

/// An HTTP server on its own loopback port, for tests that check what the client sends and receives. It replies as the
/// test says, records every byte of every request, and can fail in most of the ways in which servers and networks fail.
/// It lives in the test's thread and works only while that thread runs an event loop, so wait with QTRY_*.
///
/// The reply comes from the route of the path, else from the handler, else it is a 404. A client may disconnect at any
/// time, even while its reply is held, delayed or dripping.
class ScriptedServer
{
public:
    using Handler = std::function<Reply(const RecordedRequest&)>;

    /// Uses HTTP.
    ScriptedServer();
    /// Uses HTTPS.
    explicit ScriptedServer(const TlsIdentity& identity);
    /// Expects HTTPS, and fails every handshake.
    explicit ScriptedServer(HandshakeFault fault);
    ~ScriptedServer();
    Q_DISABLE_COPY_MOVE(ScriptedServer)

    /// Scheme, host and port, without a trailing slash.
    QString origin(const QString& host = QStringLiteral("127.0.0.1")) const;
    quint16 port() const { return m_port; }

    // Replies. Paths are without the query; everything can be changed at any time.
    void onRequest(Handler handler) { m_handler = std::move(handler); }
    void onRequest(const QByteArray& path, Handler handler) { m_routes.insert(path, Route{std::move(handler), {}, 0}); }
    void reply(const QByteArray& path, const Reply& reply) { replies(path, {reply}); }
    /// One after the other; the last one repeats.
    void replies(const QByteArray& path, const QList<Reply>& replies) { m_routes.insert(path, Route{{}, replies, 0}); }

    // Held replies. Requests to a held path are recorded and wait; they get the reply that is set at the release.
    void hold(const QByteArray& path) { m_heldPaths.append(path); }
    /// Sends the waiting replies, and all later ones at once.
    void release(const QByteArray& path);
    /// How many requests to the path are waiting, with their client still connected.
    qsizetype heldCount(const QByteArray& path) const;
    /// Sends the bodies that are held after their heads.
    void releaseBodies();
    /// How many bodies are held.
    qsizetype heldBodyCount() const;

    // Received requests.
    QList<RecordedRequest> requests() const { return m_requests; }
    QList<RecordedRequest> requests(const QByteArray& path) const;
    qsizetype count() const { return m_requests.size(); }
    qsizetype count(const QByteArray& path) const { return requests(path).size(); }
    void forgetRequests() { m_requests.clear(); }
    /// All bytes of HTTP received, including those of incomplete requests; over TLS the decrypted ones.
    qint64 httpBytesReceived() const { return m_httpBytesReceived; }
    /// Accepted TCP connections, including those without a completed TLS handshake.
    int connectionCount() const { return m_connectionCount; }
    /// Open connections that can receive requests.
    qsizetype openConnectionCount() const { return m_connections.size(); }

    // Connections.
    void closeIdleConnections();
    /// Closes everything; from now on connections are refused.
    void stop();

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
    // Owns the connections, so it is destroyed first.
    std::unique_ptr<QTcpServer> m_listener;
};

} // namespace support

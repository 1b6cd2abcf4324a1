#include "scripted_server.h"

#include "scripted_connection.h"

#include <QSslConfiguration>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>

using Qt::StringLiterals::operator""_s;

namespace support {

namespace {

/// Enough for every client of a crowd to get through before the event loop turns to the server.
constexpr int mostUnaccepted = 500;

} // namespace

ScriptedServer::ScriptedServer() : m_listener(std::make_unique<QTcpServer>())
{
    begin();
}

ScriptedServer::ScriptedServer(const TlsIdentity& identity, QSsl::SslProtocol protocol) : m_isEncrypted(true)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(identity.chain);
    configuration.setPrivateKey(identity.key);
    configuration.setProtocol(protocol);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    auto listener = std::make_unique<QSslServer>();
    listener->setSslConfiguration(configuration);
    QObject::connect(listener.get(), &QSslServer::startedEncryptionHandshake, listener.get(),
                     [this] { ++m_connectionCount; });
    m_listener = std::move(listener);
    begin();
}

ScriptedServer::ScriptedServer(HandshakeFault fault)
    : m_isEncrypted(true),
      m_fault(fault),
      m_listener(std::make_unique<QTcpServer>())
{
    begin();
}

ScriptedServer::~ScriptedServer() = default;

QString ScriptedServer::origin(const QString& host) const
{
    const QString scheme = m_isEncrypted ? u"https"_s : u"http"_s;
    return u"%1://%2:%3"_s.arg(scheme, host).arg(m_port);
}

quint16 ScriptedServer::port() const
{
    return m_port;
}

void ScriptedServer::onRequest(Handler handler)
{
    m_handler = std::move(handler);
}

void ScriptedServer::onRequest(const QByteArray& path, Handler handler)
{
    m_routes.insert(path, Route{std::move(handler), {}, 0});
}

void ScriptedServer::reply(const QByteArray& path, const Reply& reply)
{
    replies(path, {reply});
}

void ScriptedServer::replies(const QByteArray& path, const QList<Reply>& replies)
{
    Q_ASSERT(!replies.isEmpty());
    m_routes.insert(path, Route{{}, replies, 0});
}

void ScriptedServer::removeRoute(const QByteArray& path)
{
    m_routes.remove(path);
}

void ScriptedServer::hold(const QByteArray& path)
{
    if (!m_heldPaths.contains(path)) {
        m_heldPaths.append(path);
    }
}

void ScriptedServer::release(const QByteArray& path)
{
    m_heldPaths.removeAll(path);
    const QList<HeldRequest> held = std::exchange(m_held, {});
    for (const HeldRequest& entry : held) {
        if (entry.request.path() != path) {
            m_held.append(entry);
        } else if (m_connections.contains(entry.connection.data())) {
            answer(entry.connection, entry.request);
        }
    }
}

void ScriptedServer::releaseBodies()
{
    for (ScriptedConnection* connection : QList(m_connections)) {
        connection->releaseAnswer();
    }
}

qsizetype ScriptedServer::heldBodyCount() const
{
    return std::count_if(m_connections.cbegin(), m_connections.cend(),
                         [](const ScriptedConnection* connection) { return connection->holdsAnswer(); });
}

qsizetype ScriptedServer::heldCount(const QByteArray& path) const
{
    return std::count_if(m_held.cbegin(), m_held.cend(), [this, &path](const HeldRequest& entry) {
        return entry.request.path() == path && m_connections.contains(entry.connection.data());
    });
}

QList<RecordedRequest> ScriptedServer::requests() const
{
    return m_requests;
}

QList<RecordedRequest> ScriptedServer::requests(const QByteArray& path) const
{
    QList<RecordedRequest> found;
    std::copy_if(m_requests.cbegin(), m_requests.cend(), std::back_inserter(found),
                 [&path](const RecordedRequest& request) { return request.path() == path; });
    return found;
}

qsizetype ScriptedServer::count() const
{
    return m_requests.size();
}

qsizetype ScriptedServer::count(const QByteArray& path) const
{
    return std::count_if(m_requests.cbegin(), m_requests.cend(),
                         [&path](const RecordedRequest& request) { return request.path() == path; });
}

void ScriptedServer::forgetRequests()
{
    m_requests.clear();
}

qint64 ScriptedServer::httpBytesReceived() const
{
    return m_httpBytesReceived;
}

int ScriptedServer::connectionCount() const
{
    return m_connectionCount;
}

qsizetype ScriptedServer::openConnectionCount() const
{
    return m_connections.size();
}

void ScriptedServer::closeIdleConnections()
{
    // A copy: a connection that ends takes itself off the list.
    for (ScriptedConnection* connection : QList(m_connections)) {
        if (connection->isIdle()) {
            connection->close();
        }
    }
}

void ScriptedServer::closeAllConnections()
{
    for (ScriptedConnection* connection : QList(m_connections)) {
        connection->close();
    }
}

void ScriptedServer::resetAllConnections()
{
    for (ScriptedConnection* connection : QList(m_connections)) {
        connection->reset();
    }
}

void ScriptedServer::stop()
{
    m_listener->close();
    closeAllConnections();
    qDeleteAll(m_listener->findChildren<FaultyHandshake*>());
}

void ScriptedServer::restart()
{
    listen();
}

void ScriptedServer::begin()
{
    m_listener->setListenBacklogSize(mostUnaccepted);
    // Unlike newConnection, this signal waits until a connection is past its TLS handshake.
    QObject::connect(m_listener.get(), &QTcpServer::pendingConnectionAvailable, m_listener.get(),
                     [this] { acceptConnections(); });
    listen();
}

void ScriptedServer::listen()
{
    if (!m_listener->listen(QHostAddress::LocalHost, m_port)) {
        qFatal("The scripted server cannot listen: %s", qPrintable(m_listener->errorString()));
    }
    m_port = m_listener->serverPort();
}

void ScriptedServer::acceptConnections()
{
    while (QTcpSocket* socket = m_listener->nextPendingConnection()) {
        if (m_fault) {
            failHandshake(socket);
        } else {
            serveHttp(socket);
        }
    }
}

void ScriptedServer::serveHttp(QTcpSocket* socket)
{
    if (!m_isEncrypted) {
        ++m_connectionCount;
    }
    auto* connection = new ScriptedConnection(++m_lastConnectionNumber, socket, m_listener.get());
    m_connections.append(connection);
    QObject::connect(connection, &ScriptedConnection::bytesReceived, m_listener.get(),
                     [this](qint64 count) { m_httpBytesReceived += count; });
    QObject::connect(connection, &ScriptedConnection::requestArrived, m_listener.get(),
                     [this](const RecordedRequest& request) { m_requests.append(request); });
    QObject::connect(connection, &ScriptedConnection::requestDue, m_listener.get(),
                     [this, connection](const RecordedRequest& request) {
                         if (m_heldPaths.contains(request.path())) {
                             m_held.append({connection, request});
                         } else {
                             answer(connection, request);
                         }
                     });
    QObject::connect(connection, &ScriptedConnection::gone, m_listener.get(), [this, connection] {
        m_connections.removeAll(connection);
        connection->deleteLater();
    });
    connection->begin();
}

void ScriptedServer::failHandshake(QTcpSocket* socket)
{
    ++m_connectionCount;
    auto* handshake = new FaultyHandshake(*m_fault, socket, m_listener.get());
    QObject::connect(handshake, &FaultyHandshake::bytesInTheClear, m_listener.get(),
                     [this](qint64 count) { m_httpBytesReceived += count; });
    QObject::connect(handshake, &FaultyHandshake::gone, handshake, &QObject::deleteLater);
    handshake->begin();
}

void ScriptedServer::answer(ScriptedConnection* connection, const RecordedRequest& request)
{
    connection->answer(replyTo(request).script());
}

Reply ScriptedServer::replyTo(const RecordedRequest& request)
{
    const auto route = m_routes.find(request.path());
    if (route != m_routes.end() && route->handler) {
        // A copy: the handler may replace its own route.
        const Handler handler = route->handler;
        return handler(request);
    }
    if (route != m_routes.end()) {
        const qsizetype last = route->replies.size() - 1;
        return route->replies.at(qMin(route->next++, last));
    }
    if (m_handler) {
        const Handler handler = m_handler;
        return handler(request);
    }
    return Reply::text(404, "The test has no answer for " + request.path() + '\n');
}

} // namespace support

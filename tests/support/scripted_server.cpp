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

/// Enough for many clients that connect before the server's event loop runs.
constexpr int serverMostUnaccepted = 500;

/// A ServerHello that chooses TLS 1.0 and the cipher AES128-SHA. Written by hand, because a system's TLS library may
/// not support that version any more.
QByteArray serverOldHello()
{
    const QByteArray random(32, '\x5a');
    const QByteArray body = QByteArray::fromHex("0301") + random + QByteArray::fromHex("00002f00");
    const QByteArray message = QByteArray::fromHex("020000") + static_cast<char>(body.size()) + body;
    return QByteArray::fromHex("16030100") + static_cast<char>(message.size()) + message;
}

} // namespace

ScriptedServer::ScriptedServer() : m_listener(std::make_unique<QTcpServer>())
{
    begin();
}

ScriptedServer::ScriptedServer(const TlsIdentity& identity) : m_isEncrypted(true)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(identity.chain);
    configuration.setPrivateKey(identity.key);
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
    return u"%1://%2:%3"_s.arg(m_isEncrypted ? u"https"_s : u"http"_s, host).arg(m_port);
}

void ScriptedServer::release(const QByteArray& path)
{
    m_heldPaths.removeAll(path);
    const QList<HeldRequest> held = std::exchange(m_held, {});
    for (const HeldRequest& entry : held) {
        if (entry.request.path() != path) {
            m_held.append(entry);
        } else if (entry.connection) {
            entry.connection->answer(replyTo(entry.request).script());
        }
    }
}

qsizetype ScriptedServer::heldCount(const QByteArray& path) const
{
    return std::count_if(m_held.cbegin(), m_held.cend(), [this, &path](const HeldRequest& entry) {
        return entry.request.path() == path && m_connections.contains(entry.connection.data());
    });
}

void ScriptedServer::releaseBodies()
{
    // A copy, here and below: a connection that ends is removed from the list.
    for (ScriptedConnection* connection : QList(m_connections)) {
        connection->releaseAnswer();
    }
}

qsizetype ScriptedServer::heldBodyCount() const
{
    return std::count_if(m_connections.cbegin(), m_connections.cend(),
                         [](const ScriptedConnection* connection) { return connection->holdsAnswer(); });
}

QList<RecordedRequest> ScriptedServer::requests(const QByteArray& path) const
{
    QList<RecordedRequest> found;
    std::copy_if(m_requests.cbegin(), m_requests.cend(), std::back_inserter(found),
                 [&path](const RecordedRequest& request) { return request.path() == path; });
    return found;
}

void ScriptedServer::closeIdleConnections()
{
    for (ScriptedConnection* connection : QList(m_connections)) {
        if (connection->isIdle()) {
            connection->close();
        }
    }
}

void ScriptedServer::stop()
{
    m_listener->close();
    for (ScriptedConnection* connection : QList(m_connections)) {
        connection->close();
    }
    qDeleteAll(m_listener->findChildren<QTcpSocket*>(Qt::FindDirectChildrenOnly)); // those whose handshake failed
}

void ScriptedServer::begin()
{
    m_listener->setListenBacklogSize(serverMostUnaccepted);
    // Unlike newConnection, this signal is emitted after the TLS handshake.
    QObject::connect(m_listener.get(), &QTcpServer::pendingConnectionAvailable, m_listener.get(), [this] {
        while (QTcpSocket* socket = m_listener->nextPendingConnection()) {
            m_fault ? failHandshake(socket) : serveHttp(socket);
        }
    });
    listen();
}

void ScriptedServer::listen()
{
    if (!m_listener->listen(QHostAddress::LocalHost, m_port)) {
        qFatal("The scripted server cannot listen: %s", qPrintable(m_listener->errorString()));
    }
    m_port = m_listener->serverPort();
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
                             connection->answer(replyTo(request).script());
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
    const auto read = [this, socket, hasSeenHello = std::make_shared<bool>(false)] {
        constexpr char handshakeRecord = 0x16;
        const QByteArray bytes = socket->readAll();
        if (*hasSeenHello || bytes.isEmpty()) {
            return;
        }
        if (!bytes.startsWith(handshakeRecord)) {
            m_httpBytesReceived += bytes.size(); // unencrypted
            return;
        }
        *hasSeenHello = true;
        if (m_fault == HandshakeFault::OldVersion) {
            socket->write(serverOldHello());
        }
    };
    QObject::connect(socket, &QTcpSocket::readyRead, m_listener.get(), read);
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    read(); // what arrived earlier
}

Reply ScriptedServer::replyTo(const RecordedRequest& request)
{
    Handler handler = m_handler;
    if (const auto route = m_routes.find(request.path()); route != m_routes.end()) {
        if (!route->handler) {
            return route->replies.at(qMin(route->next++, route->replies.size() - 1));
        }
        handler = route->handler; // a copy: the handler may replace its own route
    }
    return handler ? handler(request) : Reply::text(404, "The test has no answer for " + request.path() + '\n');
}

} // namespace support

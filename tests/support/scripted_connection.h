#pragma once

#include "recorded_request.h"
#include "reply.h"

#include <QObject>
#include <QPointer>

class QTcpSocket;

namespace support {

class ReplyPlayer;

/// One connection of the scripted server: reads requests, and sends the replies in the order of the requests.
class ScriptedConnection : public QObject
{
    Q_OBJECT

public:
    /// Takes ownership of the socket. Call begin() after connecting the signals.
    ScriptedConnection(int number, QTcpSocket* socket, QObject* parent);

    void begin();
    /// Replies to the request of the last requestDue().
    void answer(const ReplyScript& script);
    /// Sends the held part of the reply, if there is one.
    void releaseAnswer();
    bool holdsAnswer() const;
    /// True between requests.
    bool isIdle() const { return m_stage == Stage::WaitingForRequest && m_stream.isEmpty(); }
    void close();

Q_SIGNALS:
    void bytesReceived(qint64 count);
    /// A complete request has arrived.
    void requestArrived(const support::RecordedRequest& request);
    /// The request is the next one to reply to.
    void requestDue(const support::RecordedRequest& request);
    void gone();

private:
    enum class Stage { WaitingForRequest, WaitingForAnswer, Answering, Silent };

    void readMore();
    void takeNextRequest();
    void endAnswer(Ending ending, int idleMs);

    int m_number = 0;
    QTcpSocket* m_socket = nullptr;
    QPointer<ReplyPlayer> m_player;
    QByteArray m_stream;
    QList<RecordedRequest> m_waiting;
    Stage m_stage = Stage::WaitingForRequest;
};

} // namespace support

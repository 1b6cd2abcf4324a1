#pragma once

#include "recorded_request.h"
#include "reply.h"

#include <QObject>
#include <QPointer>

class QTcpSocket;

namespace support {

class ReplyPlayer;

/// One connection of the scripted server: reads requests, and plays the answers in the order of the requests.
class ScriptedConnection : public QObject
{
    Q_OBJECT

public:
    /// Takes the socket over. Call begin() once the signals are connected.
    ScriptedConnection(int number, QTcpSocket* socket, QObject* parent);

    void begin();
    /// Answers the request that came due last.
    void answer(const ReplyScript& script);
    /// Sends what the answer holds back, if it does.
    void releaseAnswer();
    bool holdsAnswer() const;
    /// True between two requests.
    bool isIdle() const { return m_stage == Stage::WaitingForRequest && m_stream.isEmpty(); }
    void close();

Q_SIGNALS:
    void bytesReceived(qint64 count);
    /// A whole request has come in.
    void requestArrived(const support::RecordedRequest& request);
    /// It is that request's turn to be answered.
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

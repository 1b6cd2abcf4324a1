#pragma once

#include "fault_outcome.h"

#include "support/message_catcher.h"
#include "support/scripted_server.h"
#include "support/service_bench.h"

#include <memory>

namespace faults {

/// One call of a client, made against a service or a network that deals with it as the test says, and everything that
/// can be seen of how it went.
class FaultRun
{
public:
    explicit FaultRun(support::ServiceBench::WindowMaker makeWindow);
    /// The same over TLS.
    FaultRun(support::ServiceBench::WindowMaker makeWindow, const support::TlsIdentity& identity);
    ~FaultRun() = default;
    Q_DISABLE_COPY_MOVE(FaultRun)

    /// Gets the client to the point of the call, has it answered like this, and waits until nothing is under way.
    /// False when one of the three fails.
    bool play(support::Call call, const support::Reply& reply);
    /// The same call once more in the same window. Before a session check the client is linked anew; the connection of
    /// the approval ends with it.
    bool playAgain(const support::Reply& reply);
    /// The first with a base URL that leads somewhere else.
    bool playAt(support::Call call, const QString& origin);

    /// What the window shows and has saved, in words.
    QStringList seen();
    /// What has to be seen there.
    QStringList expected(const FaultOutcome& outcome) const;
    /// The paths that have come in at the service since the call. Qt repeats a GET by itself when its connection ends
    /// without an answer; where that is the outcome, all of them count as one.
    QList<QByteArray> arrivals(const FaultOutcome& outcome) const;
    /// Those that have to come in when the call itself does.
    QList<QByteArray> expectedArrivals(const FaultOutcome& outcome) const;
    /// False when the control that the call keeps busy was not.
    bool wasBusy() const { return m_wasBusy; }
    /// Asks another service, which has its own answer. By the time that it is there, the client has noticed which of
    /// its connections have ended.
    bool asksAnother();
    /// Links the client anew and, after a creation, creates once more; all five calls work if this does.
    bool stillAnswers();
    /// Checks how the call went, that nothing but this has come in and that the client works on.
    void checkEnd(const FaultOutcome& outcome, const QList<QByteArray>& wantedArrivals);
    /// The same with what has to come in when the call itself does.
    void checkEnd(const FaultOutcome& outcome) { checkEnd(outcome, expectedArrivals(outcome)); }
    /// Everything printed so far. Nothing should be.
    QStringList messages() const { return m_messages.messages(); }

    support::ServiceBench& bench() { return *m_bench; }

    support::ScriptedServer server;

private:
    void begin(const QString& origin);
    bool prepare(support::Call call);
    bool carryOut(support::Call call);
    bool linksAnew(const support::Reply& approval);
    bool settles();

    support::MessageCatcher m_messages;
    support::ServiceBench::WindowMaker m_makeWindow;
    std::unique_ptr<support::ServiceBench> m_bench;
    support::Call m_call = support::Call::LinkStart;
    ClientSight m_before;
    bool m_wasBusy = false;
};

} // namespace faults

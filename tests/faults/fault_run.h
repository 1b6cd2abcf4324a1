#pragma once

#include "window_sight.h"

#include "support/client_run.h"

namespace faults {

/// One call of a client to a service or over a network that fails as the test says, and checks of everything that this
/// changes.
class FaultRun : public support::ClientRun
{
public:
    using ClientRun::ClientRun;

    /// Prepares the call, replies to it in this way and waits until the reply has been handled. Requests that follow by
    /// themselves are held. False when one of the steps fails.
    bool play(support::Call call, const support::Reply& reply);
    /// Makes the same call again in the same window. Not for a session check.
    bool playAgain(const support::Reply& reply);
    /// Like play(), with another base URL.
    bool playAt(support::Call call, const QString& origin);

    /// Checks that the call was in flight, how it ended, and that only its own requests have arrived.
    void check(const Outcome& outcome);
    /// The same, and that the client still works afterwards.
    void checkEnd(const Outcome& outcome);

    /// Sends a request to another service, which has its own reply. When that arrives, the client has noticed which of
    /// its connections have ended.
    bool asksAnother();

private:
    bool prepareWhole(support::Call call);
    bool carryOut();
    WindowSight sight();
    QList<QByteArray> arrivals(const Outcome& outcome) const;
    QList<QByteArray> expectedArrivals(const Outcome& outcome) const;
    bool worksOn();

    support::Call m_call = support::Call::LinkStart;
    WindowSight m_before;
    bool m_wasUnderWay = false;
    bool m_leadsElsewhere = false;
};

} // namespace faults

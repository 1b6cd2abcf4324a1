#pragma once

#include "window_sight.h"

#include "support/client_run.h"

namespace faults {

/// One call of a client, made against a service or a network that deals with it as the test says, and a look at all
/// that has come of it.
class FaultRun : public support::ClientRun
{
public:
    using ClientRun::ClientRun;

    /// Gets the client to the point of the call, has it answered like this, and waits until the answer has been
    /// handled. What the answer leads to by itself is held back. False when one of the steps fails.
    bool play(support::Call call, const support::Reply& reply);
    /// The same call once more in the same window. Not for a session check.
    bool playAgain(const support::Reply& reply);
    /// The first with a base URL that leads somewhere else.
    bool playAt(support::Call call, const QString& origin);

    /// Checks that the call was under way, how it went, and that nothing but what belongs to it has come in.
    void check(const Outcome& outcome);
    /// The same, and that the client works on.
    void checkEnd(const Outcome& outcome);

    /// Asks another service, which has its own answer. By the time that it is there, the client has noticed which of
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

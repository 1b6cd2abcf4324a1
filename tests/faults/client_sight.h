#pragma once

#include "support/service_bench.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace faults {

/// What a person sees of the client, and what it has saved: everything that the outcome of a request can change.
struct ClientSight
{
    QString status;
    QString code;
    bool polls = false;
    QStringList account;
    QStringList cores;
    int rows = 0;
    QStringList enabledButtons;
    QString formName;
    QString savedToken;

    /// One line for each; two lists compared show the first line that differs.
    QStringList words() const;
};

/// How the service, or the network, has dealt with a request.
struct FaultOutcome
{
    /// HTTP status; 0 when there was none.
    int status = 200;
    /// Empty when the request counts as a success.
    QString errorText;
    /// What counts as the reply's object.
    QJsonObject body;
};

/// What the window shows now.
ClientSight sightOf(support::ServiceBench& bench);

/// What the window has to show once the call has ended like that. Before is what it showed before the call; the other
/// calls are answered as the bench does.
ClientSight sightAfter(support::Call call, const FaultOutcome& outcome, const ClientSight& before);

/// The paths of the requests that follow a call by themselves.
QList<QByteArray> followUpsOf(support::Call call, const FaultOutcome& outcome);

} // namespace faults

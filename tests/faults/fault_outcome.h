#pragma once

#include "client_sight.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

namespace faults {

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

/// What a window finds that starts on a state file with this base URL, linked by that token.
ClientSight sightBeforeStart(const QString& origin, const QString& token);

/// What the window has to show once the call has ended like that. Before is what it showed before the call; the other
/// calls are answered as the bench does.
ClientSight sightAfter(support::Call call, const FaultOutcome& outcome, const ClientSight& before);

/// The paths of the requests that follow a call by themselves.
QList<QByteArray> followUpsOf(support::Call call, const FaultOutcome& outcome);

} // namespace faults

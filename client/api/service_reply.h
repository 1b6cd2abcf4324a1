#pragma once

#include <QJsonObject>
#include <QString>

/// A finished reply as the branches of handleReply see it.
struct ServiceReply
{
    /// HTTP status; 0 when no HTTP response arrived.
    int status = 0;
    /// The JSON object of the body; empty when the body is anything else.
    QJsonObject body;
    /// One sentence for the status line; empty when the reply counts as a success.
    QString errorText;

    /// Accepted, with the outcome still to come. Never a failure.
    bool isPending() const { return status == 202; }
    bool failed() const { return !errorText.isEmpty(); }
    /// The service's own sentence when it sent one, even an empty one; otherwise the fallback.
    QString messageOr(const QString& fallback) const
    {
        return body.value(QLatin1StringView("message")).toString(fallback);
    }
};

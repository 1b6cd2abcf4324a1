#pragma once

#include <QJsonObject>
#include <QString>

/// A finished reply, as the handler of its kind gets it.
struct ServiceReply
{
    /// HTTP status; 0 when no HTTP response arrived.
    int status = 0;
    /// The JSON object of the body; empty when the body is anything else.
    QJsonObject body;
    /// The failure as the status line shows it; empty when the reply counts as a success.
    QString errorText;

    /// The service has accepted the request but not finished it. Never a failure.
    bool isPending() const { return status == 202; }
    bool failed() const { return !errorText.isEmpty(); }
    /// The service's own message, even an empty one; the fallback when it sent none.
    QString messageOr(const QString& fallback) const;
};

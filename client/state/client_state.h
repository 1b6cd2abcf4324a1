#pragma once

#include <QString>

/**
 * What the client remembers between two runs. Each text bears the name of its key in the state file.
 *
 * The desktop counts as linked exactly when access_token is not empty; there is no other linked flag.
 */
struct ClientState
{
    /// Service base URL as it was loaded, or the built-in one. What gets saved is the URL field instead.
    QString origin;
    /// Identifies this installation to the service; outlives unlinking.
    QString device_id;
    /// Bearer token that the service issued for this desktop; empty while unlinked.
    QString access_token;

    bool isLinked() const { return !access_token.isEmpty(); }
};

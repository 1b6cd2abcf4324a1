#pragma once

#include <QString>

/// What the client remembers between two runs. The members are named after the keys of the state file.
struct ClientState
{
    /// Service base URL at the start. Later on, the URL field counts.
    QString origin;
    /// Identifies this installation to the service. Kept when the desktop is unlinked.
    QString device_id;
    /// Bearer token; empty while the desktop is not linked.
    QString access_token;

    bool isLinked() const { return !access_token.isEmpty(); }
};

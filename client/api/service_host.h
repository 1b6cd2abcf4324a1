#pragma once

#include <QString>

/// The service's public host name, which the build sets.
inline QString publicHost()
{
    return QStringLiteral(TARNWICK_PUBLIC_HOST);
}

/// The base URL that the client uses unless the user enters another one. No trailing slash.
inline QString defaultBaseUrl()
{
    return QStringLiteral("https://" TARNWICK_PUBLIC_HOST);
}

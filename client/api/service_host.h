#pragma once

#include <QString>

/// The service's public host name. The build sets it; every text and URL that names the host takes it from here.
inline QString publicHost()
{
    return QStringLiteral(TARNWICK_PUBLIC_HOST);
}

/// The base URL of a client that was never told another one. No trailing slash.
inline QString defaultBaseUrl()
{
    return QStringLiteral("https://") + publicHost();
}

#include "api/service_host.h"
#include "app/tarnwick_client_window.h"

#include <QLineEdit>
#include <QUrl>

/// The service base URL, normalised: trimmed, with a scheme, without trailing slashes. It may still be invalid.
QString TarnwickClientWindow::baseUrl() const
{
    QString url = (originEdit != nullptr ? originEdit->text() : state.origin).trimmed();
    if (url.isEmpty()) {
        url = defaultBaseUrl();
    }
    if (!url.startsWith("http://"_L1) && !url.startsWith("https://"_L1)) {
        url.prepend("https://"_L1);
    }
    while (url.endsWith(u'/')) {
        url.chop(1);
    }
    return url;
}

/// The URL of a path of the service. Joined as plain text, since the base URL may end with a path.
QUrl TarnwickClientWindow::serviceUrl(const QString& path) const
{
    return QUrl(baseUrl() + path, QUrl::TolerantMode);
}

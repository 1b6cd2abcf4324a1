#include "api/service_host.h"
#include "app/tarnwick_client_window.h"

#include <QLineEdit>
#include <QUrl>

/**
 * The service base URL in normalised form: trimmed, with a scheme, without trailing slashes.
 *
 * Nothing else is checked: a base URL that makes no sense fails when the first request is sent.
 */
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

/// The URL of a path of the service. The two are joined as plain text: the base URL may hold a path of its own.
QUrl TarnwickClientWindow::serviceUrl(const QString& path) const
{
    return QUrl(baseUrl() + path, QUrl::TolerantMode);
}

#include "api/service_host.h"
#include "app/tarnwick_client_window.h"

#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

namespace {

constexpr int linkPollIntervalMs = 1500;
constexpr int linkStatusUnknownCode = 404;
constexpr int linkStatusExpiredCode = 410;

} // namespace

/// Asks the service for a new one-time link code for this desktop.
void TarnwickClientWindow::requestLinkCode()
{
    statusLabel->setText(u"Requesting a new Tarnwick PC link code..."_s);
    if (isBusy(TaskKind::LinkStart)) {
        return;
    }
    // The device identifier must be on disk before the service learns it.
    saveState();
    sendRequest(TaskKind::LinkStart, serviceUrl(u"/api/pc/link/start"_s), {{u"device_id"_s, state.device_id}}, false);
}

/// Shows the new code and starts to poll for its approval. A failure changes nothing but the status line.
void TarnwickClientWindow::handleLinkStart(const ServiceReply& reply)
{
    if (reply.failed()) {
        statusLabel->setText(reply.errorText);
        return;
    }
    linkCode = reply.body.value("code"_L1).toString();
    approveUrl = reply.body.value("approve_url"_L1).toString();
    linkCodeEdit->setText(linkCode);
    saveState();
    if (!linkCode.isEmpty()) {
        pollTimer->start(linkPollIntervalMs);
    }
    const QString ready = u"Code %1 is ready. Approve it at "_s + publicHost() + u"/link/pc before it expires."_s;
    statusLabel->setText(ready.arg(linkCode));
}

/// A tick of the poll timer. It is skipped, not queued, while a poll is in flight.
void TarnwickClientWindow::pollLink()
{
    if (linkCode.isEmpty() || isBusy(TaskKind::LinkPoll)) {
        return;
    }
    QUrlQuery query;
    query.addQueryItem(u"code"_s, linkCode);
    query.addQueryItem(u"device_id"_s, state.device_id);
    QUrl url = serviceUrl(u"/api/pc/link/poll"_s);
    url.setQuery(query);
    sendRequest(TaskKind::LinkPoll, url, {}, false);
}

void TarnwickClientWindow::handleLinkPoll(const ServiceReply& reply)
{
    if (reply.failed()) {
        giveUpPolling(reply);
        return;
    }
    if (!reply.isPending()) {
        acceptLink(reply);
        return;
    }
    statusLabel->setText(reply.messageOr(u"Waiting for approval at "_s + publicHost() + u"/link/pc."_s));
    if (!pollTimer->isActive()) {
        pollTimer->start();
    }
}

/// The user has approved the code: stores the token and checks the session. An approval without a token unlinks.
void TarnwickClientWindow::acceptLink(const ServiceReply& reply)
{
    state.access_token = reply.body.value("access_token"_L1).toString().trimmed();
    pollTimer->stop();
    saveState();
    statusLabel->setText(reply.messageOr(u"Tarnwick desktop client linked."_s));
    checkSession();
    // checkSession updates the controls only when it sends a request.
    updateControls();
}

/// Stops polling. The code is kept unless the service no longer knows it.
void TarnwickClientWindow::giveUpPolling(const ServiceReply& reply)
{
    pollTimer->stop();
    statusLabel->setText(reply.errorText);
    if (reply.status == linkStatusUnknownCode || reply.status == linkStatusExpiredCode) {
        linkCode.clear();
        approveUrl.clear();
        linkCodeEdit->clear();
    }
}

/// Opens the page for approving the code in the web browser.
void TarnwickClientWindow::openPairingPage() const
{
    const QUrl page = approveUrl.isEmpty() ? serviceUrl(u"/link/pc"_s) : QUrl(approveUrl, QUrl::TolerantMode);
    QDesktopServices::openUrl(page);
}

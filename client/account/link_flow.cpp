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
    // The service is about to learn this device identifier, so it must be on disk before.
    saveState();
    sendRequest(TaskKind::LinkStart, serviceUrl(u"/api/pc/link/start"_s), {{u"device_id"_s, state.device_id}}, false);
}

/// Shows the new code and starts to wait for its approval. A failure leaves an earlier code as it was.
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

/// One tick of the poll timer. A tick while a poll is under way is skipped, not queued.
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

/// The user approved the code: keeps the token and asks whom it belongs to. An approval without a token unlinks.
void TarnwickClientWindow::acceptLink(const ServiceReply& reply)
{
    state.access_token = reply.body.value("access_token"_L1).toString().trimmed();
    updateControls();
    pollTimer->stop();
    saveState();
    statusLabel->setText(reply.messageOr(u"Tarnwick desktop client linked."_s));
    checkSession();
}

/// Stops waiting. The code is forgotten only when the service says that it is gone for good.
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

/// Opens the page on which the user approves the code, in the web browser.
void TarnwickClientWindow::openPairingPage()
{
    const QUrl page = approveUrl.isEmpty() ? serviceUrl(u"/link/pc"_s) : QUrl(approveUrl, QUrl::TolerantMode);
    QDesktopServices::openUrl(page);
}

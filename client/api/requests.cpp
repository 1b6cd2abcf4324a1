#include "api/single_pass_body.h"
#include "app/tarnwick_client_window.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>
#include <QUrlQuery>
#include <QVariant>

namespace {

/// The largest reply body that is read.
constexpr qint64 requestMaxReplyBytes = 64LL * 1024 * 1024;

QNetworkRequest newRequest(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(TARNWICK_TRANSFER_TIMEOUT_MS);
    request.setRawHeader("Accept", "application/json");
    request.setRawHeader("User-Agent", "Tarnwick-QtClient/1.0");
    // By default, Qt would send all headers, the bearer token too, to any host that a redirect names.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
    // A cookie would identify this desktop even after unlinking.
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return request;
}

QByteArray requestBodyOf(const FormFields& fields)
{
    QUrlQuery query;
    for (const auto& [name, value] : fields) {
        query.addQueryItem(name, value);
    }
    return query.toString(QUrl::FullyEncoded).toUtf8();
}

QNetworkReply* postRequest(QNetworkAccessManager* manager, const QNetworkRequest& request, const QByteArray& content)
{
    auto* body = new SinglePassBody(content);
    QNetworkReply* reply = manager->post(request, body);
    body->setParent(reply);
    return reply;
}

} // namespace

/**
 * Sends one request: a GET without fields, a form POST with them. A POST is never sent twice.
 *
 * The kind is busy until handleReply gets the reply. A failed transfer ends in a reply, too.
 */
void TarnwickClientWindow::sendRequest(TaskKind kind, const QUrl& url, const FormFields& fields, bool sendAuth)
{
    setBusy(kind, true);
    updateControls();

    QNetworkRequest request = newRequest(url);
    if (sendAuth && state.isLinked()) {
        request.setRawHeader("Authorization", "Bearer " + state.access_token.toUtf8());
    }

    QNetworkReply* reply = nullptr;
    if (fields.isEmpty()) {
        reply = networkManager->get(request);
    } else {
        request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
        reply = postRequest(networkManager, request, requestBodyOf(fields));
    }
    reply->setProperty(taskKindProperty, static_cast<int>(kind));
    connect(reply, &QNetworkReply::finished, this, [this, reply] { handleReply(reply); });

    // The service's replies are small. Without this bound, a wrong one could fill the memory.
    connect(reply, &QNetworkReply::readyRead, this, [reply] {
        if (reply->bytesAvailable() > requestMaxReplyBytes) {
            reply->abort();
        }
    });
}

bool TarnwickClientWindow::isBusy(TaskKind kind) const
{
    return busyFlags.at(static_cast<std::size_t>(kind));
}

void TarnwickClientWindow::setBusy(TaskKind kind, bool busy)
{
    busyFlags.at(static_cast<std::size_t>(kind)) = busy;
}

#include "app/tarnwick_client_window.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QVariant>

namespace {

constexpr int replyStatusFirstError = 400;

/// An aborted or timed-out reply is closed already; reading it would only make Qt complain.
QByteArray replyBodyOf(QNetworkReply* reply)
{
    return reply->isOpen() ? reply->readAll() : QByteArray();
}

/// The service's own words about a failure: its message, else its error, else nothing.
QString replyServerText(const QJsonObject& body)
{
    const QString message = body.value("message"_L1).toString();
    return message.isEmpty() ? body.value("error"_L1).toString() : message;
}

/// The one rule by which every reply is judged. An empty text means success.
QString replyErrorText(const ServiceReply& result, const QNetworkReply* reply)
{
    if (result.isPending()) {
        return {};
    }
    const QString serverText = replyServerText(result.body);
    if (result.status >= replyStatusFirstError) {
        return serverText.isEmpty() ? u"Tarnwick returned HTTP %1."_s.arg(result.status) : serverText;
    }
    if (reply->error() != QNetworkReply::NoError) {
        return serverText.isEmpty() ? reply->errorString() : serverText;
    }
    return {};
}

} // namespace

/// Judges a finished reply, frees its kind for the next request and hands it to the branch of its kind.
void TarnwickClientWindow::handleReply(QNetworkReply* reply)
{
    const int kindValue = reply->property("taskKind").toInt();
    ServiceReply result;
    result.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.body = QJsonDocument::fromJson(replyBodyOf(reply)).object();
    result.errorText = replyErrorText(result, reply);

    if (kindValue >= 0 && kindValue < static_cast<int>(taskKindCount)) {
        setBusy(static_cast<TaskKind>(kindValue), false);
    }
    updateControls();
    dispatchReply(static_cast<TaskKind>(kindValue), result);
    reply->deleteLater();
}

void TarnwickClientWindow::dispatchReply(TaskKind kind, const ServiceReply& reply)
{
    switch (kind) {
    case TaskKind::LinkStart:
        handleLinkStart(reply);
        break;
    case TaskKind::LinkPoll:
        handleLinkPoll(reply);
        break;
    case TaskKind::Session:
        handleSession(reply);
        break;
    case TaskKind::Instances:
        handleInstances(reply);
        break;
    case TaskKind::CreateInstance:
        handleCreateInstance(reply);
        break;
    }
}

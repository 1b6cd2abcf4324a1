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

/// The service's own text about a failure: its message, else its error, else nothing.
QString replyServerText(const QJsonObject& body)
{
    const QString message = body.value("message"_L1).toString();
    return message.isEmpty() ? body.value("error"_L1).toString() : message;
}

/// The one rule that decides whether a reply is a failure. An empty text means success.
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

ServiceReply replyContentOf(QNetworkReply* reply)
{
    ServiceReply result;
    result.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    // An aborted or timed-out reply is closed, and Qt prints a warning when a closed device is read.
    const QByteArray bytes = reply->isOpen() ? reply->readAll() : QByteArray();
    result.body = QJsonDocument::fromJson(bytes).object();
    result.errorText = replyErrorText(result, reply);
    return result;
}

} // namespace

QString ServiceReply::messageOr(const QString& fallback) const
{
    return body.value("message"_L1).toString(fallback);
}

/// Handles every finished reply: clears the busy flag of its kind, then calls the handler of that kind.
void TarnwickClientWindow::handleReply(QNetworkReply* reply)
{
    const auto kind = static_cast<TaskKind>(reply->property(taskKindProperty).toInt());
    const ServiceReply result = replyContentOf(reply);
    if (kind >= TaskKind::LinkStart && kind < TaskKind::Count) {
        setBusy(kind, false);
    }
    updateControls();
    dispatchReply(kind, result);
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
    case TaskKind::Count:
        break;
    }
}

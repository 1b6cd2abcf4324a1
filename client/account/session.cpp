#include "app/tarnwick_client_window.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QUrl>

namespace {

/// The cores of a session reply, in the service's order. A core without a key cannot be requested and is left out.
QList<CoreChoice> sessionCoresOf(const QJsonObject& body)
{
    QList<CoreChoice> cores;
    const QJsonArray elements = body.value("available_cores"_L1).toArray();
    for (const auto& element : elements) {
        const QJsonObject core = element.toObject();
        const QString key = core.value("key"_L1).toString();
        if (!key.isEmpty()) {
            cores.append({key, core.value("label"_L1).toString(key)});
        }
    }
    return cores;
}

} // namespace

/// Asks the service for the account of the token. Does nothing while unlinked or while a check is in flight.
void TarnwickClientWindow::checkSession()
{
    if (!isBusy(TaskKind::Session) && state.isLinked()) {
        sendRequest(TaskKind::Session, serviceUrl(u"/api/pc/me"_s), {}, true);
    }
}

void TarnwickClientWindow::handleSession(const ServiceReply& reply)
{
    if (reply.failed()) {
        resetAccount();
        statusLabel->setText(reply.errorText);
        return;
    }
    const QJsonObject user = reply.body.value("user"_L1).toObject();
    accountNameText = u"Signed in as "_s + user.value("display_name"_L1).toString(u"Tarnwick user"_s);
    planText = u"Plan: "_s + user.value("plan_name"_L1).toString(u"Free"_s);
    limitText = u"Limit: "_s + user.value("gdps_limit_label"_L1).toString(u"-"_s);
    showAccountTexts();

    availableCores = sessionCoresOf(reply.body);
    fillCoreCombo();
    statusLabel->setText(u"Tarnwick desktop session ready."_s);
    fetchProjects();
}

/// Unlinks the desktop locally, after any failed session check, even a network error.
void TarnwickClientWindow::resetAccount()
{
    state.access_token.clear();
    projects.clear();
    availableCores.clear();
    resetAccountTexts();
    showAccountTexts();
    fillProjectTable();
    fillCoreCombo();
    updateControls();
    saveState();
}

/// Reloads the project list only, without a session check.
void TarnwickClientWindow::refreshProjects()
{
    statusLabel->setText(u"Refreshing your Tarnwick projects..."_s);
    fetchProjects();
}

/// Forgets the token and the account's data. The service is not notified.
void TarnwickClientWindow::unlink()
{
    state.access_token.clear();
    linkCode.clear();
    approveUrl.clear();
    pollTimer->stop();
    availableCores.clear();
    projects.clear();
    resetAccountTexts();

    linkCodeEdit->clear();
    resetCreateForm();
    fillCoreCombo();
    fillProjectTable();
    showAccountTexts();
    updateControls();
    saveState();
    statusLabel->setText(u"Tarnwick desktop client unlinked."_s);
}

void TarnwickClientWindow::resetAccountTexts()
{
    accountNameText = u"Not linked yet"_s;
    planText = u"Plan: -"_s;
    limitText = u"Limit: -"_s;
}

void TarnwickClientWindow::showAccountTexts() const
{
    accountNameLabel->setText(accountNameText);
    planLabel->setText(planText);
    limitLabel->setText(limitText);
}

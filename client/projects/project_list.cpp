#include "app/tarnwick_client_window.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QUrl>

namespace {

InstanceRecord projectRecordOf(const QJsonObject& instance)
{
    return {
        .core_label = instance.value("core_label"_L1).toString(),
        .display_name = instance.value("display_name"_L1).toString(),
        .manage_url = instance.value("manage_url"_L1).toString(),
        .public_url = instance.value("public_url"_L1).toString(),
        .slug = instance.value("slug"_L1).toString(),
        .status = instance.value("status"_L1).toString(),
    };
}

} // namespace

/// Asks the service for the user's projects. Does nothing while unlinked or while a fetch is in flight.
void TarnwickClientWindow::fetchProjects()
{
    if (!isBusy(TaskKind::Instances) && state.isLinked()) {
        sendRequest(TaskKind::Instances, serviceUrl(u"/api/pc/instances"_s), {}, true);
    }
}

/// Replaces the project list. A failure changes nothing but the status line.
void TarnwickClientWindow::handleInstances(const ServiceReply& reply)
{
    if (reply.failed()) {
        statusLabel->setText(reply.errorText);
        return;
    }
    projects.clear();
    const QJsonArray instances = reply.body.value("instances"_L1).toArray();
    for (const auto& instance : instances) {
        projects.append(projectRecordOf(instance.toObject()));
    }
    fillProjectTable();
    statusLabel->setText(u"Loaded %1 Tarnwick project(s)."_s.arg(projects.size()));
}

#include "app/tarnwick_client_window.h"

#include <QColor>
#include <QDesktopServices>
#include <QTableWidget>
#include <QTableWidgetItem>
#include <QUrl>

namespace {

bool projectIsOnline(const QString& status)
{
    return status.compare("online"_L1, Qt::CaseInsensitive) == 0 ||
           status.compare("active"_L1, Qt::CaseInsensitive) == 0;
}

} // namespace

/// Rebuilds the table and selects its first row. Row i shows project i; the table is never sorted.
void TarnwickClientWindow::fillProjectTable() const
{
    projectTable->setRowCount(0);
    for (int row = 0; const InstanceRecord& project : projects) {
        projectTable->insertRow(row);
        auto* name = new QTableWidgetItem(project.display_name);
        auto* code = new QTableWidgetItem(project.slug);
        auto* core = new QTableWidgetItem(project.core_label);
        auto* status = new QTableWidgetItem(project.status);
        status->setForeground(QColor(projectIsOnline(project.status) ? u"#76ffa6"_s : u"#f0c79e"_s));
        projectTable->setItem(row, 0, name);
        projectTable->setItem(row, 1, code);
        projectTable->setItem(row, 2, core);
        projectTable->setItem(row, 3, status);
        ++row;
    }
    if (!projects.isEmpty()) {
        projectTable->selectRow(0);
    }
    updateControls();
}

/// Opens the current project's management page, or else its public page, in the web browser.
void TarnwickClientWindow::openSelectedProject() const
{
    const int row = projectTable->currentRow();
    if (row < 0 || row >= projects.size()) {
        return;
    }
    const InstanceRecord& project = projects.at(row);
    const QString& page = project.manage_url.isEmpty() ? project.public_url : project.manage_url;
    if (page.isEmpty()) {
        return;
    }
    QDesktopServices::openUrl(QUrl(page, QUrl::TolerantMode));
}

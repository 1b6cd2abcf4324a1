#include "app/tarnwick_client_window.h"
#include "projects/project_columns.h"

#include <QAbstractItemModel>
#include <QBrush>
#include <QColor>
#include <QDesktopServices>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QTableWidgetItem>
#include <QUrl>

#include <utility>

namespace {

/// The items share these two, which spares each row a brush of its own.
const QBrush& projectStatusBrush(const QString& status)
{
    static const QBrush runningBrush(QColor(0x76, 0xff, 0xa6));
    static const QBrush otherBrush(QColor(0xf0, 0xc7, 0x9e));
    const bool running =
        status.compare("online"_L1, Qt::CaseInsensitive) == 0 || status.compare("active"_L1, Qt::CaseInsensitive) == 0;
    return running ? runningBrush : otherBrush;
}

} // namespace

/// Rebuilds the table: row i shows project i, so a row number is an index into the list. Row 0 gets selected.
void TarnwickClientWindow::fillProjectTable()
{
    // The columns hear of no cell below, so they are fitted when all of them are there.
    fitProjectColumns(projectTable, false);
    projectTable->setRowCount(0);
    for (int row = 0; const InstanceRecord& project : std::as_const(projects)) {
        projectTable->insertRow(row);
        auto* name = new QTableWidgetItem(project.display_name);
        auto* code = new QTableWidgetItem(project.slug);
        auto* core = new QTableWidgetItem(project.core_label);
        auto* status = new QTableWidgetItem(project.status);
        status->setForeground(projectStatusBrush(project.status));
        // Everybody has been told of the new row, and need not hear of each of its cells.
        const QSignalBlocker quiet(projectTable->model());
        projectTable->setItem(row, 0, name);
        projectTable->setItem(row, 1, code);
        projectTable->setItem(row, 2, core);
        projectTable->setItem(row, 3, status);
        ++row;
    }
    if (!projects.isEmpty()) {
        projectTable->selectRow(0);
    }
    fitProjectColumns(projectTable, true);
    updateControls();
}

/// Opens the selected project's management page, or its public page when it has no other, in the web browser.
void TarnwickClientWindow::openSelectedProject()
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

#include "app/tarnwick_client_window.h"
#include "projects/project_columns.h"
#include "ui/card.h"
#include "ui/cell_delegate.h"

#include <QAbstractItemModel>
#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

/// A header and four rows, in pixels, like every font size and padding of the style sheet. Lower than that,
/// the table would show no row at all before the page starts to scroll.
constexpr int projectTableMinimumHeight = 190;

} // namespace

QWidget* TarnwickClientWindow::buildListPage()
{
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 8, 0, 0);
    column->setSpacing(14);

    const auto [introCard, intro] = newCard(u"PanelCard"_s, {22, 18, 22, 18});
    intro->setSpacing(8);
    intro->addWidget(newCardTitle(u"Your Tarnwick Projects"_s));
    intro->addWidget(newMutedLabel(u"Pick any project row and open its panel or public page. The table stretches "
                                   "automatically so the UI stays aligned on resize."_s));
    column->addWidget(introCard);

    const auto [tableCard, list] = newCard(u"PanelCard"_s, {18, 18, 18, 18});
    list->setSpacing(12);
    buildProjectTable();
    list->addWidget(projectTable, 1);
    openProjectButton = new QPushButton(u"Open Selected Project"_s);
    list->addWidget(openProjectButton, 0, Qt::AlignLeft);
    column->addWidget(tableCard, 1);
    return page;
}

void TarnwickClientWindow::buildProjectTable()
{
    projectTable = new QTableWidget(0, 4);
    projectTable->setHorizontalHeaderLabels({u"GDPS"_s, u"Code"_s, u"Core"_s, u"Status"_s});
    projectTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    projectTable->setSelectionMode(QAbstractItemView::SingleSelection);
    projectTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    projectTable->setAlternatingRowColors(true);
    auto* cells = new CellDelegate(projectTable);
    projectTable->setItemDelegate(cells);
    connect(projectTable->model(), &QAbstractItemModel::rowsRemoved, cells, &CellDelegate::forget);
    projectTable->verticalHeader()->hide();

    QHeaderView* header = projectTable->horizontalHeader();
    header->setStretchLastSection(true);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    fitProjectColumns(projectTable, true);

    projectTable->setMinimumHeight(projectTableMinimumHeight);
    projectTable->setAccessibleName(u"Tarnwick projects"_s);
    // Rows are walked with the arrow keys; Tab goes on to the button below.
    projectTable->setTabKeyNavigation(false);
}

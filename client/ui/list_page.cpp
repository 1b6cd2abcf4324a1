#include "app/tarnwick_client_window.h"
#include "ui/card.h"
#include "ui/cell_delegate.h"

#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

/// A header and three rows with the style sheet's font sizes and paddings: as much as the smallest window can show.
constexpr int projectTableMinimumHeight = 154;

/// How many rows Qt measures to fit a column to its contents. Its default of 1,000 blocks the window for over a frame.
constexpr int projectTableMeasuredRows = 500;

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
    projectTable->setItemDelegate(new CellDelegate(projectTable));
    projectTable->verticalHeader()->hide();

    QHeaderView* header = projectTable->horizontalHeader();
    header->setResizeContentsPrecision(projectTableMeasuredRows);
    header->setStretchLastSection(true);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    for (const int column : {1, 2, 3}) {
        header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    }

    // Ignored, so that the scroll area does not count the table's size hint, which is higher than its minimum.
    projectTable->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    projectTable->setMinimumHeight(projectTableMinimumHeight);
    projectTable->setAccessibleName(u"Tarnwick projects"_s);
    // Tab goes to the next control; the arrow keys go from row to row.
    projectTable->setTabKeyNavigation(false);
}

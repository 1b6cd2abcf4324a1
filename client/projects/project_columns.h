#pragma once

#include <QHeaderView>
#include <QTableWidget>

/// Has the columns behind the first one keep to their contents, or stay as wide as they are.
inline void fitProjectColumns(const QTableWidget* table, bool fit)
{
    for (const int column : {1, 2, 3}) {
        table->horizontalHeader()->setSectionResizeMode(column,
                                                        fit ? QHeaderView::ResizeToContents : QHeaderView::Fixed);
    }
}

#pragma once

#include <QStyledItemDelegate>

/// Draws the cells of the project table where the style sheet alone does not do it well.
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Cuts a text that is far longer than any cell: Qt measures and draws all of it, a megabyte for minutes.
    QString displayText(const QVariant& value, const QLocale& locale) const override;

    /// Keeps the sheet's padding in every row, and frames the current cell while the table has the keyboard focus.
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

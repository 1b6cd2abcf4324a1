#pragma once

#include <QStyledItemDelegate>

/// Draws the cells of the project table, and mends there what the style sheet cannot.
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// Cuts a text that is far longer than any cell. Qt would measure and draw all of it, which takes minutes for 1 MB.
    QString displayText(const QVariant& value, const QLocale& locale) const override;

    /// Keeps the sheet's padding in every row, and frames the current cell while the table has the keyboard focus.
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

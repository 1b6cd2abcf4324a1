#include "ui/cell_delegate.h"

#include <QPainter>
#include <QPalette>
#include <QString>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QVariant>

namespace {

constexpr qsizetype cellMaxCharacters = 1000;
constexpr int cellFocusFrameWidth = 2;

/// The style sheet's padding of QTableWidget::item.
constexpr int cellPadding = 8;

void drawCellFocusFrame(QPainter* painter, const QStyleOptionViewItem& option)
{
    painter->save();
    // In the colour of the text, which stands out against every background that a cell can have.
    painter->setPen(option.palette.color(QPalette::Text));
    painter->setBrush(Qt::NoBrush);
    for (int inset = 0; inset < cellFocusFrameWidth; ++inset) {
        painter->drawRect(option.rect.adjusted(inset, inset, -inset - 1, -inset - 1));
    }
    painter->restore();
}

} // namespace

QString CellDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    const QString text = value.toString();
    const bool isTooLong = text.size() > cellMaxCharacters;
    return QStyledItemDelegate::displayText(isTooLong ? text.left(cellMaxCharacters) + u'\u2026' : text, locale);
}

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem cell = option;
    // Qt's own focus mark can hardly be seen on the sheet's colours, and dims the text.
    cell.state.setFlag(QStyle::State_HasFocus, false);
    // Qt applies the sheet's padding to the texts of the selected row only.
    if (!option.state.testFlag(QStyle::State_Selected)) {
        cell.rect.adjust(cellPadding, 0, -cellPadding, 0);
    }
    QStyledItemDelegate::paint(painter, cell, index);
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        drawCellFocusFrame(painter, option);
    }
}

#pragma once

#include <QFont>
#include <QHash>
#include <QLocale>
#include <QModelIndex>
#include <QPainter>
#include <QPalette>
#include <QSize>
#include <QString>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QStyledItemDelegate>
#include <QVariant>

/**
 * Draws the beginning of a text that is far longer than any cell, and measures each text once.
 *
 * The table measures and draws every text whole, and one of a megabyte would take the window minutes. The item keeps
 * all of it. To fit its columns the table asks for the same sizes again and again, and laying out a text is most of
 * what a list costs.
 *
 * It also frames the cell that the keyboard is on: the desktop's own mark can hardly be seen on the sheet's colours,
 * and dims the text.
 */
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant& value, const QLocale& locale) const override
    {
        return QStyledItemDelegate::displayText(shortened(value), locale);
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (option.font != measuredFont || sizes.size() >= mostSizes) {
            sizes.clear();
            measuredFont = option.font;
        }
        const QString text = shortened(index.data());
        const auto known = sizes.constFind(text);
        if (known != sizes.constEnd()) {
            return *known;
        }
        const QSize size = QStyledItemDelegate::sizeHint(option, index);
        sizes.insert(text, size);
        return size;
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem cell = option;
        cell.state.setFlag(QStyle::State_HasFocus, false);
        QStyledItemDelegate::paint(painter, cell, index);
        if (option.state.testFlag(QStyle::State_HasFocus)) {
            drawFocusFrame(painter, option);
        }
    }

    /// Forgets what it has measured, so that no text outlives its row.
    void forget() { sizes.clear(); }

private:
    static void drawFocusFrame(QPainter* painter, const QStyleOptionViewItem& option)
    {
        painter->save();
        // A frame stands out against the background if the text does.
        painter->setPen(option.palette.color(QPalette::Text));
        painter->setBrush(Qt::NoBrush);
        for (int inset = 0; inset < focusFrameWidth; ++inset) {
            painter->drawRect(option.rect.adjusted(inset, inset, -inset - 1, -inset - 1));
        }
        painter->restore();
    }

    static QString shortened(const QVariant& value) { return value.toString().left(mostCharacters); }

    static constexpr int focusFrameWidth = 2;
    static constexpr qsizetype mostCharacters = 1000;
    static constexpr qsizetype mostSizes = 10000;
    mutable QHash<QString, QSize> sizes;
    mutable QFont measuredFont;
};

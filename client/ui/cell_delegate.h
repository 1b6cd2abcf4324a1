#pragma once

#include <QLocale>
#include <QString>
#include <QStyledItemDelegate>
#include <QVariant>

/**
 * Draws the beginning of a text that is far longer than any cell.
 *
 * The table measures and draws every text whole, and one of a megabyte would take the window minutes. The item keeps
 * all of it.
 */
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant& value, const QLocale& locale) const override
    {
        constexpr qsizetype mostCharacters = 1000;
        return QStyledItemDelegate::displayText(value.toString().left(mostCharacters), locale);
    }
};

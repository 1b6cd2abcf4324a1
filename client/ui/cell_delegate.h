#pragma once

#include <QFont>
#include <QHash>
#include <QLocale>
#include <QModelIndex>
#include <QSize>
#include <QString>
#include <QStyleOptionViewItem>
#include <QStyledItemDelegate>
#include <QVariant>

/**
 * Draws the beginning of a text that is far longer than any cell, and measures each text once.
 *
 * The table measures and draws every text whole, and one of a megabyte would take the window minutes. The item keeps
 * all of it. To fit its columns the table asks for the same sizes again and again, and laying out a text is most of
 * what a list costs.
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

    /// Forgets what it has measured, so that no text outlives its row.
    void forget() { sizes.clear(); }

private:
    static QString shortened(const QVariant& value) { return value.toString().left(mostCharacters); }

    static constexpr qsizetype mostCharacters = 1000;
    static constexpr qsizetype mostSizes = 10000;
    mutable QHash<QString, QSize> sizes;
    mutable QFont measuredFont;
};

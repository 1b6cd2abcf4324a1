#pragma once

#include <QAbstractButton>
#include <QBoxLayout>
#include <QLabel>
#include <QLayoutItem>
#include <QMargins>
#include <QMetaObject>
#include <QString>
#include <QStringList>
#include <QWidget>

namespace support {

/// A widget in words: its class, its object name after a #, and what is written on it in quotes.
inline QString inWords(const QWidget* widget)
{
    QString words = QString::fromLatin1(widget->metaObject()->className());
    if (!widget->objectName().isEmpty() && !widget->objectName().startsWith(QStringLiteral("qt_"))) {
        words += QLatin1Char('#') + widget->objectName();
    }
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        words += QStringLiteral(" \"") + label->text() + QLatin1Char('"');
    } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
        words += QStringLiteral(" \"") + button->text() + QLatin1Char('"');
    }
    return words;
}

/// An item of a layout in words: a widget, the class of a nested layout, or "space"; then an alignment, if it
/// has one.
inline QString inWords(QLayoutItem* item)
{
    QString words = QStringLiteral("space");
    if (const QWidget* widget = item->widget()) {
        words = inWords(widget);
    } else if (const QLayout* layout = item->layout()) {
        words = QString::fromLatin1(layout->metaObject()->className());
    }
    if (item->alignment() == Qt::AlignLeft) {
        words += QStringLiteral(", left");
    } else if (item->alignment() == Qt::AlignTop) {
        words += QStringLiteral(", top");
    } else if (item->alignment() != Qt::Alignment()) {
        words += QStringLiteral(", aligned %1").arg(item->alignment().toInt());
    }
    return words;
}

/// What a box layout holds, in words and in order. A stretch factor is shown unless it is 0.
inline QStringList contentsOf(const QBoxLayout* layout)
{
    QStringList contents;
    for (int index = 0; index < layout->count(); ++index) {
        contents.append(inWords(layout->itemAt(index)));
        if (layout->stretch(index) != 0) {
            contents.last() += QStringLiteral(", stretch %1").arg(layout->stretch(index));
        }
    }
    return contents;
}

/// The layout nested at the index of another one; null when there is none of that class.
template <typename Layout>
Layout* nestedLayout(const QLayout* layout, int index)
{
    QLayoutItem* item = layout->itemAt(index);
    return item != nullptr ? qobject_cast<Layout*>(item->layout()) : nullptr;
}

} // namespace support
